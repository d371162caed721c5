#include "restore.h"

#include <errno.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <iterator>

namespace quennet::terminal {

namespace {

constexpr int endingSignals[] = {SIGINT,  SIGQUIT, SIGTERM, SIGABRT, SIGSEGV,
                                 SIGBUS,  SIGFPE,  SIGILL,  SIGTRAP, SIGXCPU,
                                 SIGXFSZ, SIGSYS,  SIGALRM, SIGUSR1, SIGUSR2};

struct NoticeOfSignal {
    int signal;
    Notice notice;
};
constexpr NoticeOfSignal noticesOfSignals[] = {
    {SIGWINCH, Notice::resized}, {SIGTSTP, Notice::stop}, {SIGHUP, Notice::hungUp}};

using Handler = void (*)(int);

// What a handler may read: written while `armed` is false.
std::atomic<bool> armed = false;
std::atomic<bool> hungUp = false;  // the terminal has gone while it was taken
std::atomic<int> noticePipe = -1;
int terminalDescriptor = -1;
termios terminalSettings = {};
char restoringText[512];
std::size_t restoringLength = 0;
Handler handlersBefore[std::size(noticesOfSignals)] = {};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

}  // namespace

extern "C" {

/// The signal's own effect is back already, and comes when this returns.
static void EndBySignal(int signal) {
    if (armed.exchange(false)) {
        [[maybe_unused]] const ssize_t written =
            write(terminalDescriptor, restoringText, restoringLength);
        tcsetattr(terminalDescriptor, TCSANOW, &terminalSettings);
    }
    raise(signal);
}

/// A terminal that goes while windows are on it closes them. One that goes at another time ends the
/// program, as it would without a display; but not while the closed windows still finish.
static bool EndsProgram(int signal, Handler before) {
    if (signal != SIGHUP || before) {
        return false;
    }
    hungUp = hungUp || armed;
    return !hungUp;
}

static void NoteSignal(int signal) {
    const int error = errno;
    for (std::size_t place = 0; place < std::size(noticesOfSignals); ++place) {
        if (noticesOfSignals[place].signal == signal) {
            if (EndsProgram(signal, handlersBefore[place])) {
                ::signal(signal, SIG_DFL);
                raise(signal);
            }
            const char notice = static_cast<char>(noticesOfSignals[place].notice);
            [[maybe_unused]] const ssize_t written = write(noticePipe, &notice, 1);
            if (handlersBefore[place]) {
                handlersBefore[place](signal);
            }
        }
    }
    errno = error;
}
}

void InstallSignalHandlers(int notices) {
    noticePipe = notices;
    const auto set = [](int signal, Handler handler, int flags) {
        struct sigaction action = {};
        action.sa_handler = handler;
        action.sa_flags = flags;
        sigemptyset(&action.sa_mask);
        sigaction(signal, &action, nullptr);
    };
    for (const int signal : endingSignals) {
        struct sigaction before = {};
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_DFL) {
            set(signal, EndBySignal, static_cast<int>(SA_RESETHAND | SA_NODEFER));
        }
    }
    for (std::size_t place = 0; place < std::size(noticesOfSignals); ++place) {
        const int signal = noticesOfSignals[place].signal;
        struct sigaction before = {};
        sigaction(signal, nullptr, &before);
        const bool plain = (before.sa_flags & SA_SIGINFO) == 0;
        if (before.sa_handler == SIG_IGN && signal != SIGWINCH) {
            continue;
        }
        if (plain && before.sa_handler != SIG_DFL && before.sa_handler != SIG_IGN) {
            handlersBefore[place] = before.sa_handler;
        }
        set(signal, NoteSignal, SA_RESTART);
    }
}

void ArmRestoring(int terminal, const termios& settings, const std::string& text) {
    armed = false;
    terminalDescriptor = terminal;
    terminalSettings = settings;
    restoringLength = std::min(text.size(), sizeof(restoringText));
    std::copy_n(text.data(), restoringLength, restoringText);
    armed = true;
}

void NoteTerminalGone() {
    hungUp = true;
}

void DisarmRestoring() {
    armed = false;
}

}  // namespace quennet::terminal
