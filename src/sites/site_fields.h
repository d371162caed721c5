#pragma once
// Between the site book and the fields of the connection dialog.

#include "host/records.h"

namespace quennet {

/// The option word from the four check boxes.
u32 ReadSiteOptions(HWND dialog);

/// Shows the site that is selected in the list and makes it the current one; without a selection
/// only the options are cleared. May ask for a mail address (FillAnonymousPassword).
void LoadSiteFields(HWND dialog, const char* file, const ConnectParams* params);

/// Writes the fields to the keys of the current site, and its name into the list. The password is
/// written only when it is to be kept. False when a name was given and the book has none.
bool SaveSiteFields(HWND dialog, const char* file);

/// Brings the fields to the state for an anonymous login or for one with a password, as the bit of
/// the option word says; the user "anonymous" is anonymous in any case. A change of state clears
/// the password. The password field's echo character is the memory of the present state: none
/// means anonymous. So an inner run, from the notification of the user field that is set here,
/// finds the state settled.
void ApplyAnonymousState(HWND dialog, u32 options, const char* file, const ConnectParams* params);

/// Fills an empty password field with the mail address that is stored in the host's main section,
/// and asks for one when there is none.
void FillAnonymousPassword(HWND dialog, const char* file, const ConnectParams* params);

}  // namespace quennet
