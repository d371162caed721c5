#include "hostkit/connection_dialog.h"

#include <iterator>
#include <string>

#include "hostkit/services.h"
#include "hostkit/sites.h"

namespace hostkit {

namespace {

// Controls of dialog 14300.
constexpr INT siteList = 14301;
constexpr INT nameField = 14202;
constexpr INT hostField = 14203;
constexpr INT directoryField = 14204;  // no other dialog has it
constexpr INT userField = 14302;
constexpr INT passwordField = 15202;
constexpr INT firewallBox = 14305;
constexpr INT passiveBox = 14306;
// Controls of dialog 14340, which has fields of the same numbers as well.
constexpr INT firewallHostLabel = 14312;  // no other dialog of the connect message has it
constexpr INT firewallTypeList = 14301;
constexpr u32 firewallTypes = 6;

constexpr WPARAM okButton = 99;
constexpr WPARAM cancelButton = 2;

constexpr u32 hostWantedText = 6010;

constexpr char anonymousUser[] = "anonymous";
constexpr char mailAddress[] = "anonymous@";

constexpr std::size_t longestField = 79;
constexpr std::size_t longestDirectory = 258;

struct LimitedText {
    const char* what;
    const std::string& text;
    std::size_t longest;
};

std::string RefusalOf(const LimitedText& field) {
    if (field.text.size() > field.longest) {
        return std::string("the ") + field.what + " is longer than " +
               std::to_string(field.longest) + " characters";
    }
    if (field.text.find_first_of(std::string_view("\r\n\0", 3)) != field.text.npos) {
        return std::string("the ") + field.what + " holds a character that cannot be sent";
    }
    return {};
}

template <std::size_t count>
std::string RefusalOf(const LimitedText (&fields)[count]) {
    for (const LimitedText& field : fields) {
        if (std::string refusal = RefusalOf(field); !refusal.empty()) {
            return refusal;
        }
    }
    return {};
}

std::string RefusalOf(const FirewallRequest& firewall) {
    if (firewall.type < 1 || firewall.type > firewallTypes) {
        return "there is no firewall type " + std::to_string(firewall.type);
    }
    if (firewall.host.empty()) {
        return "no firewall host is given";
    }
    return RefusalOf({{"firewall host", firewall.host, longestField},
                      {"firewall user", firewall.user, longestField},
                      {"firewall password", firewall.password, longestField}});
}

/// Selects a site as a click on it does. False when it is not in the list.
bool SelectSite(HWND dialog, const std::string& name) {
    const HWND list = GetDlgItem(dialog, siteList);
    const LRESULT entry = SendMessageA(list, LB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                       reinterpret_cast<LPARAM>(name.c_str()));
    if (entry == LB_ERR) {
        return false;
    }
    if (entry != SendMessageA(list, LB_GETCURSEL, 0, 0)) {
        SendMessageA(list, LB_SETCURSEL, static_cast<WPARAM>(entry), 0);
        SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(siteList, LBN_SELCHANGE),
                     reinterpret_cast<LPARAM>(list));
    }
    return true;
}

std::string FieldText(HWND dialog, INT id) {
    char text[260] = "";
    GetDlgItemTextA(dialog, id, text, static_cast<INT>(std::size(text)));
    return text;
}

void SetField(HWND dialog, INT id, const std::string& text) {
    SetDlgItemTextA(dialog, id, text.c_str());
}

/// The procedure of the connection dialog that a person has open: Host::DialogMutex lets no second
/// one open.
DLGPROC askedProcedure = nullptr;

bool LacksHost(HWND dialog, WPARAM command) {
    return (command == okButton || command == IDOK) &&
           FieldText(dialog, hostField).find_first_not_of(' ') == std::string::npos;
}

extern "C" INT_PTR CALLBACK HelpingProcedure(HWND dialog, UINT message, WPARAM wParam,
                                             LPARAM lParam) {
    if (message == WM_COMMAND && LacksHost(dialog, LOWORD(wParam))) {
        TellError(Host::Current()->Options(), hostWantedText);
        SetFocus(GetDlgItem(dialog, hostField));
        return TRUE;
    }
    const INT_PTR result = askedProcedure(dialog, message, wParam, lParam);
    if (message == WM_SHOWWINDOW && wParam != 0 &&
        SendDlgItemMessageA(dialog, siteList, LB_GETCOUNT, 0, 0) == 0) {
        SetFocus(GetDlgItem(dialog, nameField));
    }
    return result;
}

}  // namespace

void HelpAtDialog(HWND dialog) {
    if (GetDlgItem(dialog, directoryField) != nullptr) {
        askedProcedure = reinterpret_cast<DLGPROC>(
            SetWindowLongPtrA(dialog, DWLP_DLGPROC, reinterpret_cast<LONG_PTR>(HelpingProcedure)));
    }
}

