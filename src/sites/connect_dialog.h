#pragma once
// Dialog 14300, the door to every connection: the site book and the fields of one site.

#include "host/records.h"

namespace quennet {

constexpr WORD connectDialogTemplate = 14300;

/// Dialog procedure; its parameter is the ConnectParams of message 24. OK fills the SiteRecord that
/// they name, stores the book and ends with the selected list index plus 1, or 1 when nothing is
/// selected; Cancel leaves the book as it was and ends with 0. A book that can't be stored is told
/// to the user and keeps nobody from connecting.
INT_PTR CALLBACK ConnectDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace quennet
