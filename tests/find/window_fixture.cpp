#include <filesystem>

#include "find/window_test.h"
#include "host/message.h"

using namespace quennet;

namespace {

Notices* currentNotices = nullptr;

extern "C" void GoTo(Session*, const char* name, const char* directory) {
    currentNotices->Add(std::string("go to ") + name + " in " + directory);
}

extern "C" i32 NothingToNotify() {
    return 0;
}

hostkit::HostOptions OptionsWith(Notices& notices) {
    hostkit::HostOptions options;
    options.setForeground = [&notices](HWND) { notices.Add("foreground"); };
    return options;
}

struct Letter {
    char letter;
    u32 command;
};
constexpr Letter letters[] = {{'S', findStart},      {'X', findStop},      {'G', findGoTo},
                              {'T', findExportText}, {'C', findExportCsv}, {'H', findExportHtml}};

}  // namespace

FindWindowTest::FindWindowTest()
    : thread(std::make_unique<HostThread>(OptionsWith(notices))), connection(thread->Host()) {
    currentNotices = &notices;
    std::filesystem::create_directory(folder / "root");
    loopback::Options options;
    options.root = folder / "root";
    server.emplace(options);
}

void FindWindowTest::Make(const std::string& path, const std::string& bytes) {
    const std::filesystem::path place = folder / ("root/" + path);
    if (path.back() == '/') {
        std::filesystem::create_directories(place);
    } else {
        std::filesystem::create_directories(place.parent_path());
        WriteWhole(place, bytes);
    }
}

hostkit::Connection& FindWindowTest::Connect(hostkit::Connection& which) {
    if (!which.Connected()) {
        hostkit::ConnectRequest request;
        request.host = "127.0.0.1:" + std::to_string(server->Port());
        EXPECT_TRUE(which.Connect(request).Connected());
    }
    return which;
}

HWND FindWindowTest::Open(hostkit::Connection& which, const std::string& path) {
    Connect(which);
    Host().Loop().Invoke([&] {
        Host().Send(MessageNumber::findWindow, GetModuleHandleA(nullptr), 0, which.Handle(),
                    path.c_str(), &filter, reinterpret_cast<HostWord>(GoTo),
                    reinterpret_cast<HostWord>(NothingToNotify));
    });
    const FindWindow* find = Record(which);
    return find != nullptr ? find->window : nullptr;
}

FindWindow* FindWindowTest::Record(hostkit::Connection& which) {
    return static_cast<FindWindow*>(SessionFromHandle(which.Handle())->findWindow);
}

void FindWindowTest::Command(HWND window, u32 command) {
    SendMessageA(window, WM_COMMAND, command, 0);
}

void FindWindowTest::Run(hostkit::Connection& which, const std::string& mask, bool recurse) {
    FindWindow* find = Record(which);
    SetDlgItemTextA(find->window, findMaskBox, mask.c_str());
    CheckDlgButton(find->window, findRecurseBox, recurse ? BST_CHECKED : BST_UNCHECKED);
    Command(find->window, findStart);
    EXPECT_TRUE(WaitUntil([&] { return !find->worker.IsSet(); }));
}

std::string FindWindowTest::Cell(HWND window, int row, int column) {
    char text[260] = "";
    LVITEMA item = {};
    item.iSubItem = column;
    item.pszText = text;
    item.cchTextMax = sizeof text;
    SendDlgItemMessageA(window, findList, LVM_GETITEMTEXTA, static_cast<WPARAM>(row),
                        reinterpret_cast<LPARAM>(&item));
    return text;
}

int FindWindowTest::Rows(HWND window) {
    return static_cast<int>(SendDlgItemMessageA(window, findList, LVM_GETITEMCOUNT, 0, 0));
}

std::string FindWindowTest::Pane(HWND window, int pane) {
    char text[600] = "";
    SendMessageA(FindWindowExA(window, nullptr, STATUSCLASSNAMEA, nullptr), SB_GETTEXTA,
                 static_cast<WPARAM>(pane), reinterpret_cast<LPARAM>(&text[0]));
    return text;
}

std::string FindWindowTest::Allowed(HWND window) {
    const HWND toolBar = FindWindowExA(window, nullptr, TOOLBARCLASSNAMEA, nullptr);
    std::string allowed;
    for (const Letter& each : letters) {
        const bool onBar = SendMessageA(toolBar, TB_ISBUTTONENABLED, each.command, 0) != 0;
        const UINT state = GetMenuState(GetMenu(window), each.command, MF_BYCOMMAND);
        EXPECT_EQ(onBar, (state & MF_GRAYED) == 0) << each.letter;
        if (onBar) {
            allowed += each.letter;
        }
    }
    return allowed;
}

void FindWindowTest::Select(HWND window, int row) {
    LVITEMA item = {};
    item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    SendDlgItemMessageA(window, findList, LVM_SETITEMSTATE, static_cast<WPARAM>(row),
                        reinterpret_cast<LPARAM>(&item));
}
