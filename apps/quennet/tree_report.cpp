#include "tree_report.h"

#include "existing_question.h"
#include "failure.h"
#include "prompt.h"

namespace cli {

namespace {

std::string EntryCount(hostkit::u64 count) {
    return std::to_string(count) + (count == 1 ? " entry" : " entries");
}

}  // namespace

TreeReport::TreeReport(Client& client, const Options& options, Watch& watch, Status& status,
                       const std::string& name)
    : client_(client),
      options_(options),
      watch_(watch),
      status_(status),
      name_(name),
      meter_(watch, status, name, 0) {
    operation_.listsBytes = client.ListsBytes();
    operation_.cancelled = [&] { return watch_.Ended(); };
    operation_.entry = [this](const std::string& path) { BeginEntry(path); };
    operation_.failed = [this](const std::string& path, const std::string& cause) {
        status_.Line(path + ": " + cause);
    };
    operation_.leftOut = [this](const std::string& path, const std::string& why) {
        if (!options_.quiet) {
            status_.Line(path + " is left out: " + why);
        }
    };
    operation_.noted = operation_.failed;
    operation_.transfer.progress = [this](const quennet::TransferRecord& record,
                                          hostkit::u32 bytes) {
        meter_.Count(record.bytesDone, bytes);
    };
    operation_.existing =
        hostkit::ExistingFilePolicy([this](const hostkit::ExistingFile& file) { return Ask(file); },
                                    ActionOf(options.existing));
}

void TreeReport::Run(
    const std::function<hostkit::TreeOutcome(hostkit::Connection& connection)>& work) {
    hostkit::TreeOutcome outcome = hostkit::TreeOutcome::failures;
    const auto tick = options_.quiet ? std::function<void()>() : [this] { Show(); };
    client_.Work(
        Watch::Kind::data, [&](hostkit::Connection& connection) { outcome = work(connection); },
        tick);
    const bool movesBytes = meter_.Position() != 0;
    meter_.Rename(name_ + ", " + EntryCount(operation_.entriesDone));
    meter_.Finish(outcome == hostkit::TreeOutcome::done && movesBytes && !options_.quiet);
    client_.CheckVerdict();
    Judge(outcome);
}

void TreeReport::BeginEntry(const std::string& path) {
    meter_.Rename(std::to_string(operation_.entriesDone + 1) + "/" +
                  std::to_string(operation_.entriesTotal) + " " + path);
    meter_.SetTotal(operation_.transfer.record.bytesTotal);
}

hostkit::ExistingAnswer TreeReport::Ask(const hostkit::ExistingFile& file) {
    if (!CanAsk()) {
        lacksAnswer_ = true;
        return {hostkit::ExistingAction::skip, false, {}};
    }
    const Watch::Question question(watch_);
    isAsking_ = true;
    status_.RemoveBottom();
    const hostkit::ExistingAnswer answer = AskAboutFileOfTree(status_, watch_, file);
    isAsking_ = false;
    return answer;
}

void TreeReport::Show() {
    if (!isAsking_) {
        meter_.Show();
    }
}

void TreeReport::Judge(hostkit::TreeOutcome outcome) const {
    switch (outcome) {
        case hostkit::TreeOutcome::lost:
            throw Failure(ExitStatus::failed, name_ + ": the connection was lost");
        case hostkit::TreeOutcome::cancelled:
            throw Failure(ExitStatus::failed, name_ + ": cancelled");
        case hostkit::TreeOutcome::failures:
            throw Failure(ExitStatus::failed,
                          name_ + ": " + EntryCount(operation_.failures) + " failed");
        case hostkit::TreeOutcome::done:
            break;
    }
    if (lacksAnswer_) {
        throw Failure(ExitStatus::failed,
                      name_ +
                          ": files exist; --overwrite, --skip, or --resume for a download, says "
                          "what to do");
    }
}

}  // namespace cli
