// The host's own dialogs, worked from another thread.

#include <gtest/gtest.h>

#include <future>
#include <string>

#include "hostkit/terminal_questions.h"
#include "support/dialog_user.h"

namespace {

enum : int { textLabel = 100, passwordField = 101, okButton = 99, cancelButton = 2 };

constexpr std::size_t longest = 79;

}  // namespace

TEST(Questions, AskForAPasswordOnAnyThread) {
    struct {
        std::string typed;
        int button;
        std::optional<std::string> answer;
    } const cases[] = {
        {"se&cret", okButton, "se&cret"},
        {"", okButton, ""},
        {"typed", cancelButton, std::nullopt},
        {std::string(longest + 9, 'x'), okButton, std::string(longest, 'x')},
    };
    for (const auto& step : cases) {
        std::promise<DWORD> started;
        auto answer = std::async(std::launch::async, [&] {
            started.set_value(GetCurrentThreadId());
            return hostkit::AskPasswordDialog("R&D.example.org");
        });
        const OpenDialog dialog = WaitForDialogOf(started.get_future().get());
        EXPECT_EQ(dialog.Field(textLabel), "Password for R&D.example.org:");
        EXPECT_EQ(SendDlgItemMessageA(dialog.Window(), passwordField, EM_GETPASSWORDCHAR, 0, 0),
                  '*');
        dialog.Type(passwordField, step.typed);
        dialog.Press(step.button);
        EXPECT_EQ(answer.get(), step.answer) << step.typed;
    }
}

TEST(Questions, StandAboveEachOtherAndAsLargeAsTheirTexts) {
    hostkit::HostOptions options;
    hostkit::AskInDialogs(options);
    const std::string text = "A line, and then so many words that they need another one, even here";
    auto below = std::async(std::launch::async, [&] { options.showMessage(1, text); });
    const OpenDialog first = WaitForDialog(" Quennet");
    auto above = std::async(std::launch::async, [&] { options.reportError(2, "a\nb\nc"); });
    OpenDialog second = first;
    while (second.Window() == first.Window()) {
        second = WaitForDialog(" Quennet");
    }
    const auto rowsOf = [](const OpenDialog& dialog) {
        RECT place = {};
        GetWindowRect(GetDlgItem(dialog.Window(), textLabel), &place);
        return (place.bottom - place.top) / 16;
    };
    EXPECT_EQ(rowsOf(first), 2);
    EXPECT_EQ(rowsOf(second), 3);
    EXPECT_TRUE(IsWindowEnabled(first.Window())) << "of another thread";
    second.PressKey(okButton, VK_ESCAPE);
    above.get();
    first.PressKey(okButton, VK_RETURN);
    below.get();
}
