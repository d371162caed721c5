#pragma once
// The common controls of the platform, for POSIX systems: list view, status bar, tool bar, and what
// a tool bar asks for its tool tips. Names, values and records are those that the platform
// documents; a comment says what a caller of this layer has to know besides.

#include "windows.h"

#define WC_LISTVIEWA      "SysListView32"
#define STATUSCLASSNAMEA  "msctls_statusbar32"
#define TOOLBARCLASSNAMEA "ToolbarWindow32"

typedef struct QuennetImageList* HIMAGELIST;

// ---- Common to all ----------------------------------------------------------------------------

#define CCS_TOP           0x0001
#define CCS_NOMOVEY       0x0002
#define CCS_BOTTOM        0x0003
#define CCS_NORESIZE      0x0004
#define CCS_NOPARENTALIGN 0x0008
#define CCS_ADJUSTABLE    0x0020
#define CCS_NODIVIDER     0x0040

#define NM_FIRST     (0U - 0U)
#define NM_CLICK     (NM_FIRST - 2)
#define NM_DBLCLK    (NM_FIRST - 3)
#define NM_RETURN    (NM_FIRST - 4)
#define NM_SETFOCUS  (NM_FIRST - 7)
#define NM_KILLFOCUS (NM_FIRST - 8)

// ---- List view --------------------------------------------------------------------------------
//
// Its rows are always the owner's (LVS_OWNERDATA): the control keeps their number, the focused one
// and a bit for each selected one, and asks for what it shows with LVN_GETDISPINFOA, row by row as
// it paints. LVS_AUTOARRANGE is how it always is; labels are not edited.
//
// In the report a character is 6 pixels of a column's width; what is left of the line belongs to
// the last column, if that is aligned to the left. A double click on a title fits the column to
// what it shows; '+' does that to all columns. In the other views, items stand in lines: across and
// down with LVS_ICON and LVS_SMALLICON, down and across with LVS_LIST. Where an image
// list is set, whatever it is, folders show as such (QUENNET_ICON_FOLDER, shellapi.h).
//
// Keys: arrows, Page Up and Down, Home and End; with Shift they select up to there, with Ctrl they
// move the focus alone. Left and Right turn the page of columns in the report. Space selects, with
// Ctrl it switches; Ctrl-A selects all; Enter activates. Clicks take Shift and Ctrl likewise.

#define LVS_ICON            0x0000
#define LVS_REPORT          0x0001
#define LVS_SMALLICON       0x0002
#define LVS_LIST            0x0003
#define LVS_TYPEMASK        0x0003
#define LVS_SINGLESEL       0x0004
#define LVS_SHOWSELALWAYS   0x0008
#define LVS_SHAREIMAGELISTS 0x0040
#define LVS_AUTOARRANGE     0x0100
#define LVS_EDITLABELS      0x0200
#define LVS_OWNERDATA       0x1000
#define LVS_NOCOLUMNHEADER  0x4000
#define LVS_NOSORTHEADER    0x8000

#define LVS_EX_HEADERDRAGDROP 0x00000010
#define LVS_EX_FULLROWSELECT  0x00000020

#define LVSIL_NORMAL 0
#define LVSIL_SMALL  1
#define LVSIL_STATE  2

#define LVIF_TEXT   0x0001
#define LVIF_IMAGE  0x0002
#define LVIF_PARAM  0x0004
#define LVIF_STATE  0x0008
#define LVIF_INDENT 0x0010

#define LVIS_FOCUSED  0x0001
#define LVIS_SELECTED 0x0002

#define LVNI_ALL      0x0000
#define LVNI_FOCUSED  0x0001
#define LVNI_SELECTED 0x0002
#define LVNI_ABOVE    0x0100
#define LVNI_BELOW    0x0200

#define LVSICF_NOINVALIDATEALL 0x0001
#define LVSICF_NOSCROLL        0x0002

#define LVCF_FMT     0x0001
#define LVCF_WIDTH   0x0002
#define LVCF_TEXT    0x0004
#define LVCF_SUBITEM 0x0008
#define LVCF_IMAGE   0x0010
#define LVCF_ORDER   0x0020

#define LVCFMT_LEFT        0x0000
#define LVCFMT_RIGHT       0x0001
#define LVCFMT_CENTER      0x0002
#define LVCFMT_JUSTIFYMASK 0x0003

#define LVSCW_AUTOSIZE           (-1)  // what the rows in sight need
#define LVSCW_AUTOSIZE_USEHEADER (-2)  // that and the title

#define LVKF_ALT     0x0001
#define LVKF_CONTROL 0x0002
#define LVKF_SHIFT   0x0004

