#pragma once
// What a Find window does with its messages.

#include "find/find_record.h"

namespace quennet {

/// The procedure of the window's class. The creation parameter is the FindWindow, which the window
/// gives back.
LRESULT CALLBACK FindWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// Keeps the record while something is at work with it on the window's thread: a message, or the
/// opening. The last one to let go frees the record, if its window is gone (`session` is null).
class FindWindowUse {
  public:
    /// A null record is allowed.
    explicit FindWindowUse(FindWindow* find);
    ~FindWindowUse();
    FindWindowUse(const FindWindowUse&) = delete;
    FindWindowUse& operator=(const FindWindowUse&) = delete;

  private:
    FindWindow* find_;
};

}  // namespace quennet
