// quennet: an FTP client for the command line. Every byte of FTP goes through the module.

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "commands.h"
#include "failure.h"
#include "options.h"
#include "standard_output.h"
#include "status.h"
#include "watch.h"

namespace cli {

namespace {

/// A descriptor below 3 that is closed would be given to the next socket, and what is printed would
/// go to a server. What takes its place can't be written to.
void FillStandardDescriptors() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1 && open("/dev/null", O_RDONLY) != descriptor) {
            _exit(static_cast<int>(ExitStatus::failed));
        }
    }
}

void Print(std::string_view text) {
    StandardOutput output;
    output.Write(text);
    output.Flush();
}

struct WatchedCommand {
    Command command;
    void (*run)(const Options& options, Watch& watch, Status& status);
};
constexpr WatchedCommand watchedCommands[] = {
    {Command::ls, RunList},
    {Command::get, RunGet},
    {Command::put, RunPut},
    {Command::rm, RunRemove},
    {Command::rmdir, RunRemoveDirectory},
    {Command::mkdir, RunMakeDirectory},
    {Command::mv, RunMove},
    {Command::chmod, RunChangePermissions},
    {Command::raw, RunRaw},
    {Command::fxp, RunServerCopy},
    {Command::find, RunFind},
    {Command::ping, RunPing},
};

void Run(const Options& options, Status& status) {
    if (options.command == Command::help) {
        Print(HelpText());
        return;
    }
    if (options.command == Command::version) {
        Print("quennet " QUENNET_VERSION "\n");
        return;
    }
    if (options.command == Command::sites) {
        RunSites(options);
        return;
    }
    if (options.command == Command::connect) {
        RunConnect(options, status);
        return;
    }
    Watch watch({options.idleTimeout, options.replyTimeout}, status);
    for (const WatchedCommand& command : watchedCommands) {
        if (command.command == options.command) {
            command.run(options, watch, status);
            return;
        }
    }
    RunDemo(options, watch);
}

int Main(const std::vector<std::string>& arguments) {
    Status status;
    try {
        Run(ParseOptions(arguments), status);
        return static_cast<int>(ExitStatus::done);
    } catch (const Failure& failure) {
        if (*failure.what() != 0) {
            status.Line(std::string("quennet: ") + failure.what());
        }
        return static_cast<int>(failure.Status());
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& failure) {
        status.Line(std::string("quennet: ") + failure.what());
        return static_cast<int>(ExitStatus::failed);
    }
}

}  // namespace

}  // namespace cli

int main(int count, char** values) try {
    cli::FillStandardDescriptors();
    signal(SIGPIPE, SIG_IGN);
    return cli::Main({values + 1, values + count});
} catch (const std::bad_alloc&) {
    std::fputs("quennet: out of memory\n", stderr);
    return static_cast<int>(cli::ExitStatus::failed);
}
