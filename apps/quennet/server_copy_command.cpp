// quennet fxp: a file from one server straight to another.

#include "hostkit/server_copy.h"

#include <algorithm>

#include "client.h"
#include "commands.h"
#include "existing_question.h"
#include "failure.h"
#include "listing_output.h"
#include "module_host.h"
#include "prompt.h"
#include "server_use.h"
#include "stored_settings.h"

namespace cli {

namespace {

using hostkit::u32;
using hostkit::u64;

/// A file in the directory that its client entered last, as a listing tells of it.
std::optional<hostkit::ExistingFile> Find(const hostkit::Listing& entries,
                                          const std::string& name) {
    for (const hostkit::ListingEntry& entry : entries) {
        if (NameOf(entry) == name) {
            hostkit::ExistingFile file;
            file.obstacle = entry.IsDirectory() && !entry.IsLink() ? "a directory" : "";
            file.name = name;
            file.size = entry.IsLink() ? 0 : entry.size;
            return file;
        }
    }
    return std::nullopt;
}

class ServerCopy {
  public:
    ServerCopy(const Options& options, Watch& watch, Status& status, Client& source,
               Client& destination)
        : options_(options),
          watch_(watch),
          status_(status),
          source_(source),
          destination_(destination) {}

    void Run(const std::string& sourceName, const std::string& destinationName) {
        const auto entries = source_.TryList();
        const auto file = entries ? Find(*entries, sourceName) : std::nullopt;
        if (file && !file->obstacle.empty()) {
            throw Failure(ExitStatus::failed, sourceName + " is " + file->obstacle);
        }
        const u64 size = file && source_.ListsBytes() ? file->size : 0;
        if (!MayWrite(destinationName, size)) {
            if (!options_.quiet) {
                status_.Line(destinationName + " is on the server, skipped");
            }
            return;
        }
        Copy({ServerPath(sourceName), ServerPath(destinationName)});
        CompareSizes(destinationName, size);
    }

  private:
    bool MayWrite(const std::string& name, u64 sourceSize) {
        const auto entries = destination_.TryList();
        auto existing = entries ? Find(*entries, name) : std::nullopt;
        if (!existing) {
            return MayWriteUnlisted(destination_, options_, status_, watch_, name);
        }
        if (!existing->obstacle.empty()) {
            throw Failure(ExitStatus::failed, name + " is " + existing->obstacle + " there");
        }
        existing->sourceSize = sourceSize;
        return MayReplaceThere(
            options_, status_, watch_,
            name + " is on the server with " + std::to_string(existing->size) + " bytes",
            ", the other one has " + std::to_string(sourceSize), *existing);
    }

    /// Nothing of the data is seen here, so no idle time counts; both sides hear of an abort.
    void Copy(const hostkit::ServerCopyRequest& request) {
        hostkit::ServerCopyResult result;
        hostkit::TransferOperation operation;
        source_.Work(Watch::Kind::untimed, [&](hostkit::Connection& source) {
            destination_.Work(
                Watch::Kind::untimed,
                [&](hostkit::Connection& destination) {
                    result = hostkit::CopyBetween(source, destination, request, operation);
                },
                [&] {
                    if (watch_.Ended()) {
                        source.Abort();
                    }
                });
        });
        source_.CheckVerdict();
        if (!result.Done()) {
            throw Failure(ExitStatus::failed, request.source + ": " + WordsOf(result));
        }
    }

    static std::string WordsOf(const hostkit::ServerCopyResult& result) {
        if (!result.HasText()) {
            return connectionLost;
        }
        std::string words = result.sourceText.empty() ? "" : "the source says " + result.sourceText;
        if (!result.destinationText.empty()) {
            words += words.empty() ? "" : ", ";
            words += "the destination says " + result.destinationText;
        }
        return words;
    }

    /// Both servers have confirmed; what has come must not be less than what was listed.
    void CompareSizes(const std::string& name, u64 sourceSize) {
        const hostkit::Listing entries = destination_.List(true);
        const auto file = Find(entries, name);
        if (file && destination_.ListsBytes() && file->size < sourceSize) {
            throw Failure(ExitStatus::failed,
                          name + " is incomplete: " + std::to_string(file->size) +
                              " bytes have come, " + std::to_string(sourceSize) + " were listed");
        }
    }

    const Options& options_;
    Watch& watch_;
    Status& status_;
    Client& source_;
    Client& destination_;
};

}  // namespace

void RunServerCopy(const Options& options, Watch& watch, Status& status) {
    const Url from = ParseUrl(options.url);
    const Url to = ParseUrl(options.argument);
    const std::string sourceName = NameOrFail(from);
    const std::string destinationName = to.FileName().empty() ? sourceName : NameOrFail(to);
    hostkit::HostOptions hostOptions =
        HostOptionsFor(options, from.site.empty() ? to : from, status);
    RunWithModule(hostOptions, [&](hostkit::Host& host) {
        Client source(host, watch, status, options);
        source.Connect(from);
        Client destination(host, watch, status, options);
        destination.Connect(to);
        EnterOrFail(source, from.Directory());
        EnterOrFail(destination, to.Directory());
        ServerCopy(options, watch, status, source, destination).Run(sourceName, destinationName);
    });
}

}  // namespace cli
