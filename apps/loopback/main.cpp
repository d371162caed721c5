// The loopback server as a program.

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "server.h"

namespace {

constexpr const char* usage =
    "usage: loopback --root DIR [--port N] [--format FORMAT] [--user NAME:PASSWORD]...\n"
    "                [--system TEXT] [--read-only] [--stdin]\n"
    "\n"
    "Serves DIR by FTP on 127.0.0.1 until it is interrupted.\n"
    "\n"
    "  --root DIR            the folder to serve\n"
    "  --port N              the port; 0, the default, takes a free one\n"
    "  --format FORMAT       how listings look: unix, dos, os2, mvs, mvs-members\n"
    "  --user NAME:PASSWORD  who may log in besides anonymous; without it, anyone\n"
    "  --system TEXT         what SYST is answered\n"
    "  --read-only           takes no changes\n"
    "  --stdin               ends with the standard input, too\n"
    "  --help                shows this\n";

struct Arguments {
    loopback::Options options;
    bool help = false;
    bool untilInputEnds = false;
};

// Written to by the signal handler, read by the wait: the end that a handler may touch.
int wakeUp[2] = {-1, -1};

void EndOnSignal(int) {
    char byte = 0;
    [[maybe_unused]] ssize_t written = write(wakeUp[1], &byte, 1);
}

bool TakeValue(std::string_view name, std::string_view value, loopback::Options* options) {
    if (name == "--root") {
        options->root = value;
        return !value.empty();
    }
    if (name == "--port") {
        auto [end, error] = std::from_chars(value.begin(), value.end(), options->port);
        return error == std::errc() && end == value.end();
    }
    if (name == "--format") {
        auto format = loopback::ListFormatFromName(value);
        options->format = format.value_or(options->format);
        return format.has_value();
    }
    if (name == "--user") {
        std::size_t colon = value.find(':');
        if (colon == 0 || colon == std::string_view::npos) {
            return false;
        }
        options->accounts[std::string(value.substr(0, colon))] = value.substr(colon + 1);
        return true;
    }
    options->system = value;
    return name == "--system";
}

bool Parse(int count, char** words, Arguments* arguments) {
    for (int place = 1; place < count; ++place) {
        std::string_view word = words[place];
        if (word == "--help") {
            arguments->help = true;
        } else if (word == "--stdin") {
            arguments->untilInputEnds = true;
        } else if (word == "--read-only") {
            arguments->options.writable = false;
        } else if (place + 1 == count || !TakeValue(word, words[place + 1], &arguments->options)) {
            std::fprintf(stderr, "loopback: wrong or incomplete: %s\n", words[place]);
            return false;
        } else {
            ++place;
        }
    }
    if (arguments->options.root.empty() && !arguments->help) {
        std::fputs("loopback: --root is missing\n", stderr);
        return false;
    }
    return true;
}

bool CatchSignals() {
    struct sigaction action {};
    action.sa_handler = EndOnSignal;
    return pipe2(wakeUp, O_CLOEXEC | O_NONBLOCK) == 0 && sigaction(SIGINT, &action, nullptr) == 0 &&
           sigaction(SIGTERM, &action, nullptr) == 0;
}

void WaitForTheEnd(bool untilInputEnds) {
    for (;;) {
        pollfd events[] = {{wakeUp[0], POLLIN, 0}, {untilInputEnds ? STDIN_FILENO : -1, POLLIN, 0}};
        poll(events, 2, -1);
        char input[256];
        bool inputEnded = events[1].revents != 0 && read(STDIN_FILENO, input, sizeof input) <= 0;
        if (events[0].revents != 0 || inputEnded) {
            return;
        }
    }
}

}  // namespace

int main(int count, char** words) {
    Arguments arguments;
    if (!Parse(count, words, &arguments)) {
        std::fputs(usage, stderr);
        return 2;
    }
    if (arguments.help) {
        std::fputs(usage, stdout);
        return 0;
    }
    try {
        if (!CatchSignals()) {
            std::perror("loopback");
            return 1;
        }
        loopback::Server server(std::move(arguments.options));
        std::printf("listening on 127.0.0.1:%u\n", server.Port());
        std::fflush(stdout);
        WaitForTheEnd(arguments.untilInputEnds);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "loopback: %s\n", error.what());
        return 1;
    }
    return 0;
}
