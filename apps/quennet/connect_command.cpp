// quennet connect: a person at the connection dialog, then the conversation and the listing below
// it, until a key is pressed.
//
// While dialogs are open the terminal is the display's, so Ctrl-C and the end of the terminal are
// its affair; afterwards lines go to the terminal as from any other command.

#include <termios.h>
#include <unistd.h>

#include <windows.h>

#include <functional>
#include <utility>

#include "client.h"
#include "commands.h"
#include "failure.h"
#include "hostkit/terminal_questions.h"
#include "listing_output.h"
#include "module_host.h"
#include "stored_settings.h"
#include "terminal_display.h"

namespace cli {

namespace {

/// The terminal hands over each key at once, and shows none, while the object lives.
class SingleKeys {
  public:
    SingleKeys() : known_(tcgetattr(STDIN_FILENO, &before_) == 0) {
        termios keys = before_;
        keys.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON | ISIG);
        keys.c_cc[VMIN] = 1;
        keys.c_cc[VTIME] = 0;
        if (known_) {
            tcsetattr(STDIN_FILENO, TCSAFLUSH, &keys);
        }
    }
    ~SingleKeys() {
        if (known_) {
            tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
        }
    }
    SingleKeys(const SingleKeys&) = delete;
    SingleKeys& operator=(const SingleKeys&) = delete;

  private:
    termios before_ = {};
    bool known_;
};

/// Returns with the next key, or when the terminal has gone.
void AwaitKey() {
    const SingleKeys keys;
    char key = 0;
    [[maybe_unused]] const ssize_t count = read(STDIN_FILENO, &key, 1);
}

void Converse(hostkit::Host& host, const Options& options, Status& status) {
    hostkit::ConnectionOptions connectionOptions;
    connectionOptions.console = [&](const std::string& line) { status.Line(line); };
    hostkit::Connection connection(host, connectionOptions);
    const hostkit::ConnectResult connected = connection.ConnectAsked(nullptr);
    if (connected.outcome == hostkit::ConnectOutcome::cancelled) {
        throw Failure(ExitStatus::noConnection, "cancelled");
    }
    if (!connected.Connected()) {
        throw Failure(ExitStatus::noConnection, WordsOr(connected.text, "no connection"));
    }
    const hostkit::ListResult listing = connection.List();
    if (!listing.done) {
        throw NoListing(connection, listing.text);
    }
    Options longForm = options;
    longForm.longForm = true;
    PrintEntries(listing.entries, longForm, IsShown);
    status.Line("Connected, in " + connection.Directory() + ". Any key disconnects.");
    AwaitKey();
}

/// Lines wait while a message or a question has the terminal.
template <typename Result, typename... Arguments>
void Hold(Status& status, std::function<Result(Arguments...)>& ask) {
    ask = [&status, dialog = std::move(ask)](Arguments... arguments) {
        const Status::Hold hold(status);
        return dialog(arguments...);
    };
}

void AskInDialogs(hostkit::HostOptions& host, Status& status) {
    hostkit::AskInDialogs(host);
    Hold(status, host.showMessage);
    Hold(status, host.reportError);
    Hold(status, host.askPassword);
}

}  // namespace

void RunConnect(const Options& options, Status& status) {
    const TerminalDisplay display;
    hostkit::HostOptions host;
    UseStoredSettings(host);
    AskInDialogs(host, status);
    RunWithModule(host, [&](hostkit::Host& attached) { Converse(attached, options, status); });
}

}  // namespace cli
