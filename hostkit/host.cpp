#include "hostkit/host.h"

#include <cstdlib>
#include <new>
#include <stdexcept>
#include <utility>

#include "hostkit/services.h"
#include "hostkit/window.h"

namespace hostkit {

namespace {

std::atomic<Host*> current = nullptr;

HostOptions WithSettings(HostOptions options) {
    if (options.settings == nullptr) {
        options.settings = std::make_shared<MemorySettings>();
    }
    return options;
}

/// The module's notifications carry the panel's number as a signed byte in the low bits.
u32 PanelOf(LPARAM lParam) {
    return static_cast<u8>(lParam);
}

/// Takes over the block of a failed connection: byte 0 is the panel, behind it stands the text.
void TellFailure(Panels& panels, LPARAM lParam) {
    auto* block = reinterpret_cast<char*>(lParam);
    if (block == nullptr) {
        return;
    }
    std::string text;
    try {
        text = block + 1;
    } catch (const std::bad_alloc&) {
        // The failure itself is told all the same.
    }
    panels.With(static_cast<u8>(block[0]), [&](Panel& panel) { panel.ConnectFailed(text); });
    std::free(block);
}

}  // namespace

Host::Host(MessageLoop& loop, HostOptions options)
    : loop_(loop),
      options_(WithSettings(std::move(options))),
      mainWindow_(MakeWindow("hostkit host", Procedure, this)),
      services_(std::make_unique<Services>(options_)) {
    Host* none = nullptr;
    if (!current.compare_exchange_strong(none, this)) {
        DestroyWindow(mainWindow_);
        throw std::runtime_error("there is a host in this process already");
    }
    loop_.SetFilter([this](MSG& message) { return services_->TakeMessage(message); });
}

Host::~Host() {
    loop_.SetFilter({});
    DestroyWindow(mainWindow_);
    current = nullptr;
}

Host* Host::Current() {
    return current;
}

void Host::LoadModule(const std::string& path) {
    const HMODULE library = LoadLibraryA(path.c_str());
    if (library == nullptr) {
        throw std::runtime_error("cannot load " + path);
    }
    const FARPROC function = GetProcAddress(library, "f");
    if (function == nullptr) {
        throw std::runtime_error(path + " is not the module");
    }
    Attach(reinterpret_cast<quennet::ModuleFunction>(reinterpret_cast<void*>(function)), library);
}

void Host::Attach(quennet::ModuleFunction function, HINSTANCE instance) {
    module_ = function;
    instance_ = instance;
    const i32 result =
        Send(quennet::MessageNumber::setTables, services_->Core(), services_->PasswordKey(),
             services_->Shell(), 0, 0, mainWindow_, options_.section.c_str());
    if (result != quennet::tablesStored) {
        throw std::runtime_error("the module does not take the host's tables");
    }
}

i32 Host::Run(const quennet::HostMessage& message) const {
    if (static_cast<quennet::MessageNumber>(message.message) != quennet::MessageNumber::connect) {
        return module_(&message);
    }
    const SettingsEdit edit(options_);
    return module_(&message);
}

LRESULT CALLBACK Host::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* host = reinterpret_cast<Host*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (message != quennet::notifyMessage || host == nullptr) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    host->TakeNotification(static_cast<quennet::Notification>(wParam), lParam);
    return 0;
}

void Host::TakeNotification(quennet::Notification notification, LPARAM lParam) {
    using quennet::Notification;
    switch (notification) {
        case Notification::connectFailed:
            TellFailure(panels_, lParam);
            break;
        case Notification::reconnectFailed:
            panels_.With(PanelOf(lParam), [](Panel& panel) { panel.ReconnectFailed(); });
            break;
        case Notification::connected:
            panels_.With(PanelOf(lParam),
                         [&](Panel& panel) { panel.Connected(static_cast<u16>(lParam >> 8)); });
            break;
        case Notification::connectionStands:
            break;  // `connected` follows and names the panel
    }
    if (options_.notified) {
        options_.notified(notification, lParam);
    }
}

}  // namespace hostkit