#define LVM_FIRST                    0x1000
#define LVM_GETIMAGELIST             (LVM_FIRST + 2)
#define LVM_SETIMAGELIST             (LVM_FIRST + 3)
#define LVM_GETITEMCOUNT             (LVM_FIRST + 4)
#define LVM_GETITEMA                 (LVM_FIRST + 5)
#define LVM_DELETEALLITEMS           (LVM_FIRST + 9)
#define LVM_GETNEXTITEM              (LVM_FIRST + 12)
#define LVM_ENSUREVISIBLE            (LVM_FIRST + 19)
#define LVM_REDRAWITEMS              (LVM_FIRST + 21)
#define LVM_GETCOLUMNA               (LVM_FIRST + 25)
#define LVM_SETCOLUMNA               (LVM_FIRST + 26)
#define LVM_INSERTCOLUMNA            (LVM_FIRST + 27)
#define LVM_DELETECOLUMN             (LVM_FIRST + 28)
#define LVM_GETCOLUMNWIDTH           (LVM_FIRST + 29)
#define LVM_SETCOLUMNWIDTH           (LVM_FIRST + 30)
#define LVM_GETTOPINDEX              (LVM_FIRST + 39)
#define LVM_GETCOUNTPERPAGE          (LVM_FIRST + 40)
#define LVM_UPDATE                   (LVM_FIRST + 42)
#define LVM_SETITEMSTATE             (LVM_FIRST + 43)
#define LVM_GETITEMSTATE             (LVM_FIRST + 44)
#define LVM_GETITEMTEXTA             (LVM_FIRST + 45)
#define LVM_SETITEMCOUNT             (LVM_FIRST + 47)
#define LVM_GETSELECTEDCOUNT         (LVM_FIRST + 50)
#define LVM_SETEXTENDEDLISTVIEWSTYLE (LVM_FIRST + 54)
#define LVM_GETEXTENDEDLISTVIEWSTYLE (LVM_FIRST + 55)
#define LVM_SETCOLUMNORDERARRAY      (LVM_FIRST + 58)
#define LVM_GETCOLUMNORDERARRAY      (LVM_FIRST + 59)
#define LVM_GETSELECTIONMARK         (LVM_FIRST + 66)
#define LVM_SETSELECTIONMARK         (LVM_FIRST + 67)

#define LVN_FIRST          (0U - 100U)
#define LVN_ITEMCHANGED    (LVN_FIRST - 1)
#define LVN_DELETEALLITEMS (LVN_FIRST - 4)
#define LVN_COLUMNCLICK    (LVN_FIRST - 8)
#define LVN_ODCACHEHINT    (LVN_FIRST - 13)
#define LVN_ITEMACTIVATE   (LVN_FIRST - 14)
#define LVN_ODSTATECHANGED (LVN_FIRST - 15)
#define LVN_GETDISPINFOA   (LVN_FIRST - 50)

typedef struct tagLVITEMA {
    UINT mask;
    INT iItem;
    INT iSubItem;
    UINT state;
    UINT stateMask;
    LPSTR pszText;
    INT cchTextMax;
    INT iImage;
    LPARAM lParam;
    INT iIndent;
    INT iGroupId;
    UINT cColumns;
    UINT* puColumns;
    INT* piColFmt;
    INT iGroup;
} LVITEMA;

typedef struct tagLVCOLUMNA {
    UINT mask;
    INT fmt;
    INT cx;
    LPSTR pszText;
    INT cchTextMax;
    INT iSubItem;
    INT iImage;
    INT iOrder;
    INT cxMin;
    INT cxDefault;
    INT cxIdeal;
} LVCOLUMNA;

typedef struct tagNMLISTVIEW {
    NMHDR hdr;
    INT iItem;  // -1 for all
    INT iSubItem;
    UINT uNewState;
    UINT uOldState;
    UINT uChanged;
    POINT ptAction;
    LPARAM lParam;
} NMLISTVIEW;

typedef struct tagNMITEMACTIVATE {
    NMHDR hdr;
    INT iItem;
    INT iSubItem;
    UINT uNewState;
    UINT uOldState;
    UINT uChanged;
    POINT ptAction;
    LPARAM lParam;
    UINT uKeyFlags;
} NMITEMACTIVATE;

/// LVN_ODCACHEHINT: the rows that the control is about to ask for.
typedef struct tagNMLVCACHEHINT {
    NMHDR hdr;
    INT iFrom;
    INT iTo;
} NMLVCACHEHINT;

/// LVN_ODSTATECHANGED: a range of rows was selected or deselected.
typedef struct tagNMLVODSTATECHANGE {
    NMHDR hdr;
    INT iFrom;
    INT iTo;
    UINT uNewState;
    UINT uOldState;
} NMLVODSTATECHANGE;

