#include "support/module_test.h"

#include "control/watchdog.h"

using namespace quennet;

ModuleTest::~ModuleTest() {
    if (thread_ != nullptr) {
        Disconnect();
        Host().GetPanels().Remove(panelId_);
    }
}

void ModuleTest::StartHost(const hostkit::HostOptions& options) {
    thread_ = std::make_unique<HostThread>(options);
    console_ = std::make_unique<hostkit::Console>(Host(), [](const std::string&) {});
    panelId_ = Host().GetPanels().Add(panel_);
}

void ModuleTest::SendConnect() {
    params.section = WordFromPointer("Quennet");
    params.instance = params.watchdogInstance = WordFromPointer(GetModuleHandleA(nullptr));
    Host().Send(MessageNumber::connect, 0, &holder, console_->Number(), 0xABCD00u | panelId_,
                &socketUses, 0xABC0007u, &params);
}

void ModuleTest::Disconnect() {
    Host().Send(MessageNumber::disconnect, &holder);
    while (HandleInHolder(&holder) != nullptr) {
        Sleep(2);
    }
}

FtpHandle* ModuleTest::Handle() {
    return HandleInHolder(&holder);
}

Session* ModuleTest::SessionOfHandle() {
    return SessionFromHandle(Handle());
}
