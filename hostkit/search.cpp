#include "hostkit/search.h"

#include <commctrl.h>
#include <dlgs.h>

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <vector>

#include "hostkit/services.h"
#include "hostkit/texts.h"

namespace hostkit {

namespace {

constexpr char windowClass[] = "FTPFind";
constexpr char dialogClass[] = "#32770";

// Controls and commands of the window.
constexpr int listId = 0x42;
constexpr int maskId = 0x3D;
constexpr WPARAM startCommand = 0x12D;
constexpr WPARAM stopCommand = 0x20E;
constexpr WPARAM runEndedCommand = 0x212;

constexpr INT nameColumn = 0;
constexpr INT folderColumn = 4;
constexpr INT longestCell = 1024;

constexpr u32 keysHintText = 6012;

/// The searches whose windows are open; the loop thread's alone.
std::vector<Search*> openSearches;

Search* SearchOf(HWND window) {
    const auto found = std::ranges::find(openSearches, window, &Search::Window);
    return found != openSearches.end() ? *found : nullptr;
}

/// A window of the class that belongs to no search yet.
HWND NewWindow() {
    HWND window = nullptr;
    while ((window = FindWindowExA(nullptr, window, windowClass, nullptr)) != nullptr) {
        if (GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId() &&
            SearchOf(window) == nullptr) {
            return window;
        }
    }
    return nullptr;
}

/// The dialog above a window, null for none.
HWND DialogAbove(HWND owner) {
    HWND dialog = nullptr;
    while ((dialog = FindWindowExA(nullptr, dialog, dialogClass, nullptr)) != nullptr) {
        if (GetParent(dialog) == owner) {
            return dialog;
        }
    }
    return nullptr;
}

/// Presses a button of a dialog, later, so that what it opens does not keep the caller.
void PostPress(HWND dialog, int button) {
    PostMessageA(GetDlgItem(dialog, button), BM_CLICK, 0, 0);
}

std::string FullPath(const std::string& folder, const std::string& name) {
    const bool isDos = folder.find('/') == folder.npos && folder.find('\\') != folder.npos;
    if (folder.empty() || folder.back() == '/' || folder.back() == '\\') {
        return folder + name;
    }
    return folder + (isDos ? '\\' : '/') + name;
}

std::string CellText(HWND list, std::size_t row, INT column) {
    char text[longestCell] = "";
    LVITEMA item = {};
    item.iSubItem = column;
    item.pszText = text;
    item.cchTextMax = longestCell;
    SendMessageA(list, LVM_GETITEMTEXTA, row, reinterpret_cast<LPARAM>(&item));
    return item.pszText != nullptr ? item.pszText : "";
}

extern "C" {

static i32 IgnoreLookUp() {
    return 0;
}
}

}  // namespace

Search::Search(Host& host, Connection& connection, FilterRecord& filter,
               const std::string& directory)
    : host_(host) {
    host_.Loop().Invoke([&] { Open(connection, filter, directory); });
}

void Search::Open(Connection& connection, FilterRecord& filter, const std::string& directory) {
    quennet::FtpHandle* handle = connection.Handle();
    if (handle == nullptr) {
        throw std::runtime_error("the search has no connection");
    }
    // A letter and a colon in front are taken off again: so no path loses what is its own.
    const std::string path = "F:" + directory;
    host_.Send(quennet::MessageNumber::findWindow, host_.Instance(), 0, handle, path.c_str(),
               &filter, GoTo, IgnoreLookUp);
    window_ = NewWindow();
    if (window_ == nullptr) {
        throw std::runtime_error("the find window does not open");
    }
    session_ = quennet::PointerFromWord<quennet::Session>(handle->session);
    openSearches.push_back(this);
    open_ = true;
    procedure_ = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrA(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Procedure)));
}

Search::~Search() {
    constexpr DWORD pauseMilliseconds = 10;
    while (IsOpen() && PostMessageA(window_, WM_CLOSE, 0, 0) == FALSE) {
        Sleep(pauseMilliseconds);  // for want of memory
    }
    host_.Loop().WaitUntil([this] { return !IsOpen(); });
}

