// Commands that change what a server holds. Each enters the directory of its URL first, so that a
// directory that is not there stops it before anything is changed.

#include <algorithm>
#include <filesystem>

#include "client.h"
#include "commands.h"
#include "existing_question.h"
#include "failure.h"
#include "listing_output.h"
#include "prompt.h"
#include "server_use.h"
#include "transfer_meter.h"

namespace cli {

namespace {

namespace fs = std::filesystem;
using hostkit::Listing;
using hostkit::ListingEntry;
using hostkit::u32;
using hostkit::u64;

// --- put ------------------------------------------------------------------------------------

/// The file on disk that goes up, and the name that it gets.
struct Source {
    std::string path;
    std::string name;
    u64 size;
};

Source ChooseSource(const Options& options, const Url& url) {
    Source source = {options.argument, url.FileName(), 0};
    if (source.name.empty()) {
        source.name = fs::path(source.path).filename().string();
    }
    std::error_code error;
    const fs::file_status status = fs::status(source.path, error);
    if (!fs::exists(status)) {
        throw Failure(ExitStatus::failed, source.path + ": no such file");
    }
    if (!fs::is_regular_file(status)) {
        throw Failure(ExitStatus::failed, source.path + " is no regular file");
    }
    source.size = fs::file_size(source.path, error);
    if (source.name.find_first_of("\r\n") != std::string::npos) {
        throw Failure(ExitStatus::usage, "the name of the file holds a line end");
    }
    return source;
}

/// Whether a file that the server has may be replaced.
bool MayReplace(const Options& options, Status& status, const Watch& watch, const Source& source,
                u64 sizeThere) {
    return MayReplaceThere(
        options, status, watch,
        source.name + " is on the server with " + std::to_string(sizeThere) + " bytes",
        ", the local file has " + std::to_string(source.size),
        {"", source.name, sizeThere, source.size, false});
}

class Upload {
  public:
    Upload(Client& client, const Options& options, Watch& watch, Status& status,
           const Source& source)
        : client_(client), options_(options), watch_(watch), status_(status), source_(source) {}

    void Run() {
        const Listing there = client_.TryList().value_or(Listing());
        const auto entry = std::find_if(there.begin(), there.end(), [&](const ListingEntry& each) {
            return NameOf(each) == source_.name && IsShown(each);
        });
        const bool mayReplace =
            entry != there.end()
                ? MayReplace(options_, status_, watch_, source_, (*entry).size)
                : MayWriteUnlisted(client_, options_, status_, watch_, source_.name);
        if (mayReplace) {
            Transfer(there);
        } else {
            Skip();
        }
    }

  private:
    void Skip() const {
        if (!options_.quiet) {
            status_.Line(source_.name + " is on the server, skipped");
        }
    }

    void Transfer(const Listing& there) {
        TransferMeter meter(watch_, status_, source_.name, source_.size);
        hostkit::TransferOperation operation;
        operation.progress = [&](const quennet::TransferRecord& record, u32 bytes) {
            meter.Count(record.bytesDone, bytes);
        };
        // What is there has been asked about already.
        operation.confirm = [](const quennet::TransferItem&, u32) {
            return hostkit::ConfirmAnswer::goOn;
        };
        const auto tick = options_.quiet ? std::function<void()>() : [&] { meter.Show(); };
        const hostkit::TransferResult result =
            client_.Upload({source_.path, ServerPath(source_.name)}, there, operation, tick);
        meter.Finish(result.Done() && !options_.quiet);
        if (result.Done()) {
            return;
        }
        client_.CheckVerdict();
        if (result.localFailure) {
            throw Failure(ExitStatus::failed, result.localFailure->Text());
        }
        throw Failure(ExitStatus::failed,
                      source_.name + ": " + WordsOr(result.text, connectionLost));
    }

    Client& client_;
    const Options& options_;
    Watch& watch_;
    Status& status_;
    const Source& source_;
};

/// Throws the server's words when a command was not done.
void CheckResult(const Client& client, const hostkit::CommandResult& result,
                 const std::string& name) {
    client.CheckVerdict();
    if (!result.Done()) {
        throw Failure(ExitStatus::failed, name + ": " + WordsOr(result.text, connectionLost));
    }
}

using NameCommand = hostkit::CommandResult(Client& client, const std::string& name);

/// Runs a command of the server's on what the URL names.
void RunCommand(const Options& options, Watch& watch, Status& status,
                const std::function<NameCommand>& command) {
    RunOnName(options, watch, status, [&](Client& client, const std::string& name) {
        CheckResult(client, command(client, ServerPath(name)), name);
    });
}

}  // namespace

void RunPut(const Options& options, Watch& watch, Status& status) {
    if (options.recursive) {
        RunPutTree(options, watch, status);
        return;
    }
    const Url url = ParseUrl(options.url);
    const Source source = ChooseSource(options, url);
    RunConnected(options, watch, status, url, [&](Client& client) {
        EnterOrFail(client, url.Directory());
        Upload(client, options, watch, status, source).Run();
    });
}

void RunRemove(const Options& options, Watch& watch, Status& status) {
    if (options.recursive) {
        RunRemoveTree(options, watch, status);
        return;
    }
    RunCommand(options, watch, status,
               [](Client& client, const std::string& name) { return client.DeleteFile(name); });
}

void RunRemoveDirectory(const Options& options, Watch& watch, Status& status) {
    RunCommand(options, watch, status, [](Client& client, const std::string& name) {
        return client.RemoveDirectory(name);
    });
}

void RunMove(const Options& options, Watch& watch, Status& status) {
    const std::string& target = options.argument;
    if (target.empty() || target.find_first_of("\r\n") != std::string::npos) {
        throw Failure(ExitStatus::usage, "the new name is empty or holds a line end");
    }
    RunOnName(options, watch, status, [&](Client& client, const std::string& name) {
        if (MayWriteUnlisted(client, options, status, watch, target)) {
            CheckResult(client, client.Rename(ServerPath(name), ServerPath(target)), name);
        } else if (!options.quiet) {
            status.Line(target + " is on the server, skipped");
        }
    });
}

void RunMakeDirectory(const Options& options, Watch& watch, Status& status) {
    const Url url = WithoutEndSlashes(ParseUrl(options.url));
    NameOrFail(url);
    RunConnected(options, watch, status, url, [&](Client& client) {
        CheckResult(client, client.MakeDirectory(ServerPath(url.path)), url.path);
    });
}

void RunRaw(const Options& options, Watch& watch, Status& status) {
    const Url url = ParseUrl(options.url);
    RunConnected(options, watch, status, url, [&](Client& client) {
        EnterOrFail(client, url.path);
        const auto failure = client.TypeLine(options.argument);
        client.CheckVerdict();
        if (failure) {
            throw Failure(ExitStatus::failed, WordsOr(*failure, connectionLost));
        }
    });
}

}  // namespace cli
