// What the layer tells a display and asks of it, with a display that shows nothing.

#include <gtest/gtest.h>
#include <quennet_canvas.h>
#include <quennet_platform.h>

#include <array>
#include <atomic>
#include <deque>
#include <mutex>
#include <set>
#include <thread>

namespace {

constexpr INT nameField = 10;
constexpr std::array controls = {
    QuennetControlTemplate{"Edit", nameField, WS_TABSTOP, 0, 0, 40, 12},
    QuennetControlTemplate{"Button", IDOK, WS_TABSTOP | BS_DEFPUSHBUTTON, 0, 16, 40, 12},
};
constexpr QuennetDialogTemplate dialogTemplate = {1,  "asked",         WS_POPUP | WS_CAPTION, 60,
                                                  40, controls.data(), controls.size()};

/// Types one key whenever the thread has nothing else to do, and draws its windows then.
class TypingDisplay : public quennet::Display {
  public:
    void WindowCreated(HWND window) override {
        const std::lock_guard lock(mutex_);
        EXPECT_FALSE(IsWindowVisible(window));
        living_.insert(window);
    }
    void WindowChanged(HWND window) override {
        const std::lock_guard lock(mutex_);
        EXPECT_TRUE(living_.contains(window)) << "made before it changes";
        if (IsWindowVisible(window)) {
            shown_.insert(window);
        }
    }
    void WindowDestroyed(HWND window) override {
        const std::lock_guard lock(mutex_);
        EXPECT_FALSE(IsWindow(window));
        EXPECT_EQ(living_.erase(window), 1U);
    }
    void RunInput() override {
        const HWND focus = GetFocus();
        if (!focus) {
            return;
        }
        quennet::Surface surface(5, 1, quennet::Ink::window);
        quennet::Canvas canvas(surface, {0, 0, 5, 1}, {0, 0, 5, 1}, true);
        SendMessageA(focus, QUENNET_DRAW, 0, reinterpret_cast<LPARAM>(&canvas));
        std::string text;
        for (const quennet::Cell& cell : surface.cells) {
            text += static_cast<char>(cell.code);
        }
        drawn_ += text + '/';
        const std::lock_guard lock(mutex_);
        if (!keys_.empty()) {
            const auto [message, key] = keys_.front();
            keys_.pop_front();
            PostMessageA(focus, message, key, 0);
        }
    }

    void Type(std::initializer_list<std::pair<UINT, WPARAM>> keys) {
        const std::lock_guard lock(mutex_);
        keys_.insert(keys_.end(), keys);
    }
    std::size_t Living() {
        const std::lock_guard lock(mutex_);
        return living_.size();
    }
    std::size_t Shown() {
        const std::lock_guard lock(mutex_);
        return shown_.size();
    }

    std::string drawn_;

  private:
    std::mutex mutex_;
    std::set<HWND> living_;
    std::set<HWND> shown_;
    std::deque<std::pair<UINT, WPARAM>> keys_;
};

INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrA(dialog, DWLP_USER, lParam);
        return TRUE;
    }
    if (message == WM_COMMAND && LOWORD(wParam) == IDOK) {
        char text[20];
        GetDlgItemTextA(dialog, nameField, text, sizeof(text));
        *reinterpret_cast<std::string*>(GetWindowLongPtrA(dialog, DWLP_USER)) = text;
        EndDialog(dialog, IDOK);
    }
    return FALSE;
}

}  // namespace

TEST(Display, TypesIntoAWindowDrawsItOnItsThreadAndSeesItComeAndGo) {
    TypingDisplay display;
    const auto instance = reinterpret_cast<HINSTANCE>(&display);
    QuennetRegisterDialogs(instance, &dialogTemplate, 1);
    quennet::SetDisplay(&display);
    display.Type({{WM_CHAR, 'a'}, {WM_CHAR, 'b'}});
    // The rest is typed while the dialog waits.
    const DWORD dialogThread = GetCurrentThreadId();
    std::thread person([&] {
        while (display.Shown() == 0) {
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        display.Type({{WM_CHAR, 'c'}, {WM_KEYDOWN, VK_RETURN}});
        QuennetWakeThread(dialogThread);
    });
    std::string text;
    EXPECT_EQ(DialogBoxParamA(instance, MAKEINTRESOURCEA(1), nullptr, Procedure,
                              reinterpret_cast<LPARAM>(&text)),
              IDOK);
    person.join();
    quennet::SetDisplay(nullptr);
    QuennetUnregisterDialogs(&dialogTemplate);
    EXPECT_EQ(text, "abc");
    EXPECT_EQ(display.Living(), 0U);
    for (const char* drawn : {"     /", "a    /", "ab   /", "abc  /"}) {
        EXPECT_NE(display.drawn_.find(drawn), std::string::npos) << display.drawn_;
    }
}