/// LVN_GETDISPINFOA: the owner writes into pszText, at most cchTextMax bytes with the terminator,
/// or lets it point to a text of its own.
typedef struct tagLVDISPINFO {
    NMHDR hdr;
    LVITEMA item;
} NMLVDISPINFOA;

// ---- Status bar -------------------------------------------------------------------------------
//
// One row of characters at the lower edge of its parent, where WM_SIZE puts it.

#define SBARS_SIZEGRIP 0x0100

#define SB_SETTEXTA       (WM_USER + 1)
#define SB_GETTEXTA       (WM_USER + 2)
#define SB_GETTEXTLENGTHA (WM_USER + 3)
#define SB_SETPARTS       (WM_USER + 4)
#define SB_GETPARTS       (WM_USER + 6)
#define SB_GETRECT        (WM_USER + 10)
#define SB_SETICON        (WM_USER + 15)
#define SB_GETICON        (WM_USER + 20)

#define SBT_NOBORDERS 0x0100
#define SBT_POPOUT    0x0200

// ---- Tool bar ---------------------------------------------------------------------------------

#define TBSTATE_CHECKED       0x01
#define TBSTATE_PRESSED       0x02
#define TBSTATE_ENABLED       0x04
#define TBSTATE_HIDDEN        0x08
#define TBSTATE_INDETERMINATE 0x10
#define TBSTATE_WRAP          0x20

#define TBSTYLE_BUTTON     0x0000
#define TBSTYLE_SEP        0x0001
#define TBSTYLE_CHECK      0x0002
#define TBSTYLE_GROUP      0x0004
#define TBSTYLE_CHECKGROUP (TBSTYLE_GROUP | TBSTYLE_CHECK)
#define TBSTYLE_TOOLTIPS   0x0100
#define TBSTYLE_WRAPABLE   0x0200
#define TBSTYLE_FLAT       0x0800

#define TB_ENABLEBUTTON     (WM_USER + 1)
#define TB_CHECKBUTTON      (WM_USER + 2)
#define TB_HIDEBUTTON       (WM_USER + 4)
#define TB_ISBUTTONENABLED  (WM_USER + 9)
#define TB_ISBUTTONCHECKED  (WM_USER + 10)
#define TB_ISBUTTONHIDDEN   (WM_USER + 12)
#define TB_SETSTATE         (WM_USER + 17)
#define TB_GETSTATE         (WM_USER + 18)
#define TB_ADDBITMAP        (WM_USER + 19)
#define TB_ADDBUTTONSA      (WM_USER + 20)
#define TB_INSERTBUTTONA    (WM_USER + 21)
#define TB_DELETEBUTTON     (WM_USER + 22)
#define TB_GETBUTTON        (WM_USER + 23)
#define TB_BUTTONCOUNT      (WM_USER + 24)
#define TB_COMMANDTOINDEX   (WM_USER + 25)
#define TB_GETITEMRECT      (WM_USER + 29)
#define TB_BUTTONSTRUCTSIZE (WM_USER + 30)
#define TB_SETBUTTONSIZE    (WM_USER + 31)
#define TB_SETBITMAPSIZE    (WM_USER + 32)
#define TB_AUTOSIZE         (WM_USER + 33)
#define TB_SETIMAGELIST     (WM_USER + 48)
#define TB_GETBUTTONSIZE    (WM_USER + 58)

typedef struct _TBBUTTON {
    INT iBitmap;
    INT idCommand;
    BYTE fsState;
    BYTE fsStyle;
    BYTE bReserved[sizeof(void*) == 8 ? 6 : 2];
    DWORD_PTR dwData;
    INT_PTR iString;
} TBBUTTON;

typedef struct tagTBADDBITMAP {
    HINSTANCE hInst;
    UINT_PTR nID;
} TBADDBITMAP;

// ---- Tool tips --------------------------------------------------------------------------------

#define TTN_FIRST        (0U - 520U)
#define TTN_GETDISPINFOA (TTN_FIRST - 0)
#define TTN_NEEDTEXTA    TTN_GETDISPINFOA

typedef struct tagNMTTDISPINFOA {
    NMHDR hdr;  // idFrom is the button's command
    LPSTR lpszText;
    CHAR szText[80];
    HINSTANCE hinst;
    UINT uFlags;
    LPARAM lParam;
} NMTTDISPINFOA;
typedef NMTTDISPINFOA TOOLTIPTEXTA;

QUENNET_PLATFORM_BEGIN

/// A status bar, a child of `parent`, at its lower edge.
QUENNET_PLATFORM_API HWND WINAPI CreateStatusWindowA(LONG style, LPCSTR text, HWND parent, UINT id);

QUENNET_PLATFORM_END
