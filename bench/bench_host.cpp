// A host that does one thing to one anonymous server, to be measured from outside.
//
//   bench_host HOST:PORT DIRECTORY get-all FOLDER   downloads all files of the directory
//   bench_host HOST:PORT DIRECTORY put-all FOLDER   uploads all files of the folder, unasked
//   bench_host HOST:PORT DIRECTORY list-memory      lists it, and compares the memory that took
//                                                   with the listing's text, at most twice of it
//
// Exit status: 0; 1 when something failed or the limit is exceeded; 2 usage.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "hostkit/connection.h"
#include "hostkit/host.h"
#include "hostkit/message_loop.h"

namespace {

namespace fs = std::filesystem;
using hostkit::Connection;

constexpr double memoryLimit = 2;

// The most memory that this process has had so far, in bytes.
double PeakMemory() {
    std::ifstream status("/proc/self/status");
    std::string word;
    double kibibytes = 0;
    while (status >> word) {
        if (word == "VmHWM:") {
            status >> kibibytes;
        }
    }
    return kibibytes * 1024;
}

int GetAll(Connection& connection, const fs::path& folder) {
    hostkit::TransferOperation operation;
    const hostkit::ListResult listing = connection.List();
    if (!listing.done) {
        std::fprintf(stderr, "%s\n", listing.text.c_str());
        return EXIT_FAILURE;
    }
    for (const hostkit::ListingEntry& entry : listing.entries) {
        if (entry.IsDirectory()) {
            continue;
        }
        hostkit::DownloadRequest request;
        request.source = entry.name;
        request.destination = folder / entry.name;
        request.size = entry.size;
        request.date = entry.date;
        request.time = entry.time;
        const hostkit::TransferResult result = connection.Download(request, operation);
        if (!result.Done()) {
            std::fprintf(stderr, "%s: %s\n", request.source.c_str(), result.text.c_str());
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}

int PutAll(Connection& connection, const fs::path& folder) {
    hostkit::TransferOperation operation;
    const hostkit::Listing nothingThere;
    for (const fs::directory_entry& file : fs::directory_iterator(folder)) {
        const hostkit::UploadRequest request = {file.path(), file.path().filename()};
        const hostkit::TransferResult result = connection.Upload(request, nothingThere, operation);
        if (!result.Done()) {
            std::fprintf(stderr, "%s: %s\n", request.source.c_str(), result.text.c_str());
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}

int ListMemory(Connection& connection, const fs::path&) {
    const double idle = PeakMemory();
    const hostkit::ListResult listing = connection.List();
    if (!listing.done) {
        std::fprintf(stderr, "%s\n", listing.text.c_str());
        return EXIT_FAILURE;
    }
    const double used = PeakMemory() - idle;
    const fs::path copy = fs::temp_directory_path() / ("listing-" + std::to_string(getpid()));
    double text = 0;
    if (auto file = hostkit::LocalFile::Create(copy)) {
        connection.SaveRawListing(*file);
        file->Close();
        text = static_cast<double>(fs::file_size(copy));
        fs::remove(copy);
    }
    const double ratio = used / text;
    const bool kept = ratio <= memoryLimit;
    std::printf("  %zu entries, %.1f MB of text, %.1f MB of memory above idle (%.1f MB)\n",
                listing.entries.Count(), text * 1e-6, used * 1e-6, idle * 1e-6);
    std::printf("  %s memory %.2f of the text, at most %.2f\n",
                kept ? "kept:    " : "EXCEEDED:", ratio, memoryLimit);
    return kept ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// What the third argument asks for. `folder` is empty when none is given.
struct Work {
    const char* name;
    bool takesFolder;
    int (*run)(Connection& connection, const fs::path& folder);
};

constexpr Work works[] = {
    {"get-all", true, GetAll},
    {"put-all", true, PutAll},
    {"list-memory", false, ListMemory},
};

const Work* FindWork(int count, char** arguments) {
    const auto* const found =
        std::find_if(std::begin(works), std::end(works), [&](const Work& work) {
            return count == (work.takesFolder ? 5 : 4) &&
                   std::string_view(arguments[3]) == work.name;
        });
    return found != std::end(works) ? found : nullptr;
}

int Run(hostkit::Host& host, const Work& work, char** arguments) {
    Connection connection(host);
    hostkit::ConnectRequest request;
    request.host = arguments[1];
    request.directory = arguments[2];
    const hostkit::ConnectResult connected = connection.Connect(request);
    if (!connected.Connected()) {
        std::fprintf(stderr, "%s\n", connected.text.c_str());
        return EXIT_FAILURE;
    }
    return work.run(connection, work.takesFolder ? arguments[4] : "");
}

}  // namespace

int main(int count, char** arguments) {
    const Work* const work = FindWork(count, arguments);
    if (work == nullptr) {
        std::fprintf(stderr,
                     "usage: bench_host HOST:PORT DIRECTORY "
                     "get-all FOLDER | put-all FOLDER | list-memory\n");
        return 2;
    }
    try {
        hostkit::MessageLoop loop;
        hostkit::Host host(loop, hostkit::HostOptions());
        host.LoadModule(QUENNET_MODULE);
        return hostkit::RunJob(loop, [&] { return Run(host, *work, arguments); });
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return EXIT_FAILURE;
    }
}
