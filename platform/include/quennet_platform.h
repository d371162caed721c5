#pragma once
// What only the POSIX layer has: dialog templates are registered here, where another system reads
// them from a library's resources, and a display can be put in.

#include "windows.h"

/// A control of a dialog template: place and size in dialog units.
typedef struct QuennetControlTemplate {
    LPCSTR className;
    WORD id;
    DWORD style;  // WS_CHILD and WS_VISIBLE come by themselves
    SHORT x;
    SHORT y;
    SHORT width;
    SHORT height;
#ifdef __cplusplus
    LPCSTR text = "";
#else
    LPCSTR text;
#endif
} QuennetControlTemplate;

/// A dialog template; its controls stand in tab order.
typedef struct QuennetDialogTemplate {
    WORD id;
    LPCSTR title;
    DWORD style;
    SHORT width;
    SHORT height;
    const QuennetControlTemplate* controls;
    UINT controlCount;
} QuennetDialogTemplate;

QUENNET_PLATFORM_BEGIN

/// Makes the templates known to DialogBoxParamA for `instance`, the load address of the library
/// that they belong to. The table stays the caller's and must live until it is taken back. An
/// instance may have several tables; the newest is searched first.
QUENNET_PLATFORM_API void QuennetRegisterDialogs(HINSTANCE instance,
                                                 const QuennetDialogTemplate* templates,
                                                 UINT count);
/// Takes a table back, before its library is unloaded.
QUENNET_PLATFORM_API void QuennetUnregisterDialogs(const QuennetDialogTemplate* templates);

/// What the process has open in the layer. A program that runs for long finds leaks by it.
typedef struct QuennetOpenObjects {
    UINT windows;
    UINT menus;
    UINT timers;
    UINT queues;   // threads that have made a window or asked for a message
    UINT handles;  // of threads
} QuennetOpenObjects;

QUENNET_PLATFORM_API void QuennetCountOpenObjects(QuennetOpenObjects* count);

/// Ends the waits for sockets that are in progress in the process and have a time limit, as if
/// their time were over: who waits in short pieces and looks at a flag between them sees it now.
QUENNET_PLATFORM_API void QuennetEndSocketWaits(void);

/// Makes the message loop of a thread call Display::RunInput once more.
QUENNET_PLATFORM_API void QuennetWakeThread(DWORD thread);

QUENNET_PLATFORM_END

#ifdef __cplusplus

namespace quennet {

/// How windows are shown. The layer holds no lock while it calls, so a display may use the calls of
/// winuser.h; a call comes on the thread that made the change, so a display locks what it keeps.
class Display {
  public:
    virtual ~Display() = default;

    /// The window exists, its controls not yet; nothing is visible before WindowChanged.
    virtual void WindowCreated(HWND window) = 0;
    /// Text, contents, place, visibility, focus or state may have changed.
    virtual void WindowChanged(HWND window) = 0;
    /// The number is no longer a window.
    virtual void WindowDestroyed(HWND window) = 0;
    /// The window is to come to the front, for a display that has one.
    virtual void WindowRaised(HWND) {}
    /// The calling thread has no message left and is about to wait. The display posts the keys and
    /// clicks that it has for this thread's windows and returns at once; when input comes later it
    /// calls QuennetWakeThread.
    virtual void RunInput() = 0;
};

/// Puts a display in; null puts the headless one back, which shows nothing and has no input. To be
/// called while no window exists; the display stays the caller's.
QUENNET_PLATFORM_API void SetDisplay(Display* display);

}  // namespace quennet

#endif
