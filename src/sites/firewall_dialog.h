#pragma once
// Dialog 14340: the firewall that a site is reached through.

#include "host/records.h"

namespace quennet {

constexpr WORD firewallDialogTemplate = 14340;

/// Dialog procedure; its parameter is a SiteRecord. Shows what the site book holds for the current
/// site. OK fills the record's firewall fields, writes them to the book and ends with 1; Cancel
/// changes nothing and ends with 0.
INT_PTR CALLBACK FirewallDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace quennet
