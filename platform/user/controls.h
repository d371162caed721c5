#pragma once
// Window procedures of the controls, and what they have in common.

#include "windows.h"

#include <string>

namespace quennet::user {

extern "C" {
LRESULT CALLBACK ButtonProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK ComboBoxProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK EditProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK ListBoxProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK ListViewProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK StatusBarProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK StaticProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK ToolBarProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
}

/// Height of a character, and so of an entry of a list, in pixels; its width is half of it.
constexpr LONG characterHeight = 16;

/// Sends WM_COMMAND with the control's id and the code to its parent.
void NotifyParent(HWND control, WORD code);

/// The window's style, 0 when it is gone.
DWORD StyleOf(HWND window);
/// Sets or clears bits of the style.
void ChangeStyle(HWND window, DWORD bits, bool set);

/// The top window that a control or child belongs to; null when it is gone.
HWND TopWindow(HWND window);

/// Tells the window its size and place, unless it knows its size already.
void TellFirstSize(HWND window);

/// The window's text, of any length.
std::string TextOf(HWND window);

/// Copies at most size - 1 characters and a terminator. Returns the characters copied.
LRESULT CopyText(const char* text, std::size_t length, char* buffer, std::size_t size);

}  // namespace quennet::user
