// listing_memory HOST:PORT DIRECTORY
//
// Lists a directory of an anonymous server, and compares the memory that took with the listing's
// text: it may be twice as much.
//
// Exit status: 0; 1 when something failed or the limit is exceeded; 2 usage.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>

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

int ListMemory(Connection& connection) {
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

int Run(hostkit::Host& host, char** arguments) {
    Connection connection(host);
    hostkit::ConnectRequest request;
    request.host = arguments[1];
    request.directory = arguments[2];
    const hostkit::ConnectResult connected = connection.Connect(request);
    if (!connected.Connected()) {
        std::fprintf(stderr, "%s\n", connected.text.c_str());
        return EXIT_FAILURE;
    }
    return ListMemory(connection);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::fprintf(stderr, "usage: listing_memory HOST:PORT DIRECTORY\n");
        return 2;
    }
    try {
        hostkit::MessageLoop loop;
        hostkit::Host host(loop, hostkit::HostOptions());
        host.LoadModule(QUENNET_MODULE);
        return hostkit::RunJob(loop, [&] { return Run(host, arguments); });
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return EXIT_FAILURE;
    }
}
