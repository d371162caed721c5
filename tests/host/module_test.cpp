#include "host/module_test.h"

#include "control/watchdog.h"

using namespace quennet;

namespace {

constexpr u16 cookie = 7;

}  // namespace

ModuleTest::ModuleTest() {
    hostkit::HostOptions options;
    options.initDialog = [this](HWND dialog) {
        // Once it is open, which includes what the book puts into its fields.
        Host().Loop().Post([this, dialog] { FillIn(dialog); });
    };
    thread_ = std::make_unique<HostThread>(options);
    console_ = std::make_unique<hostkit::Console>(Host(), [](const std::string&) {});
    panelId_ = Host().GetPanels().Add(panel_);
}

ModuleTest::~ModuleTest() {
    Disconnect();
    Host().GetPanels().Remove(panelId_);
}

void ModuleTest::FillIn(HWND dialog) const {
    SetDlgItemTextA(dialog, 14202, entry_.name.c_str());
    SetDlgItemTextA(dialog, 14203, entry_.host.c_str());
    SetDlgItemTextA(dialog, 14302, entry_.user.c_str());
    SetDlgItemTextA(dialog, 15202, entry_.password.c_str());
    SetDlgItemTextA(dialog, 14204, entry_.directory.c_str());
    CheckDlgButton(dialog, 14306, BST_CHECKED);
    PostMessageA(dialog, WM_COMMAND, static_cast<WPARAM>(entry_.button), 0);
}

void ModuleTest::Connect(const Entry& entry) {
    entry_ = entry;
    Host().Loop().Invoke([this] {
        ConnectParams params = {};
        params.section = WordFromPointer("Quennet");
        params.instance = params.watchdogInstance = WordFromPointer(GetModuleHandleA(nullptr));
        Host().Send(MessageNumber::connect, 0, &holder, console_->Number(), 0xABCD00u | panelId_,
                    &socketUses, 0xABC0000u | cookie, &params);
    });
}

void ModuleTest::Disconnect() {
    Host().Send(MessageNumber::disconnect, &holder);
    while (HandleInHolder(&holder) != nullptr) {
        Sleep(10);
    }
}

bool ModuleTest::Await(const std::string& notice) {
    for (int turn = 0; turn < 1000; ++turn) {
        const std::vector<std::string> all = notices.All();
        if (std::find(all.begin(), all.end(), notice) != all.end()) {
            return true;
        }
        Sleep(10);
    }
    return false;
}

FtpHandle* ModuleTest::Handle() {
    return HandleInHolder(&holder);
}

Session* ModuleTest::SessionOfHandle() {
    return SessionFromHandle(Handle());
}
