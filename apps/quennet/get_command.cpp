// How a download goes: the local file is looked at first, so that nothing is asked of a server when
// nothing may be done; then the directory is entered and listed, for size and date; then one
// message moves the file. A server that lets nobody enter or list the directory is sent the whole
// path.

#include <unistd.h>

#include <algorithm>

#include "client.h"
#include "commands.h"
#include "existing_question.h"
#include "failure.h"
#include "listing_output.h"
#include "local_target.h"
#include "module_host.h"
#include "prompt.h"
#include "transfer_meter.h"

namespace cli {

namespace {

using hostkit::u16;
using hostkit::u32;
using hostkit::u64;

constexpr std::size_t longestServerPath = 259;

/// The file on the server, as far as a listing told.
struct Source {
    std::string path;  // from the directory entered last
    u64 size = 0;      // 0 when unknown
    u16 date = 0;
    u16 time = 0;
};

void Describe(const hostkit::ListingEntry& entry, const Client& client, Source& source) {
    if (entry.IsLink()) {
        return;  // the numbers are the link's own
    }
    if (entry.IsDirectory()) {
        throw Failure(ExitStatus::failed, source.path + " is a directory");
    }
    source.size = client.ListsBytes() ? entry.size : 0;
    source.date = entry.date;
    source.time = entry.time;
}

Source Locate(Client& client, const Url& url) {
    const std::string name = url.FileName();
    if (client.Enter(url.Directory())) {
        return {ServerPath(url.path)};
    }
    Source source = {ServerPath(name)};
    if (const auto entries = client.TryList()) {
        const auto entry =
            std::find_if(entries->begin(), entries->end(),
                         [&](const hostkit::ListingEntry& each) { return NameOf(each) == name; });
        if (entry != entries->end()) {
            Describe(*entry, client, source);
        }
    }
    return source;
}

/// What the person at the terminal wants done with a file that is there.
hostkit::ExistingAction Ask(Status& status, const Watch& watch, const LocalTarget& target,
                            u64 localSize, const Source& source) {
    std::string is = target.path + " is there with " + std::to_string(localSize) + " bytes";
    if (source.size != 0) {
        is += ", the server's file has " + std::to_string(source.size);
    }
    return AskAboutFile(
        status, watch, is,
        {"", target.path, localSize, source.size, hostkit::CanResume(localSize, source.size)});
}

class Download {
  public:
    Download(Client& client, const Options& options, Watch& watch, Status& status,
             const LocalTarget& target, const Source& source)
        : client_(client),
          options_(options),
          watch_(watch),
          status_(status),
          target_(target),
          source_(source) {}

    void Run() {
        using hostkit::ExistingAction;
        ExistingAction action = ActionOf(options_.existing);
        const auto localSize = target_.ExistingSize();
        if (localSize && action == ExistingAction::ask) {
            action = Ask(status_, watch_, target_, *localSize, source_);
        }
        if (localSize && action == ExistingAction::skip) {
            return;
        }
        if (const std::string objection =
                hostkit::ObjectionToResume(localSize.value_or(0), source_.size);
            action == ExistingAction::resume && !objection.empty()) {
            status_.Line(target_.path + ": " + objection);
        }
        mayReplace_ = localSize.has_value() || target_.IsStream() ||
                      action == ExistingAction::resume || action == ExistingAction::overwrite;
        Transfer(action == ExistingAction::overwrite ? 0 : source_.size);
    }

  private:
    void Transfer(u64 statedSize) {
        TransferMeter meter(watch_, status_, source_.path, source_.size);
        hostkit::DownloadRequest request = {source_.path, target_.path, statedSize, 0, 0};
        if (!target_.IsStream()) {
            request.date = source_.date;
            request.time = source_.time;
        }
        hostkit::TransferOperation operation;
        operation.progress = [&](const quennet::TransferRecord& record, u32 bytes) {
            meter.Count(record.bytesDone, bytes);
        };
        operation.confirm = [this](const quennet::TransferItem&, u32) {
            return mayReplace_ ? hostkit::ConfirmAnswer::goOn : hostkit::ConfirmAnswer::leaveOut;
        };
        const auto tick = options_.quiet ? std::function<void()>() : [&] { meter.Show(); };
        const hostkit::TransferResult result = client_.Download(request, operation, tick);
        meter.Finish(result.Done() && !options_.quiet);
        Judge(result);
        CompareSizes(target_.ExistingSize().value_or(meter.Position()));
    }

    void Judge(const hostkit::TransferResult& result) const {
        if (result.Done()) {
            return;
        }
        client_.CheckVerdict();
        if (result.outcome == hostkit::TransferOutcome::leftOut) {
            throw Failure(ExitStatus::failed, target_.path + " has appeared meanwhile, left alone");
        }
        if (result.localFailure) {
            throw Failure(ExitStatus::failed, result.localFailure->Text());
        }
        throw Failure(ExitStatus::failed,
                      source_.path + ": " + WordsOr(result.text, "the transfer broke off"));
    }

    /// Only a file that is too short is one: it may have grown since it was listed.
    void CompareSizes(u64 arrived) const {
        if (arrived < source_.size) {
            throw Failure(ExitStatus::failed,
                          target_.path + " is incomplete: " + std::to_string(arrived) +
                              " bytes have come, " + std::to_string(source_.size) + " were listed");
        }
    }

    Client& client_;
    const Options& options_;
    Watch& watch_;
    Status& status_;
    const LocalTarget& target_;
    const Source& source_;
    bool mayReplace_ = false;
};

/// Ends what can be decided without the server. True when nothing is left to do.
bool DecideAlone(const Options& options, const LocalTarget& target, Status& status) {
    if (!target.ExistingSize()) {
        return false;
    }
    if (options.existing == ExistingFile::skip) {
        if (!options.quiet) {
            status.Line(target.path + " is there, skipped");
        }
        return true;
    }
    if (options.existing == ExistingFile::ask && !CanAsk()) {
        throw Failure(ExitStatus::failed,
                      target.path + " exists; --resume, --overwrite or --skip says what to do");
    }
    return false;
}

void Get(Client& client, const Options& options, Watch& watch, Status& status, const Url& url,
         const LocalTarget& target) {
    client.Connect(url);
    const Source source = Locate(client, url);
    if (source.path.size() > longestServerPath) {
        throw Failure(ExitStatus::failed, "the server's path has more than 259 characters");
    }
    Download(client, options, watch, status, target, source).Run();
}

}  // namespace

void RunGet(const Options& options, Watch& watch, Status& status) {
    if (options.recursive) {
        RunGetTree(options, watch, status);
        return;
    }
    const Url url = ParseUrl(options.url);
    const LocalTarget target = ChooseTarget(options.output, url);
    if (DecideAlone(options, target, status)) {
        return;
    }
    if (target.isStandardOutput) {
        hostkit::RegisterOutput(target.path, STDOUT_FILENO);
    }
    RunWithModule(HostOptionsFor(options, url, status), [&](hostkit::Host& host) {
        Client client(host, watch, status, options);
        Get(client, options, watch, status, url, target);
    });
}

}  // namespace cli