std::string RefusalOf(Host& host, const ConnectRequest& request) {
    if (!request.site.empty()) {
        SettingsStore& book = request.settings != nullptr ? *request.settings : host.Settings();
        if (!HasSite(book, request.site)) {
            return "there is no site " + request.site;
        }
    } else if (request.host.empty()) {
        return "no host is given";
    }
    std::string refusal = RefusalOf({{"host", request.host, longestField},
                                     {"user name", request.user, longestField},
                                     {"password", request.password, longestField},
                                     {"directory", request.directory, longestDirectory}});
    if (refusal.empty() && request.firewall) {
        refusal = RefusalOf(*request.firewall);
    }
    return refusal;
}

std::shared_ptr<SettingsStore> UnseenSettings(Host& host, const ConnectRequest& request) {
    const auto settings = host.Settings().PrivateCopy();
    const std::string& section = host.Options().section;
    if (request.site.empty()) {
        settings->WriteSection(siteSection, "");
    }
    if (settings->Read(section, mailAddressKey).value_or("").empty()) {
        settings->Write(section, mailAddressKey, mailAddress);
    }
    return settings;
}

void ConnectionDialogUser::Take(HWND dialog) {
    if (GetDlgItem(dialog, directoryField) != nullptr) {
        Post(dialog, &ConnectionDialogUser::FillIn);
    } else if (GetDlgItem(dialog, firewallHostLabel) != nullptr && request_.firewall) {
        Post(dialog, &ConnectionDialogUser::FillInFirewall);
    } else {
        other_ = dialog;
        PostMessageA(dialog, WM_COMMAND, cancelButton, 0);
    }
}

/// Does a step once the dialog is open. Nobody else closes it, so a step that can't be done
/// cancels.
void ConnectionDialogUser::Post(HWND dialog, Step step) {
    const auto cancel = [dialog] { PostMessageA(dialog, WM_COMMAND, cancelButton, 0); };
    try {
        loop_.Post([this, dialog, step, cancel] {
            try {
                (this->*step)(dialog);
            } catch (...) {
                cancel();
            }
        });
    } catch (...) {
        cancel();
    }
}

void ConnectionDialogUser::FillIn(HWND dialog) {
    if (other_ != nullptr && IsWindow(other_) != FALSE) {
        // The dialog is not open yet: another one has come first and is on its way out.
        Post(dialog, &ConnectionDialogUser::FillIn);
        return;
    }
    if (!request_.site.empty() && !SelectSite(dialog, request_.site)) {
        PostMessageA(dialog, WM_COMMAND, cancelButton, 0);  // the site has gone meanwhile
        return;
    }
    FillInFields(dialog);
    if (request_.firewall) {
        // The click opens the firewall dialog, and returns when that is closed.
        CheckDlgButton(dialog, firewallBox, BST_UNCHECKED);
        SendDlgItemMessageA(dialog, firewallBox, BM_CLICK, 0, 0);
    }
    PostMessageA(dialog, WM_COMMAND, okButton, 0);
}

void ConnectionDialogUser::FillInFields(HWND dialog) const {
    const bool isStored = !request_.site.empty();
    const auto fill = [&](INT field, const std::string& text, const std::string& standard) {
        if (!isStored || !text.empty()) {
            SetField(dialog, field, text.empty() ? standard : text);
        }
    };
    fill(nameField, request_.name, request_.host);
    fill(hostField, request_.host, "");
    // A change between anonymous and not clears the password, so that comes behind the user.
    fill(userField, request_.user, anonymousUser);
    fill(passwordField, request_.password, "");
    if (FieldText(dialog, userField) == anonymousUser && FieldText(dialog, passwordField).empty()) {
        SetField(dialog, passwordField, mailAddress);
    }
    fill(directoryField, request_.directory, "");
    if (!isStored || request_.passive) {
        const bool passive = request_.passive.value_or(true);
        CheckDlgButton(dialog, passiveBox, passive ? BST_CHECKED : BST_UNCHECKED);
    }
}

void ConnectionDialogUser::FillInFirewall(HWND dialog) {
    const FirewallRequest& firewall = *request_.firewall;
    SendDlgItemMessageA(dialog, firewallTypeList, CB_SETCURSEL, firewall.type - 1, 0);
    SetField(dialog, hostField, firewall.host);
    SetField(dialog, userField, firewall.user);
    SetField(dialog, passwordField, firewall.password);
    PostMessageA(dialog, WM_COMMAND, okButton, 0);
}

}  // namespace hostkit
