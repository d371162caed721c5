#pragma once
// A person at the dialogs of this process, from a thread of its own: everything goes through the
// platform's own calls, as it would from another program.

#include <windows.h>

#include <string>
#include <vector>

/// A dialog on the screen. On a dialog that never came, operations do nothing.
class OpenDialog {
  public:
    explicit OpenDialog(HWND window) : window_(window) {}

    HWND Window() const { return window_; }
    bool IsOpen() const { return IsWindow(window_); }
    bool IsEnabled(int id) const;
    std::string Caption() const;

    std::string Field(int id) const;
    /// Puts the text in at once, whatever the field's limit.
    void SetField(int id, const std::string& text) const;
    /// Types behind what is in the field.
    void Type(int id, const std::string& text) const;

    bool IsChecked(int id) const;
    /// Clicks the box if it is not so, and returns when the click was handled. Where a click opens
    /// another dialog take Press.
    void SetChecked(int id, bool checked) const;

    /// These three know list boxes and drop-down lists.
    std::vector<std::string> Entries(int listId) const;
    /// The index of the selected entry, -1 for none.
    int Selected(int listId) const;
    /// Clicks an entry, or walks to it in a drop-down list, and returns when that was handled.
    void Choose(int listId, int index) const;

    /// Presses a button and does not wait for what comes of it. A failure of the test when the
    /// button, or the dialog below another one, can't be pressed.
    void Press(int id) const;
    /// Presses a key while the control has the focus, and does not wait either.
    void PressKey(int id, WPARAM key) const;

    /// False when it stays.
    bool WaitUntilClosed() const;

  private:
    struct ListMessages {
        UINT count;
        UINT textLength;
        UINT text;
        UINT selected;
    };

    const ListMessages& MessagesOf(int listId) const;
    bool IsDropDown(int listId) const;
    HWND Item(int id) const { return GetDlgItem(window_, id); }

    HWND window_;
};

/// Waits until a dialog with that caption is shown, and its procedure has set it up. A failure of
/// the test when none comes.
OpenDialog WaitForDialog(const std::string& caption);

/// The same for a dialog of one thread, whatever its caption.
OpenDialog WaitForDialogOf(DWORD thread);
