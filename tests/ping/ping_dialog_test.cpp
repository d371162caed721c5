// A person at the ping dialog, while the engine waits for the test.

#include <future>
#include <semaphore>

#include "host/message.h"
#include "ping/scripted_platform.h"
#include "support/dialog_user.h"
#include "support/session_test.h"
#include "support/wait.h"

using namespace quennet;

namespace {

constexpr int startButton = 99;
constexpr int stopButton = 7;
constexpr int targetBox = 14302;
constexpr int lineList = 14301;

using testing::ElementsAre;
using testing::IsEmpty;

class PingDialogTest : public testing::Test {
  protected:
    PingDialogTest() {
        platform.~ScriptedPlatform();
        new (&platform) ScriptedPlatform;
        platform.whileWaiting = [this] { answers_.acquire(); };
    }
    ~PingDialogTest() override { std::free(State()); }

    OpenDialog Open() {
        ended_ = std::promise<void>();
        thread_.Loop().Post([this] {
            thread_.Host().Send(MessageNumber::ping, 0, GetModuleHandleA(nullptr), &word_);
            ended_.set_value();
        });
        return WaitForDialog(" Ping");
    }

    void Close(const OpenDialog& dialog) {
        dialog.Press(IDCANCEL);
        ended_.get_future().get();
    }

    /// Lets a cycle come to its end.
    void Answer() { answers_.release(); }

    PingState* State() { return PointerFromWord<PingState>(word_); }
    bool AwaitEnd() {
        return WaitUntil([this] { return !State()->running.IsSet(); });
    }

    /// The buttons that can be pressed, and what has the focus.
    std::string Looks(const OpenDialog& dialog) {
        const int focus = thread_.Loop().Invoke([&] {
            HWND control = GetFocus();  // a combo box has it in its field
            while (control != nullptr && GetParent(control) != dialog.Window()) {
                control = GetParent(control);
            }
            return GetDlgCtrlID(control);
        });
        return std::string(dialog.IsEnabled(startButton) ? "start " : "") +
               (dialog.IsEnabled(stopButton) ? "stop " : "") + std::to_string(focus);
    }

    /// Starts a ping and waits until its first request is on its way.
    void Start(const OpenDialog& dialog, const std::string& target) {
        const int before = platform.opened;
        dialog.SetField(targetBox, target);
        dialog.Press(startButton);
        EXPECT_TRUE(WaitUntil([&] { return platform.opened == before + 1; }));
    }

    HostThread thread_{hostkit::HostOptions{}};

  private:
    HostWord word_ = 0;
    std::promise<void> ended_;
    std::counting_semaphore<> answers_{0};
};

const char firstLine[] = "#0, 32 bytes from: 10.0.0.1, time: 0 ms";

TEST_F(PingDialogTest, StartAndStopTakeTurns) {
    const OpenDialog dialog = Open();
    EXPECT_EQ(dialog.Field(startButton), "Ping");
    EXPECT_EQ(Looks(dialog), "start 14302");
    Start(dialog, "named");
    EXPECT_EQ(Looks(dialog), "stop 2");
    EXPECT_STREQ(State()->target, "named");
    SendMessageA(dialog.Window(), WM_COMMAND, IDOK, 0);
    EXPECT_EQ(platform.opened, 1) << "a second start is ignored";

    SendMessageA(dialog.Window(), WM_COMMAND, stopButton, 0);
    EXPECT_EQ(Looks(dialog), "2") << "what is disabled has no focus";
    Answer();
    EXPECT_TRUE(WaitUntil([&] { return Looks(dialog) == "start 99"; }));
    EXPECT_TRUE(AwaitEnd());
    EXPECT_EQ(platform.pauses, 0) << "none behind a stop";
    EXPECT_THAT(dialog.Entries(lineList), ElementsAre(firstLine));

    Start(dialog, "other");  // has no record, and is no address
    EXPECT_TRUE(WaitUntil([&] { return Looks(dialog) == "start 99"; }));
    EXPECT_TRUE(AwaitEnd());
    EXPECT_THAT(dialog.Entries(lineList), ElementsAre(firstLine, "There is no host other."));
    EXPECT_THAT(dialog.Entries(targetBox), ElementsAre("other", "named"));
    Start(dialog, std::string(200, 'x'));
    EXPECT_TRUE(AwaitEnd());
    EXPECT_EQ(State()->target, std::string(127, 'x'));
    Close(dialog);
}

TEST_F(PingDialogTest, AWorkerThatOutlivesItsDialogLeavesTheNextOneAlone) {
    OpenDialog dialog = Open();
    PingState* const first = State();
    Start(dialog, "named");
    Close(dialog);
    EXPECT_TRUE(first->running.IsSet());

    dialog = Open();
    EXPECT_EQ(State(), first);
    EXPECT_EQ(dialog.Field(targetBox), "named") << "from the history";
    SendMessageA(dialog.Window(), WM_COMMAND, startButton, 0);
    EXPECT_EQ(Looks(dialog), "start 14302") << "the old worker still has the place";
    EXPECT_EQ(platform.opened, 1);
    Answer();
    EXPECT_TRUE(AwaitEnd());
    EXPECT_EQ(Looks(dialog), "start 14302");
    EXPECT_THAT(dialog.Entries(lineList), IsEmpty());
    EXPECT_EQ(platform.pauses, 0);

    Start(dialog, "named");
    EXPECT_EQ(Looks(dialog), "stop 2");
    Close(dialog);
    Answer();
    EXPECT_TRUE(AwaitEnd());
}

TEST_F(PingDialogTest, TheConsoleFollowsItsEndAndForgetsItsBeginning) {
    platform.whileWaiting = {};
    platform.turns = std::vector<Turn>(10'010);
    platform.turns.back().receiveError = 10054;
    const OpenDialog dialog = Open();
    Start(dialog, "named");
    EXPECT_TRUE(AwaitEnd());
    const HWND list = GetDlgItem(dialog.Window(), lineList);
    EXPECT_EQ(dialog.Entries(lineList).size(), 10'000u);
    EXPECT_EQ(dialog.Entries(lineList).back(), "Recvfrom failed: 10054");
    EXPECT_EQ(SendMessageA(list, LB_GETTOPINDEX, 0, 0), 10'000 - 12);
    Close(dialog);
}

}  // namespace
