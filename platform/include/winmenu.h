#pragma once
// Menus of the platform, for POSIX systems: the part of its user interface that belongs to
// winuser.h. A menu is known to all threads; any of them may change it at any time.
//
// The menu bar of a top window is worked with F10 or Alt and a marked letter, or with the mouse.
// DefWindowProcA does that on WM_SYSKEYDOWN, WM_SYSCHAR and WM_NCLBUTTONDOWN, also on those of the
// window's children, by way of WM_SYSCOMMAND with SC_KEYMENU or SC_MOUSEMENU. It returns when the
// menu is closed; all other messages of the thread are served meanwhile, so the window may be gone
// by then. A program can send SC_KEYMENU itself and post the keys behind it.
//
// Messages of a menu to its window, in this order: WM_ENTERMENULOOP, WM_INITMENU, WM_INITMENUPOPUP
// for each popup before it opens (low word of lParam: its position in the menu that it hangs on;
// high word: 0), WM_EXITMENULOOP, and posted, WM_COMMAND with the number of the entry chosen.

#include "winuser.h"

// ---- What an entry is and how it stands -------------------------------------------------------

#define MF_BYCOMMAND  0x00000000
#define MF_BYPOSITION 0x00000400

#define MF_STRING    0x00000000
#define MF_SEPARATOR 0x00000800
#define MF_POPUP     0x00000010
#define MF_ENABLED   0x00000000
#define MF_GRAYED    0x00000001
#define MF_DISABLED  0x00000002
#define MF_UNCHECKED 0x00000000
#define MF_CHECKED   0x00000008
#define MF_HILITE    0x00000080

#define MFT_STRING     MF_STRING
#define MFT_SEPARATOR  MF_SEPARATOR
#define MFT_RADIOCHECK 0x00000200

// ---- Messages and commands --------------------------------------------------------------------

#define WM_NCLBUTTONDOWN 0x00A1
#define WM_INITMENU      0x0116
#define WM_INITMENUPOPUP 0x0117
#define WM_ENTERMENULOOP 0x0211
#define WM_EXITMENULOOP  0x0212

#define HTMENU 5

#define SC_MOUSEMENU 0xF090
#define SC_KEYMENU   0xF100

QUENNET_PLATFORM_BEGIN

/// A menu for a bar; null when there is no memory. A menu that is neither a window's nor part of
/// another one is ended by DestroyMenu. Numbers are not used again soon.
QUENNET_PLATFORM_API HMENU WINAPI CreateMenu(void);
/// A menu that opens below an entry of another one.
QUENNET_PLATFORM_API HMENU WINAPI CreatePopupMenu(void);
/// Ends the menu and all that hang on it. A window's own menu ends with the window.
QUENNET_PLATFORM_API BOOL WINAPI DestroyMenu(HMENU menu);
QUENNET_PLATFORM_API BOOL WINAPI IsMenu(HMENU menu);

/// Puts an entry at the end. `flags`: MF_STRING or MF_SEPARATOR, with MF_POPUP, MF_GRAYED,
/// MF_DISABLED, MF_CHECKED and MFT_RADIOCHECK. `idOrPopup` is the entry's number, or with MF_POPUP
/// the menu that it opens. In the text '&' marks a letter; what stands behind a tab is drawn at the
/// right end. FALSE for no menu, or for a popup that the menu hangs on.
QUENNET_PLATFORM_API BOOL WINAPI AppendMenuA(HMENU menu, UINT flags, UINT_PTR idOrPopup,
                                             LPCSTR text);

/// Gives a top window its bar; null takes it away. The menu that the window had stays the
/// caller's. FALSE for a child window or no menu.
QUENNET_PLATFORM_API BOOL WINAPI SetMenu(HWND window, HMENU menu);
QUENNET_PLATFORM_API HMENU WINAPI GetMenu(HWND window);

/// What the entry at a position opens, null when it opens nothing.
QUENNET_PLATFORM_API HMENU WINAPI GetSubMenu(HMENU menu, INT position);
/// -1 for no menu.
QUENNET_PLATFORM_API INT WINAPI GetMenuItemCount(HMENU menu);
/// 0xFFFFFFFF for an entry that opens a menu, and for none.
QUENNET_PLATFORM_API UINT WINAPI GetMenuItemID(HMENU menu, INT position);
/// The MF_ bits of an entry, 0xFFFFFFFF for none. `flags` says what `item` is: a number
/// (MF_BYCOMMAND), looked for in all that hangs on the menu too, or a position (MF_BYPOSITION).
/// Of an entry that opens a menu the high byte of the low word counts that menu's entries.
QUENNET_PLATFORM_API UINT WINAPI GetMenuState(HMENU menu, UINT item, UINT flags);
/// Copies at most size - 1 bytes of the text and a terminator. The bytes copied, or those there are
/// for a null buffer; 0 for no entry.
QUENNET_PLATFORM_API INT WINAPI GetMenuStringA(HMENU menu, UINT item, LPSTR buffer, INT size,
                                               UINT flags);

/// `flags`: MF_ENABLED, MF_GRAYED or MF_DISABLED, with MF_BYCOMMAND or MF_BYPOSITION. The state
/// before, -1 for no entry.
QUENNET_PLATFORM_API BOOL WINAPI EnableMenuItem(HMENU menu, UINT item, UINT flags);
/// The same with MF_CHECKED or MF_UNCHECKED.
QUENNET_PLATFORM_API DWORD WINAPI CheckMenuItem(HMENU menu, UINT item, UINT flags);
/// Checks one entry as a radio button and takes the marks of the others from `first` to `last`
/// away. With MF_BYCOMMAND all are in the menu that has `first`. FALSE when there is no `checked`
/// among them.
QUENNET_PLATFORM_API BOOL WINAPI CheckMenuRadioItem(HMENU menu, UINT first, UINT last, UINT checked,
                                                    UINT flags);

QUENNET_PLATFORM_END
