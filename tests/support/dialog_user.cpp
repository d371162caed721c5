#include "support/dialog_user.h"

#include <gtest/gtest.h>

#include "support/wait.h"

namespace {

/// `caption` null and `thread` 0 stand for any.
HWND FindShownDialog(const char* caption, DWORD thread = 0) {
    HWND window = nullptr;
    while ((window = FindWindowExA(nullptr, window, "#32770", caption)) != nullptr) {
        const bool isWanted = thread == 0 || GetWindowThreadProcessId(window, nullptr) == thread;
        if (isWanted && IsWindowVisible(window) && IsWindowEnabled(window)) {
            return window;
        }
    }
    return nullptr;
}

std::string TextOf(HWND window) {
    std::string text(static_cast<std::size_t>(GetWindowTextLengthA(window)) + 1, '\0');
    text.resize(static_cast<std::size_t>(
        GetWindowTextA(window, text.data(), static_cast<INT>(text.size()))));
    return text;
}

}  // namespace

const OpenDialog::ListMessages& OpenDialog::MessagesOf(int listId) const {
    static constexpr ListMessages ofListBox = {LB_GETCOUNT, LB_GETTEXTLEN, LB_GETTEXT,
                                               LB_GETCURSEL};
    static constexpr ListMessages ofDropDown = {CB_GETCOUNT, CB_GETLBTEXTLEN, CB_GETLBTEXT,
                                                CB_GETCURSEL};
    return IsDropDown(listId) ? ofDropDown : ofListBox;
}

bool OpenDialog::IsDropDown(int listId) const {
    char name[16] = "";
    GetClassNameA(Item(listId), name, sizeof(name));
    return lstrcmpiA(name, "ComboBox") == 0;
}

bool OpenDialog::IsEnabled(int id) const {
    return IsWindowEnabled(Item(id));
}

std::string OpenDialog::Caption() const {
    return TextOf(window_);
}

std::string OpenDialog::Field(int id) const {
    return TextOf(Item(id));
}

void OpenDialog::SetField(int id, const std::string& text) const {
    SetDlgItemTextA(window_, id, text.c_str());
}

void OpenDialog::Type(int id, const std::string& text) const {
    SendDlgItemMessageA(window_, id, EM_SETSEL, static_cast<WPARAM>(GetWindowTextLengthA(Item(id))),
                        -1);
    for (const char character : text) {
        SendDlgItemMessageA(window_, id, WM_CHAR, static_cast<unsigned char>(character), 0);
    }
}

bool OpenDialog::IsChecked(int id) const {
    return IsDlgButtonChecked(window_, id) == BST_CHECKED;
}

void OpenDialog::SetChecked(int id, bool checked) const {
    if (IsChecked(id) != checked) {
        SendDlgItemMessageA(window_, id, BM_CLICK, 0, 0);
    }
}

std::vector<std::string> OpenDialog::Entries(int listId) const {
    const ListMessages& messages = MessagesOf(listId);
    std::vector<std::string> entries;
    const LRESULT count = SendDlgItemMessageA(window_, listId, messages.count, 0, 0);
    for (LRESULT index = 0; index < count; ++index) {
        const auto number = static_cast<WPARAM>(index);
        const LRESULT length = SendDlgItemMessageA(window_, listId, messages.textLength, number, 0);
        std::string text(static_cast<std::size_t>(length) + 1, '\0');
        SendDlgItemMessageA(window_, listId, messages.text, number,
                            reinterpret_cast<LPARAM>(text.data()));
        text.pop_back();
        entries.push_back(text);
    }
    return entries;
}

int OpenDialog::Selected(int listId) const {
    return static_cast<int>(
        SendDlgItemMessageA(window_, listId, MessagesOf(listId).selected, 0, 0));
}

void OpenDialog::Choose(int listId, int index) const {
    if (IsDropDown(listId)) {
        SendDlgItemMessageA(window_, listId, WM_KEYDOWN, VK_HOME, 0);
        for (int below = 0; below < index; ++below) {
            SendDlgItemMessageA(window_, listId, WM_KEYDOWN, VK_DOWN, 0);
        }
        return;
    }
    const auto number = static_cast<WPARAM>(index);
    RECT area = {};
    SendDlgItemMessageA(window_, listId, LB_SETTOPINDEX, number, 0);
    SendDlgItemMessageA(window_, listId, LB_GETITEMRECT, number, reinterpret_cast<LPARAM>(&area));
    const LPARAM point = MAKELPARAM(area.left + 1, area.top + 1);
    SendDlgItemMessageA(window_, listId, WM_LBUTTONDOWN, 0, point);
    SendDlgItemMessageA(window_, listId, WM_LBUTTONUP, 0, point);
}

void OpenDialog::Press(int id) const {
    EXPECT_TRUE(IsWindowEnabled(window_) && IsEnabled(id))
        << "button " << id << " of \"" << Caption() << '"';
    PostMessageA(Item(id), BM_CLICK, 0, 0);
}

void OpenDialog::PressKey(int id, WPARAM key) const {
    PostMessageA(Item(id), WM_KEYDOWN, key, 0);
    PostMessageA(Item(id), WM_KEYUP, key, 0);
}

bool OpenDialog::WaitUntilClosed() const {
    return WaitUntil([this] { return !IsOpen(); });
}

OpenDialog WaitForDialog(const std::string& caption) {
    HWND window = nullptr;
    EXPECT_TRUE(WaitUntil([&] { return (window = FindShownDialog(caption.c_str())) != nullptr; }))
        << "no dialog \"" << caption << '"';
    return OpenDialog(window);
}

OpenDialog WaitForDialogOf(DWORD thread) {
    HWND window = nullptr;
    EXPECT_TRUE(WaitUntil([&] { return (window = FindShownDialog(nullptr, thread)) != nullptr; }))
        << "no dialog of thread " << thread;
    return OpenDialog(window);
}
