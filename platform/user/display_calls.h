#pragma once
// The window layer's calls to the display. None is made with the lock held.

#include "windows.h"

namespace quennet::user {

void TellCreated(HWND window);
void TellChanged(HWND window);
void TellDestroyed(HWND window);
void TellRaised(HWND window);
void RunDisplayInput();

}  // namespace quennet::user
