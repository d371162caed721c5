// Runs shell commands in turn, several rounds of them, and compares the first with the best of the
// others: wall time, and the CPU time (user and system) of the whole process with its children.
//
//   side_by_side [--rounds N] [--cpu-limit RATIO] [--wall-limit RATIO] [--before COMMAND]
//                NAME COMMAND NAME COMMAND...
//
// `--before` runs before each measured command, unmeasured. The command's standard output is thrown
// away. Prints medians and ratios, and a line for each limit. Exit status: 0; 1 when a limit is
// exceeded; 2 usage; 3 when a command fails.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr int exitExceeded = 1;
constexpr int exitUsage = 2;
constexpr int exitCommandFailed = 3;

struct Contestant {
    std::string name;
    std::string command;
    std::vector<double> wallSeconds;
    std::vector<double> cpuSeconds;
};

struct Settings {
    int rounds = 5;
    std::optional<double> cpuLimit;
    std::optional<double> wallLimit;
    std::string before;
    std::vector<Contestant> contestants;
};

struct Measurement {
    double wallSeconds;
    double cpuSeconds;
};

double Seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

std::optional<Measurement> Run(const std::string& command) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t process = fork();
    if (process == 0) {
        const int nothing = open("/dev/null", O_RDWR);
        dup2(nothing, STDIN_FILENO);
        dup2(nothing, STDOUT_FILENO);
        execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        _exit(127);
    }
    int status = 0;
    rusage usage = {};
    if (process == -1 || wait4(process, &status, 0, &usage) != process || status != 0) {
        return std::nullopt;
    }
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    return Measurement{wall.count(), Seconds(usage.ru_utime) + Seconds(usage.ru_stime)};
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

// One row per contestant: its median, and how many times that of the first one's best rival it is.
bool Report(const char* what, const Settings& settings, std::vector<double> Contestant::*values,
            std::optional<double> limit) {
    double best = 0;
    std::string bestName;
    for (std::size_t index = 1; index < settings.contestants.size(); ++index) {
        const Contestant& rival = settings.contestants[index];
        const double median = Median(rival.*values);
        if (bestName.empty() || median < best) {
            best = median;
            bestName = rival.name;
        }
    }
    for (const Contestant& contestant : settings.contestants) {
        const double median = Median(contestant.*values);
        std::printf("  %-12s %-4s %8.3f s   %5.2f of %s\n", contestant.name.c_str(), what, median,
                    median / best, bestName.c_str());
    }
    if (!limit) {
        return true;
    }
    const double ratio = Median(settings.contestants.front().*values) / best;
    const bool kept = ratio <= *limit;
    std::printf("  %s %s %.2f, at most %.2f\n", kept ? "kept:    " : "EXCEEDED:", what, ratio,
                *limit);
    return kept;
}

std::optional<Settings> Parse(int count, char** arguments) {
    Settings settings;
    int index = 1;
    for (; index + 1 < count && arguments[index][0] == '-'; index += 2) {
        const std::string option = arguments[index];
        const char* value = arguments[index + 1];
        if (option == "--rounds") {
            settings.rounds = std::max(1, std::atoi(value));
        } else if (option == "--cpu-limit") {
            settings.cpuLimit = std::atof(value);
        } else if (option == "--wall-limit") {
            settings.wallLimit = std::atof(value);
        } else if (option == "--before") {
            settings.before = value;
        } else {
            return std::nullopt;
        }
    }
    for (; index + 1 < count; index += 2) {
        settings.contestants.push_back({arguments[index], arguments[index + 1], {}, {}});
    }
    if (index != count || settings.contestants.size() < 2) {
        return std::nullopt;
    }
    return settings;
}

}  // namespace

int main(int count, char** arguments) {
    std::optional<Settings> settings = Parse(count, arguments);
    if (!settings) {
        std::fprintf(stderr,
                     "usage: side_by_side [--rounds N] [--cpu-limit RATIO] [--wall-limit RATIO]\n"
                     "                    [--before COMMAND] NAME COMMAND NAME COMMAND...\n");
        return exitUsage;
    }
    for (int round = 0; round < settings->rounds; ++round) {
        for (Contestant& contestant : settings->contestants) {
            if (!settings->before.empty() && !Run(settings->before)) {
                std::fprintf(stderr, "failed: %s\n", settings->before.c_str());
                return exitCommandFailed;
            }
            const std::optional<Measurement> measured = Run(contestant.command);
            if (!measured) {
                std::fprintf(stderr, "failed: %s\n", contestant.command.c_str());
                return exitCommandFailed;
            }
            contestant.wallSeconds.push_back(measured->wallSeconds);
            contestant.cpuSeconds.push_back(measured->cpuSeconds);
        }
    }
    const bool cpuKept = Report("CPU", *settings, &Contestant::cpuSeconds, settings->cpuLimit);
    const bool wallKept = Report("wall", *settings, &Contestant::wallSeconds, settings->wallLimit);
    return cpuKept && wallKept ? EXIT_SUCCESS : exitExceeded;
}
