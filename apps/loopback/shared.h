#pragma once
// What the clients of one server have in common.

#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "breaker.h"
#include "fault.h"
#include "folder.h"
#include "server.h"

namespace loopback {

/// The lines of all control connections. Thread-safe; forgets the oldest.
class LineLog {
  public:
    void Add(int client, bool fromClient, std::string_view text);
    std::vector<LogLine> Lines() const;
    void Clear();

  private:
    mutable std::mutex lock_;
    std::deque<LogLine> lines_;
};

/// How the server presents itself, which may change while it runs. Thread-safe.
class Manner {
  public:
    explicit Manner(const Options& options);

    std::string System() const;
    void SetSystem(std::string text);
    ListFormat FormatOf(const std::string& directory) const;
    void SetFormat(const std::string& directory, ListFormat format);

  private:
    mutable std::mutex lock_;
    std::string system_;
    ListFormat format_;
    std::map<std::string, ListFormat> formats_;
};

struct Shared {
    explicit Shared(Options chosen)
        : options(std::move(chosen)), folder(options.root), manner(options) {}

    const Options options;
    const Folder folder;
    Manner manner;
    FaultTable faults;
    Breaker breaker;
    LineLog log;
};

}  // namespace loopback