LRESULT CALLBACK Search::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Search* search = SearchOf(window);
    if (search == nullptr) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    const WNDPROC procedure = search->procedure_;
    if (message == WM_NCDESTROY) {
        MessageLoop& loop = search->host_.Loop();
        std::erase(openSearches, search);
        const LRESULT result = CallWindowProcA(procedure, window, message, wParam, lParam);
        search->open_ = false;  // its owner may end it from here on
        loop.Wake();
        return result;
    }
    if (message == WM_DESTROY) {
        const SettingsEdit edit(search->host_.Options(), SettingsEdit::What::window);
        return CallWindowProcA(procedure, window, message, wParam, lParam);
    }
    const LRESULT result = CallWindowProcA(procedure, window, message, wParam, lParam);
    if (message == WM_COMMAND && LOWORD(wParam) == runEndedCommand && SearchOf(window) == search) {
        ++search->runsEnded_;
        search->host_.Loop().Wake();
    }
    return result;
}

void Search::GoTo(quennet::Session* session, const char* name, const char* directory) {
    const auto found = std::ranges::find_if(
        openSearches, [&](const Search* each) { return each->session_ == session; });
    if (found == openSearches.end()) {
        return;
    }
    try {
        (*found)->wentTo_ = FullPath(directory, name);
        PostMessageA((*found)->window_, WM_CLOSE, 0, 0);
    } catch (const std::exception&) {
        // Without memory the window stays.
    }
}

void Search::SetMask(const std::string& mask) {
    SetDlgItemTextA(window_, maskId, mask.c_str());
}

void Search::SetBox(SearchBox box, bool checked) {
    const int id = static_cast<int>(box);
    if ((IsDlgButtonChecked(window_, id) == BST_CHECKED) != checked) {
        SendDlgItemMessageA(window_, id, BM_CLICK, 0, 0);
    }
}

void Search::Start() {
    // From another thread the command would be lost for want of memory, and nobody told.
    host_.Loop().Invoke([this] { SendMessageA(window_, WM_COMMAND, startCommand, 0); });
}

bool Search::Run() {
    const u32 before = runsEnded_;
    Start();
    host_.Loop().WaitUntil([&] { return runsEnded_ != before || !IsOpen(); });
    return IsOpen();
}

void Search::Stop() {
    PostMessageA(window_, WM_COMMAND, stopCommand, 0);
}

std::size_t Search::Count() {
    return static_cast<std::size_t>(SendDlgItemMessageA(window_, listId, LVM_GETITEMCOUNT, 0, 0));
}

void Search::ForEachHit(const TakeHit& take) {
    host_.Loop().Invoke([&] {
        const HWND list = GetDlgItem(window_, listId);
        const std::size_t count = Count();
        for (std::size_t row = 0; row < count; ++row) {
            take(CellText(list, row, folderColumn), CellText(list, row, nameColumn));
        }
    });
}

void Search::ForEachPath(const std::function<void(const std::string& path)>& take) {
    ForEachHit(
        [&](const std::string& folder, const std::string& name) { take(FullPath(folder, name)); });
}

bool Search::Export(ExportFormat format, const std::string& path) {
    // Each step runs in the loop of the dialog that the one before has opened.
    MessageLoop& loop = host_.Loop();
    bool asked = false;
    loop.Post([&] { SendMessageA(window_, WM_COMMAND, static_cast<WPARAM>(format), 0); });
    loop.Invoke([&] {
        if (const HWND dialog = DialogAbove(window_)) {
            asked = true;
            SetDlgItemTextA(dialog, edt1, path.c_str());
            PostPress(dialog, IDOK);
        }
    });
    loop.Invoke([&] {
        const HWND dialog = DialogAbove(window_);
        if (const HWND question = dialog != nullptr ? DialogAbove(dialog) : nullptr) {
            PostPress(question, GetDlgItem(question, IDYES) != nullptr ? IDYES : IDOK);
        }
    });
    loop.Invoke([&] {
        if (const HWND dialog = DialogAbove(window_)) {
            asked = false;
            PostPress(dialog, IDCANCEL);
        }
    });
    // The export is over when the loop itself is back.
    loop.Invoke([] {});
    return asked;
}

std::string Search::AwaitClose() {
    host_.Loop().Invoke([this] {
        SetFocus(GetDlgItem(window_, maskId));
        const HWND status = FindWindowExA(window_, nullptr, STATUSCLASSNAMEA, nullptr);
        SendMessageA(status, SB_SETTEXTA, 0, reinterpret_cast<LPARAM>(TextOfId(keysHintText)));
    });
    host_.Loop().WaitUntil([this] { return !IsOpen(); });
    return wentTo_;
}

}  // namespace hostkit
