#pragma once
// Windows, messages, timers, dialogs and controls of the platform, for POSIX systems. Names,
// values and behaviour are those that the platform documents; a comment says what a caller of this
// layer has to know besides.

#include "windef.h"

// ---- Records and procedures -------------------------------------------------------------------

typedef LRESULT(CALLBACK* WNDPROC)(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
typedef INT_PTR(CALLBACK* DLGPROC)(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
typedef void(CALLBACK* TIMERPROC)(HWND window, UINT message, UINT_PTR timer, DWORD tickCount);

typedef struct tagWNDCLASSEXA {
    UINT cbSize;  // sizeof(WNDCLASSEXA)
    UINT style;
    WNDPROC lpfnWndProc;
    INT cbClsExtra;
    INT cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCSTR lpszMenuName;
    LPCSTR lpszClassName;
    HICON hIconSm;
} WNDCLASSEXA;

/// What WM_NCCREATE and WM_CREATE carry in lParam.
typedef struct tagCREATESTRUCTA {
    LPVOID lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    INT cy;
    INT cx;
    INT y;
    INT x;
    LONG style;
    LPCSTR lpszName;
    LPCSTR lpszClass;
    DWORD dwExStyle;
} CREATESTRUCTA;

typedef struct tagMSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;  // milliseconds of a clock that only goes forward
    POINT pt;
} MSG;

/// What WM_NOTIFY carries in lParam, alone or at the head of a larger record.
typedef struct tagNMHDR {
    HWND hwndFrom;
    UINT_PTR idFrom;
    UINT code;
} NMHDR;

/// What WM_GETMINMAXINFO carries in lParam, in pixels.
typedef struct tagMINMAXINFO {
    POINT ptReserved;
    POINT ptMaxSize;
    POINT ptMaxPosition;
    POINT ptMinTrackSize;
    POINT ptMaxTrackSize;
} MINMAXINFO;

/// The name of a resource that has a number.
#define MAKEINTRESOURCEA(number) ((LPSTR)((ULONG_PTR)((WORD)(number))))
#define IS_INTRESOURCE(name)     ((((ULONG_PTR)(name)) >> 16) == 0)

// ---- Styles -----------------------------------------------------------------------------------

#define WS_OVERLAPPED       0x00000000
#define WS_TABSTOP          0x00010000
#define WS_MAXIMIZEBOX      0x00010000
#define WS_GROUP            0x00020000
#define WS_MINIMIZEBOX      0x00020000
#define WS_THICKFRAME       0x00040000
#define WS_SYSMENU          0x00080000
#define WS_HSCROLL          0x00100000
#define WS_VSCROLL          0x00200000
#define WS_DLGFRAME         0x00400000
#define WS_BORDER           0x00800000
#define WS_CAPTION          0x00C00000
#define WS_CLIPCHILDREN     0x02000000
#define WS_CLIPSIBLINGS     0x04000000
#define WS_DISABLED         0x08000000
#define WS_VISIBLE          0x10000000
#define WS_CHILD            0x40000000
#define WS_POPUP            0x80000000
#define WS_OVERLAPPEDWINDOW 0x00CF0000

#define WS_EX_DLGMODALFRAME  0x00000001
#define WS_EX_NOPARENTNOTIFY 0x00000004
#define WS_EX_CLIENTEDGE     0x00000200
#define WS_EX_CONTEXTHELP    0x00000400
#define WS_EX_CONTROLPARENT  0x00010000

#define CS_DBLCLKS     0x0008
#define CS_GLOBALCLASS 0x4000

#define DS_SETFONT    0x0040
#define DS_MODALFRAME 0x0080
#define DS_CENTER     0x0800

#define SS_LEFT     0x0000
#define SS_CENTER   0x0001
#define SS_RIGHT    0x0002
#define SS_TYPEMASK 0x001F
#define SS_NOPREFIX 0x0080

#define ES_LEFT        0x0000
#define ES_PASSWORD    0x0020
#define ES_AUTOHSCROLL 0x0080
#define ES_READONLY    0x0800

#define BS_PUSHBUTTON    0x0000
#define BS_DEFPUSHBUTTON 0x0001
#define BS_CHECKBOX      0x0002
#define BS_AUTOCHECKBOX  0x0003
#define BS_3STATE        0x0005
#define BS_AUTO3STATE    0x0006
#define BS_GROUPBOX      0x0007
#define BS_TYPEMASK      0x000F

#define LBS_NOTIFY           0x0001
#define LBS_NOINTEGRALHEIGHT 0x0100

#define CBS_DROPDOWN     0x0002
#define CBS_DROPDOWNLIST 0x0003
#define CBS_AUTOHSCROLL  0x0040

// ---- Messages ---------------------------------------------------------------------------------

#define WM_NULL          0x0000
#define WM_CREATE        0x0001
#define WM_DESTROY       0x0002
#define WM_MOVE          0x0003
#define WM_SIZE          0x0005
#define WM_SETFOCUS      0x0007
#define WM_KILLFOCUS     0x0008
#define WM_ENABLE        0x000A
#define WM_SETTEXT       0x000C
#define WM_GETTEXT       0x000D
#define WM_GETTEXTLENGTH 0x000E
#define WM_CLOSE         0x0010
#define WM_QUIT          0x0012
#define WM_SHOWWINDOW    0x0018
#define WM_GETMINMAXINFO 0x0024
#define WM_NEXTDLGCTL    0x0028
#define WM_SETFONT       0x0030
#define WM_GETFONT       0x0031
#define WM_NOTIFY        0x004E
#define WM_NCCREATE      0x0081
#define WM_NCDESTROY     0x0082
#define WM_GETDLGCODE    0x0087
#define WM_KEYFIRST      0x0100
#define WM_KEYDOWN       0x0100
#define WM_KEYUP         0x0101
#define WM_CHAR          0x0102
#define WM_SYSKEYDOWN    0x0104
#define WM_SYSKEYUP      0x0105
#define WM_SYSCHAR       0x0106
#define WM_KEYLAST       0x0109
#define WM_INITDIALOG    0x0110
#define WM_COMMAND       0x0111
#define WM_SYSCOMMAND    0x0112
#define WM_TIMER         0x0113
#define WM_LBUTTONDOWN   0x0201
#define WM_LBUTTONUP     0x0202
#define WM_LBUTTONDBLCLK 0x0203
#define WM_MOUSEWHEEL    0x020A
#define WM_USER          0x0400
#define WM_APP           0x8000

#define VK_BACK    0x08
#define VK_TAB     0x09
#define VK_RETURN  0x0D
#define VK_SHIFT   0x10
#define VK_CONTROL 0x11
#define VK_MENU    0x12
#define VK_ESCAPE  0x1B
#define VK_SPACE   0x20
#define VK_PRIOR   0x21
#define VK_NEXT    0x22
#define VK_END     0x23
#define VK_HOME    0x24
#define VK_LEFT    0x25
#define VK_UP      0x26
#define VK_RIGHT   0x27
#define VK_DOWN    0x28
#define VK_INSERT  0x2D
#define VK_DELETE  0x2E
#define VK_F1      0x70
#define VK_F4      0x73
#define VK_F10     0x79
#define VK_F12     0x7B

#define WHEEL_DELTA 120

#define MK_LBUTTON 0x0001
#define MK_SHIFT   0x0004
#define MK_CONTROL 0x0008

#define SIZE_RESTORED  0
#define SIZE_MINIMIZED 1
#define SIZE_MAXIMIZED 2

#define SC_CLOSE 0xF060

#define PM_NOREMOVE 0x0000
#define PM_REMOVE   0x0001

// ---- Controls ---------------------------------------------------------------------------------

#define IDOK     1
#define IDCANCEL 2
#define IDYES    6
#define IDNO     7

#define EN_SETFOCUS  0x0100
#define EN_KILLFOCUS 0x0200
#define EN_CHANGE    0x0300
#define EN_UPDATE    0x0400
#define EN_MAXTEXT   0x0501

#define EM_GETSEL          0x00B0
#define EM_SETSEL          0x00B1
#define EM_REPLACESEL      0x00C2
#define EM_LIMITTEXT       0x00C5
#define EM_SETLIMITTEXT    EM_LIMITTEXT
#define EM_SETPASSWORDCHAR 0x00CC
#define EM_SETREADONLY     0x00CF
#define EM_GETPASSWORDCHAR 0x00D2
#define EM_GETLIMITTEXT    0x00D5

#define BN_CLICKED 0

#define BM_GETCHECK 0x00F0
#define BM_SETCHECK 0x00F1
#define BM_CLICK    0x00F5

#define BST_UNCHECKED     0x0000
#define BST_CHECKED       0x0001
#define BST_INDETERMINATE 0x0002

#define LBN_SELCHANGE 1
#define LBN_DBLCLK    2
#define LBN_SETFOCUS  4
#define LBN_KILLFOCUS 5

#define LB_OKAY            0
#define LB_ERR             (-1)
#define LB_ADDSTRING       0x0180
#define LB_INSERTSTRING    0x0181
#define LB_DELETESTRING    0x0182
#define LB_RESETCONTENT    0x0184
#define LB_SETCURSEL       0x0186
#define LB_GETCURSEL       0x0188
#define LB_GETTEXT         0x0189
#define LB_GETTEXTLEN      0x018A
#define LB_GETCOUNT        0x018B
#define LB_GETTOPINDEX     0x018E
#define LB_SETTOPINDEX     0x0197
#define LB_GETITEMRECT     0x0198
#define LB_GETITEMDATA     0x0199
#define LB_SETITEMDATA     0x019A
#define LB_FINDSTRINGEXACT 0x01A2

#define CBN_SELCHANGE    1
#define CBN_SETFOCUS     3
#define CBN_KILLFOCUS    4
#define CBN_EDITCHANGE   5
#define CBN_EDITUPDATE   6
#define CBN_DROPDOWN     7
#define CBN_CLOSEUP      8
#define CBN_SELENDOK     9
#define CBN_SELENDCANCEL 10

#define CB_OKAY            0
#define CB_ERR             (-1)
#define CB_GETEDITSEL      0x0140
#define CB_LIMITTEXT       0x0141
#define CB_SETEDITSEL      0x0142
#define CB_ADDSTRING       0x0143
#define CB_DELETESTRING    0x0144
#define CB_GETCOUNT        0x0146
#define CB_GETCURSEL       0x0147
#define CB_GETLBTEXT       0x0148
#define CB_GETLBTEXTLEN    0x0149
#define CB_INSERTSTRING    0x014A
#define CB_RESETCONTENT    0x014B
#define CB_SETCURSEL       0x014E
#define CB_SHOWDROPDOWN    0x014F
#define CB_GETITEMDATA     0x0150
#define CB_SETITEMDATA     0x0151
#define CB_GETITEMHEIGHT   0x0154
#define CB_GETDROPPEDSTATE 0x0157
#define CB_FINDSTRINGEXACT 0x0158

#define DM_GETDEFID (WM_USER + 0)
#define DM_SETDEFID (WM_USER + 1)
#define DC_HASDEFID 0x534B

#define DLGC_WANTARROWS      0x0001
#define DLGC_WANTTAB         0x0002
#define DLGC_WANTALLKEYS     0x0004
#define DLGC_WANTMESSAGE     0x0004
#define DLGC_HASSETSEL       0x0008
#define DLGC_DEFPUSHBUTTON   0x0010
#define DLGC_UNDEFPUSHBUTTON 0x0020
#define DLGC_WANTCHARS       0x0080
#define DLGC_STATIC          0x0100
#define DLGC_BUTTON          0x2000

// ---- Words of a window ------------------------------------------------------------------------

#define GWLP_WNDPROC    (-4)
#define GWLP_HINSTANCE  (-6)
#define GWLP_HWNDPARENT (-8)
#define GWLP_ID         (-12)
#define GWL_STYLE       (-16)
#define GWL_EXSTYLE     (-20)
#define GWLP_USERDATA   (-21)

#define DWLP_MSGRESULT 0
#define DWLP_DLGPROC   ((INT)(DWLP_MSGRESULT + sizeof(LRESULT)))
#define DWLP_USER      ((INT)(DWLP_DLGPROC + sizeof(DLGPROC)))
/// Extra bytes of a window of class "#32770".
#define DLGWINDOWEXTRA ((INT)(sizeof(LRESULT) == 8 ? 48 : 30))

#define SW_HIDE           0
#define SW_SHOWNORMAL     1
#define SW_NORMAL         1
#define SW_SHOWMINIMIZED  2
#define SW_SHOWMAXIMIZED  3
#define SW_SHOWNOACTIVATE 4
#define SW_SHOW           5
#define SW_SHOWNA         8
#define SW_RESTORE        9

#define CW_USEDEFAULT ((INT)0x80000000)

#define SWP_NOSIZE        0x0001
#define SWP_NOMOVE        0x0002
#define SWP_NOZORDER      0x0004
#define SWP_NOREDRAW      0x0008
#define SWP_NOACTIVATE    0x0010
#define SWP_SHOWWINDOW    0x0040
#define SWP_HIDEWINDOW    0x0080
#define SWP_NOOWNERZORDER 0x0200

#define HWND_TOP ((HWND)0)

// ---- Icons, cursors, colours ------------------------------------------------------------------

#define IDI_APPLICATION MAKEINTRESOURCEA(32512)

#define IDC_ARROW MAKEINTRESOURCEA(32512)
#define IDC_IBEAM MAKEINTRESOURCEA(32513)
#define IDC_WAIT  MAKEINTRESOURCEA(32514)

#define IMAGE_BITMAP 0
#define IMAGE_ICON   1
#define IMAGE_CURSOR 2

#define LR_DEFAULTCOLOR 0x0000
#define LR_DEFAULTSIZE  0x0040
#define LR_SHARED       0x8000

#define COLOR_WINDOW  5
#define COLOR_BTNFACE 15

QUENNET_PLATFORM_BEGIN

// ---- Classes and windows ----------------------------------------------------------------------

/// The class's number, 0 for a wrong cbSize, no name or procedure, or a name that the instance has.
QUENNET_PLATFORM_API ATOM WINAPI RegisterClassExA(const WNDCLASSEXA* windowClass);
/// Fills the record (cbSize apart). lpszClassName is the given pointer. 0 for an unknown class.
QUENNET_PLATFORM_API BOOL WINAPI GetClassInfoExA(HINSTANCE instance, LPCSTR name,
                                                 WNDCLASSEXA* windowClass);
/// FALSE while a window of the class lives.
QUENNET_PLATFORM_API BOOL WINAPI UnregisterClassA(LPCSTR name, HINSTANCE instance);

/// The window lives on the calling thread. Its number fits 32 bits and is not used again soon.
/// Null for an unknown class or parent, or when WM_NCCREATE gives 0 or WM_CREATE -1.
QUENNET_PLATFORM_API HWND WINAPI CreateWindowExA(DWORD extendedStyle, LPCSTR className, LPCSTR text,
                                                 DWORD style, INT x, INT y, INT width, INT height,
                                                 HWND parent, HMENU menuOrId, HINSTANCE instance,
                                                 LPVOID parameter);
/// Only on the window's own thread, FALSE on another. WM_DESTROY goes to the window and then to its
/// children, WM_NCDESTROY to the children first.
QUENNET_PLATFORM_API BOOL WINAPI DestroyWindow(HWND window);
QUENNET_PLATFORM_API LRESULT WINAPI DefWindowProcA(HWND window, UINT message, WPARAM wParam,
                                                   LPARAM lParam);
QUENNET_PLATFORM_API LRESULT WINAPI CallWindowProcA(WNDPROC procedure, HWND window, UINT message,
                                                    WPARAM wParam, LPARAM lParam);
QUENNET_PLATFORM_API BOOL WINAPI IsWindow(HWND window);
/// Is `window` a child of `parent`, or a child of one?
QUENNET_PLATFORM_API BOOL WINAPI IsChild(HWND parent, HWND window);
/// The parent of a child window, the owner of a popup, else null.
QUENNET_PLATFORM_API HWND WINAPI GetParent(HWND window);
/// The number of the owning thread, 0 for no window; `processId` may be null.
QUENNET_PLATFORM_API DWORD WINAPI GetWindowThreadProcessId(HWND window, LPDWORD processId);
/// Searches the top windows of all threads; null stands for any class or any text. Case is ignored.
QUENNET_PLATFORM_API HWND WINAPI FindWindowA(LPCSTR className, LPCSTR text);
/// The same among the children of `parent` (null: top windows), behind `after` (null: all).
QUENNET_PLATFORM_API HWND WINAPI FindWindowExA(HWND parent, HWND after, LPCSTR className,
                                               LPCSTR text);
QUENNET_PLATFORM_API INT WINAPI GetClassNameA(HWND window, LPSTR buffer, INT size);

/// 32-bit words; a word that holds a pointer takes SetWindowLongPtrA.
QUENNET_PLATFORM_API LONG WINAPI GetWindowLongA(HWND window, INT index);
QUENNET_PLATFORM_API LONG WINAPI SetWindowLongA(HWND window, INT index, LONG value);
QUENNET_PLATFORM_API LONG_PTR WINAPI GetWindowLongPtrA(HWND window, INT index);
/// The value before; 0 also for no window or an index past the extra bytes.
QUENNET_PLATFORM_API LONG_PTR WINAPI SetWindowLongPtrA(HWND window, INT index, LONG_PTR value);

/// `size` counts the terminator; the result does not.
QUENNET_PLATFORM_API INT WINAPI GetWindowTextA(HWND window, LPSTR buffer, INT size);
QUENNET_PLATFORM_API INT WINAPI GetWindowTextLengthA(HWND window);
QUENNET_PLATFORM_API BOOL WINAPI SetWindowTextA(HWND window, LPCSTR text);
// Places are pixels. A character is 8 of them wide and 16 high, a dialog unit is 2 of them. A
// display in characters takes the left and the upper edge to the character that they lie in, the
// right edge to the end of the character that it lies in, and the lower edge up to the end of the
// last whole line, so that a field of one line and a half has one; everything has at least one
// character. Frame, title and menu of a top window are the display's and lie around the window's
// place: its place is its client area.

/// A child's place is relative to the top window's, added up.
QUENNET_PLATFORM_API BOOL WINAPI GetWindowRect(HWND window, RECT* place);
/// Width and height: left and top are 0.
QUENNET_PLATFORM_API BOOL WINAPI GetClientRect(HWND window, RECT* area);

/// A child's place relative to its parent. Sends WM_MOVE and WM_SIZE for what has changed. A window
/// with WS_THICKFRAME is asked for its smallest and largest size before (WM_GETMINMAXINFO).
QUENNET_PLATFORM_API BOOL WINAPI MoveWindow(HWND window, INT x, INT y, INT width, INT height,
                                            BOOL repaint);
/// The same, with SWP_SHOWWINDOW and SWP_HIDEWINDOW. The order of windows does not change.
QUENNET_PLATFORM_API BOOL WINAPI SetWindowPos(HWND window, HWND after, INT x, INT y, INT width,
                                              INT height, UINT flags);

/// TRUE when the window was disabled before.
QUENNET_PLATFORM_API BOOL WINAPI EnableWindow(HWND window, BOOL enable);
QUENNET_PLATFORM_API BOOL WINAPI IsWindowEnabled(HWND window);
/// TRUE when the window was visible before. All commands but SW_HIDE show it; the first one tells
/// an overlapped window its size (WM_SIZE, WM_MOVE); others hear that at their creation. A top
/// window gets the focus with it, unless the command is SW_SHOWNOACTIVATE or SW_SHOWNA.
QUENNET_PLATFORM_API BOOL WINAPI ShowWindow(HWND window, INT command);
/// The window and all its parents are visible.
QUENNET_PLATFORM_API BOOL WINAPI IsWindowVisible(HWND window);
/// Of the calling thread. The window that had it; null also when the window is of another thread
/// or disabled.
QUENNET_PLATFORM_API HWND WINAPI SetFocus(HWND window);
QUENNET_PLATFORM_API HWND WINAPI GetFocus(void);
/// All clicks of the calling thread go to its window until it lets them go. The window before.
QUENNET_PLATFORM_API HWND WINAPI SetCapture(HWND window);
QUENNET_PLATFORM_API BOOL WINAPI ReleaseCapture(void);
QUENNET_PLATFORM_API HWND WINAPI GetCapture(void);
/// Below 0 while the key is down, as far as the calling thread has read its key messages.
QUENNET_PLATFORM_API SHORT WINAPI GetKeyState(INT key);
/// Tells the display.
QUENNET_PLATFORM_API BOOL WINAPI InvalidateRect(HWND window, const RECT* area, BOOL erase);
/// A window is drawn when its thread has nothing else to do, not before.
QUENNET_PLATFORM_API BOOL WINAPI UpdateWindow(HWND window);
/// Asks the display to put the top window in front of the others. Any thread.
QUENNET_PLATFORM_API BOOL WINAPI SetForegroundWindow(HWND window);

// ---- Resources --------------------------------------------------------------------------------
//
// The layer reads no resources of libraries. A handle stands for instance and number of what was
// asked for, and two such questions get the same one; null for a name that is no number. No display
// shows them.

QUENNET_PLATFORM_API HICON WINAPI LoadIconA(HINSTANCE instance, LPCSTR name);
QUENNET_PLATFORM_API HCURSOR WINAPI LoadCursorA(HINSTANCE instance, LPCSTR name);
/// IMAGE_ICON or IMAGE_CURSOR; size and flags are not looked at.
QUENNET_PLATFORM_API HANDLE WINAPI LoadImageA(HINSTANCE instance, LPCSTR name, UINT type, INT width,
                                              INT height, UINT flags);
/// Of the calling thread. The one before.
QUENNET_PLATFORM_API HCURSOR WINAPI SetCursor(HCURSOR cursor);

// ---- Messages ---------------------------------------------------------------------------------

/// Waits for a message of the calling thread and serves what is sent to its windows meanwhile.
/// 0 for WM_QUIT, -1 when `window` is none. A window stands for its children too.
QUENNET_PLATFORM_API BOOL WINAPI GetMessageA(MSG* message, HWND window, UINT first, UINT last);
/// The same without waiting; 0 when there is no message.
QUENNET_PLATFORM_API BOOL WINAPI PeekMessageA(MSG* message, HWND window, UINT first, UINT last,
                                              UINT remove);
/// Posts WM_CHAR behind a WM_KEYDOWN of a key that has a character.
QUENNET_PLATFORM_API BOOL WINAPI TranslateMessage(const MSG* message);
QUENNET_PLATFORM_API LRESULT WINAPI DispatchMessageA(const MSG* message);
/// Queues; a null window means the calling thread. FALSE for no window or a queue of 10,000.
QUENNET_PLATFORM_API BOOL WINAPI PostMessageA(HWND window, UINT message, WPARAM wParam,
                                              LPARAM lParam);
/// FALSE when the thread has no queue: it has one after its first PeekMessageA or window.
QUENNET_PLATFORM_API BOOL WINAPI PostThreadMessageA(DWORD thread, UINT message, WPARAM wParam,
                                                    LPARAM lParam);
QUENNET_PLATFORM_API void WINAPI PostQuitMessage(INT exitCode);
/// Runs the window's procedure on the window's thread and gives its result. To another thread it
/// waits, serving what is sent to the caller's windows meanwhile; 0 when the window or its thread
/// ends before it answered.
QUENNET_PLATFORM_API LRESULT WINAPI SendMessageA(HWND window, UINT message, WPARAM wParam,
                                                 LPARAM lParam);

/// Milliseconds, 10 at least. Sets the timer again, from now, when it is running. Works on a window
/// of any thread of the process; `procedure` is null. The timer's number, 0 for no window.
QUENNET_PLATFORM_API UINT_PTR WINAPI SetTimer(HWND window, UINT_PTR timer, UINT milliseconds,
                                              TIMERPROC procedure);
/// No WM_TIMER comes out of the queue after this. FALSE when there was no such timer.
QUENNET_PLATFORM_API BOOL WINAPI KillTimer(HWND window, UINT_PTR timer);

// ---- Dialogs ----------------------------------------------------------------------------------

/// Runs the dialog that is registered for the instance (quennet_platform.h) and returns what
/// EndDialog was given; -1 when there is no such template, 0 when `owner` is no window.
QUENNET_PLATFORM_API INT_PTR WINAPI DialogBoxParamA(HINSTANCE instance, LPCSTR templateName,
                                                    HWND owner, DLGPROC procedure,
                                                    LPARAM parameter);
QUENNET_PLATFORM_API BOOL WINAPI EndDialog(HWND dialog, INT_PTR result);
QUENNET_PLATFORM_API LRESULT WINAPI DefDlgProcA(HWND dialog, UINT message, WPARAM wParam,
                                                LPARAM lParam);
/// Handles and dispatches a message of the dialog's: Tab, Shift-Tab, Enter, Esc, the arrows that a
/// control does not want, and the letters behind a '&'. FALSE when it is not the dialog's. Any
/// other window with controls may stand for the dialog: a message loop that calls it lets Tab move
/// between the controls there that have WS_TABSTOP. Enter then goes to the control, if that is no
/// push button, and Esc comes as the command IDCANCEL.
QUENNET_PLATFORM_API BOOL WINAPI IsDialogMessageA(HWND dialog, MSG* message);
QUENNET_PLATFORM_API HWND WINAPI GetNextDlgTabItem(HWND dialog, HWND control, BOOL previous);
/// The next control that is shown, enabled and no label, among those that lie between two controls
/// with WS_GROUP; round and round.
QUENNET_PLATFORM_API HWND WINAPI GetNextDlgGroupItem(HWND dialog, HWND control, BOOL previous);
QUENNET_PLATFORM_API HWND WINAPI GetDlgItem(HWND dialog, INT id);
QUENNET_PLATFORM_API INT WINAPI GetDlgCtrlID(HWND control);
/// `size` counts the terminator, so at most size - 1 characters come.
QUENNET_PLATFORM_API UINT WINAPI GetDlgItemTextA(HWND dialog, INT id, LPSTR buffer, INT size);
/// An edit control tells its parent (EN_UPDATE, EN_CHANGE) before this returns.
QUENNET_PLATFORM_API BOOL WINAPI SetDlgItemTextA(HWND dialog, INT id, LPCSTR text);
QUENNET_PLATFORM_API LRESULT WINAPI SendDlgItemMessageA(HWND dialog, INT id, UINT message,
                                                        WPARAM wParam, LPARAM lParam);
QUENNET_PLATFORM_API BOOL WINAPI CheckDlgButton(HWND dialog, INT id, UINT check);
QUENNET_PLATFORM_API UINT WINAPI IsDlgButtonChecked(HWND dialog, INT id);

QUENNET_PLATFORM_END
