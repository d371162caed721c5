// What the module tells and asks: console lines, messages, passwords, and news of connections.

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "hostkit/directory_change.h"
#include "hostkit/host.h"
#include "hostkit/memory.h"
#include "hostkit/services.h"
#include "hostkit/texts.h"

namespace hostkit {

namespace {

using namespace quennet;

constexpr std::size_t usualLine = 1024;
constexpr LRESULT mostListed = 10'000;

bool ShowsItsEnd(HWND list, LRESULT count) {
    RECT entry = {};
    RECT area = {};
    GetClientRect(list, &area);
    SendMessageA(list, LB_GETITEMRECT, static_cast<WPARAM>(count - 1),
                 reinterpret_cast<LPARAM>(&entry));
    return count == 0 || entry.top < area.bottom;
}

/// Adds a line, for which the oldest one may go, and follows the lines unless somebody looks at
/// earlier ones.
void AddLine(HWND list, const std::string& line) {
    const LRESULT count = SendMessageA(list, LB_GETCOUNT, 0, 0);
    const bool follow = ShowsItsEnd(list, count);
    if (count >= mostListed) {
        SendMessageA(list, LB_DELETESTRING, 0, 0);
    }
    const LRESULT last =
        SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.c_str()));
    if (follow && last >= 0) {
        SendMessageA(list, LB_SETTOPINDEX, static_cast<WPARAM>(last), 0);
    }
}

/// A list box can serve as a console.
bool PrintOnListBox(WindowNumber console, const std::string& line) {
    char className[16] = "";
    const HWND window = WindowFromNumber(console);
    GetClassNameA(window, className, sizeof(className));
    if (lstrcmpiA(className, "ListBox") != 0) {
        return false;
    }
    AddLine(window, line);
    return true;
}

void PrintLine(WindowNumber console, const std::string& line) {
    Host* host = Host::Current();
    if (host->GetServices().PrintOn(console, line) || PrintOnListBox(console, line)) {
        return;
    }
    if (host->Options().consoleLine) {
        host->Options().consoleLine(console, line);
    }
}

void TellUser(const std::function<void(u32, const std::string&)>& told, u32 textId,
              const std::string& cause = {}) {
    const char* text = TextOfId(textId);
    std::string message = text != nullptr ? text : "message " + std::to_string(textId);
    if (!cause.empty()) {
        message += " (" + cause + ")";
    }
    if (told) {
        told(textId, message);
    } else {
        std::fprintf(stderr, "%s\n", message.c_str());
    }
}

/// Asks whoever the server belongs to. The question is asked outside the panels' lock, since a
/// person answers it.
std::optional<std::string> Ask(const char* server) {
    Host* host = Host::Current();
    PasswordFunction source = host->Options().askPassword;
    host->GetPanels().ForEach([&](Panel& panel) {
        if (panel.OwnsServerName(server) && panel.PasswordSource()) {
            source = panel.PasswordSource();
        }
    });
    std::optional<std::string> password;
    if (source) {
        password = source(server);
    }
    if (!password) {
        host->GetPanels().ForEach([&](Panel& panel) {
            if (panel.OwnsServerName(server)) {
                panel.PasswordCancelled();
            }
        });
    }
    return password;
}

extern "C" {

// No frame takes its arguments, so it keeps exceptions back itself.
__attribute__((format(printf, 2, 3))) static void ConsolePrint(WindowNumber console,
                                                               const char* format, ...) {
    char usual[usualLine];
    std::va_list values;
    va_start(values, format);
    std::va_list again;
    va_copy(again, values);
    const int length = std::vsnprintf(usual, sizeof(usual), format, values);
    try {
        if (length >= 0 && static_cast<std::size_t>(length) < sizeof(usual)) {
            PrintLine(console, usual);
        } else if (length >= 0) {
            std::string line(static_cast<std::size_t>(length), '\0');
            std::vsnprintf(line.data(), line.size() + 1, format, again);
            PrintLine(console, line);
        }
    } catch (...) {
        // Without memory the line is lost.
    }
    va_end(again);
    va_end(values);
}

static void ShowMessage(WindowNumber, u32 textId) {
    TellUser(Host::Current()->Options().showMessage, textId);
}

static void ReportError(HWND, u32 textId, HostWord, u32) {
    TellUser(Host::Current()->Options().reportError, textId);
}

/// A password that does not fit is a cancel: cut, it would be another one.
static i32 AskPassword(HWND, PasswordQuestion* question) {
    const auto password = Ask(PointerFromWord<const char>(question->hostText));
    if (!password || password->size() >= question->size) {
        return 0;
    }
    char* buffer = PointerFromWord<char>(question->buffer);
    std::memcpy(buffer, password->c_str(), password->size() + 1);
    return 1;
}

static void PanelConnected(u32 panelId, SiteRecord* site) {
    Host::Current()->GetPanels().With(panelId, [&](Panel& panel) { panel.PanelConnected(site); });
}

static void PanelClosed(Session*, u32 panelId) {
    Host::Current()->GetPanels().With(panelId, [](Panel& panel) { panel.PanelClosed(); });
}

static void* FreeHandle(void* handle) {
    if (handle != nullptr) {
        Host::Current()->GetPanels().ForEach([&](Panel& panel) {
            if (panel.OwnsHandle(handle)) {
                panel.BeforeFree();
            }
        });
        std::free(handle);
    }
    return nullptr;
}

static void RefreshPanel(u32 cookie, u32) {
    if (const auto& refresh = Host::Current()->Options().refreshPanel) {
        refresh(static_cast<u16>(cookie));
    }
}

static void SetForeground(HWND window) {
    if (EndDirectoryChange()) {
        return;
    }
    if (const auto& bring = Host::Current()->Options().setForeground) {
        bring(window);
    }
}
}

}  // namespace

void TellError(const HostOptions& options, u32 textId, const std::string& cause) {
    TellUser(options.reportError, textId, cause);
}

void FillPanelServices(CoreServices& core, ShellServices& shell) {
    Put(core, CoreService::consolePrint, ConsolePrint);
    Put<CoreShowMessageFunction, ShowMessage>(core, CoreService::showMessage);
    Put<ShellReportErrorFunction, ReportError>(shell, ShellService::reportError);
    Put<ShellAskPasswordFunction, AskPassword>(shell, ShellService::askPassword);
    Put<ShellPanelConnectedFunction, PanelConnected>(shell, ShellService::panelConnected);
    Put<ShellPanelClosedFunction, PanelClosed>(shell, ShellService::panelClosed);
    Put<ShellFreeHandleFunction, FreeHandle>(shell, ShellService::freeHandle);
    Put<ShellRefreshPanelFunction, RefreshPanel>(shell, ShellService::refreshPanel);
    Put<ShellSetForegroundFunction, SetForeground>(shell, ShellService::setForeground);
}

}  // namespace hostkit
