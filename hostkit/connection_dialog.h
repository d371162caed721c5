#pragma once
// Working the connection dialog without a person, and helping the one who does.

#include <windows.h>

#include <memory>
#include <string>

#include "hostkit/connection.h"

namespace hostkit {

/// What the request lacks or has too much of, as a text; empty when it can be filled in.
std::string RefusalOf(Host& host, const ConnectRequest& request);

/// The settings for a dialog that nobody sees: a copy of the host's, without its sites if none is
/// wanted, and with a mail address, so that nothing is asked.
std::shared_ptr<SettingsStore> UnseenSettings(Host& host, const ConnectRequest& request);

/// For CoreInitDialog of what the connect message opens for a person. A connection dialog without
/// sites begins in the field of the name, where typing is of use, and its OK wants a host.
void HelpAtDialog(HWND dialog);

/// Takes each dialog that the connect message opens: fills the connection dialog in, and the
/// firewall dialog if a firewall is wanted, and closes them with OK; cancels any other.
class ConnectionDialogUser {
  public:
    ConnectionDialogUser(MessageLoop& loop, const ConnectRequest& request)
        : loop_(loop), request_(request) {}

    /// For CoreInitDialog: the dialog is about to open.
    void Take(HWND dialog);

  private:
    using Step = void (ConnectionDialogUser::*)(HWND dialog);

    void Post(HWND dialog, Step step);
    void FillIn(HWND dialog);
    void FillInFields(HWND dialog) const;
    void FillInFirewall(HWND dialog);

    MessageLoop& loop_;
    const ConnectRequest& request_;
    HWND other_ = nullptr;  // a dialog on top of the connection dialog while that opens
};

}  // namespace hostkit
