#pragma once
// What a person sees of an operation on a tree: one line of progress for the whole, a line for each
// entry that failed or was left out, questions, and how it ended.

#include <mutex>
#include <string>

#include "client.h"
#include "hostkit/trees.h"
#include "options.h"
#include "status.h"
#include "transfer_meter.h"
#include "watch.h"

namespace cli {

class TreeReport {
  public:
    /// `name` is what is worked on, as a person calls it.
    TreeReport(Client& client, const Options& options, Watch& watch, Status& status,
               const std::string& name);
    TreeReport(const TreeReport&) = delete;
    TreeReport& operator=(const TreeReport&) = delete;

    hostkit::TreeOperation& Operation() { return operation_; }

    /// Runs an operation on the client's connection. Throws a Failure when not all of it was done.
    void Run(const std::function<hostkit::TreeOutcome(hostkit::Connection& connection)>& work);

  private:
    void BeginEntry(const std::string& path);
    hostkit::ExistingAnswer Ask(const hostkit::ExistingFile& file);
    void Show();
    void Judge(hostkit::TreeOutcome outcome) const;

    Client& client_;
    const Options& options_;
    Watch& watch_;
    Status& status_;
    const std::string name_;
    TransferMeter meter_;
    hostkit::TreeOperation operation_;
    std::atomic<bool> isAsking_ = false;
    bool lacksAnswer_ = false;  // nobody could be asked
};

}  // namespace cli
