// quennet ping: the ping dialog, unseen or with a person at it.

#include <unistd.h>

#include <exception>
#include <string>

#include "commands.h"
#include "failure.h"
#include "hostkit/ping.h"
#include "module_host.h"
#include "ping_summary.h"
#include "standard_output.h"
#include "stored_settings.h"
#include "terminal_display.h"
#include "terminal_text.h"

namespace cli {

namespace {

void Print(const std::string& line) {
    StandardOutput output;
    output.Write(HarmlessText(line) + "\n");
    output.Flush();
}

/// One run without a person: prints its lines, and says when it is enough.
class Printer {
  public:
    explicit Printer(unsigned count) : count_(count) {}

    bool Take(const std::string& line) {
        if (summary_.Take(line) == PingLine::trouble) {
            trouble_ += (trouble_.empty() ? "" : "; ") + line;
            return true;
        }
        try {
            Print(line);
        } catch (const Failure&) {
            failure_ = std::current_exception();
        }
        return failure_ == nullptr && (count_ == 0 || summary_.Sent() < count_);
    }

    /// Prints the summary, and throws when nothing was received.
    void Finish(const std::string& target, const Watch& watch, Status& status) const {
        if (failure_ != nullptr) {
            std::rethrow_exception(failure_);
        }
        if (summary_.Sent() > 0) {
            Print(summary_.Text());
        }
        if (summary_.Received() == 0) {
            throw Failure(ExitStatus::failed, !trouble_.empty() ? trouble_
                                              : watch.Ended()   ? watch.Reason()
                                                                : target + ": no answer");
        }
        if (!trouble_.empty()) {
            status.Line("quennet: " + trouble_);
        }
    }

  private:
    const unsigned count_;
    PingSummary summary_;
    std::string trouble_;
    std::exception_ptr failure_;
};

void CheckTarget(const Options& options) {
    if (options.url.size() > hostkit::Ping::longestTarget) {
        throw Failure(ExitStatus::usage, "ping wants a host of at most 127 characters");
    }
    if (options.window) {
        if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0) {
            throw Failure(ExitStatus::usage, "--window wants a terminal");
        }
        if (options.count != 0) {
            throw Failure(ExitStatus::usage, "the window of --window is ended by its person");
        }
    } else if (options.url.empty()) {
        throw Failure(ExitStatus::usage, "ping wants one host; quennet --help");
    }
}

void PingInWindow(hostkit::Ping& ping, const Options& options, const Watch& watch, Status& status) {
    {
        const Status::Hold hold(status);  // until the terminal is free
        const TerminalDisplay display;
        ping.RunAsked(nullptr, options.url);
    }
    if (watch.Ended()) {
        throw Failure(ExitStatus::failed, watch.Reason());
    }
}

}  // namespace

void RunPing(const Options& options, Watch& watch, Status& status) {
    CheckTarget(options);
    hostkit::HostOptions host;
    if (options.window) {
        UseStoredSettings(host);
        host.reportError = [&status](hostkit::u32, const std::string& text) {
            status.Line("quennet: " + text);
        };
    }
    RunWithModule(host, [&](hostkit::Host& attached) {
        hostkit::Ping ping(attached);
        const Watch::Operation operation(watch, [&] {
            if (watch.Ended()) {
                ping.Stop();
            }
        });
        if (options.window) {
            PingInWindow(ping, options, watch, status);
            return;
        }
        Printer printer(options.count);
        ping.Run(options.url, [&](const std::string& line) { return printer.Take(line); });
        printer.Finish(options.url, watch, status);
    });
}

}  // namespace cli
