#pragma once
// Faults on request: rules that make the server misbehave at a chosen command, and the table that
// counts their occurrences.

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace loopback {

enum class FaultAction {
    reply,         // answers with `text` instead of doing the command
    extraReply,    // says `text` in front of the command's first reply
    lateReply,     // says `text` behind the command's last reply
    silent,        // does not answer, and goes on to the next command
    dropBefore,    // closes the control connection without an answer
    dropAfter,     // closes the control connection behind the first reply
    resetBefore,   // like dropBefore, with a reset
    resetAfter,    // like dropAfter, with a reset
    delay,         // waits for `time` before each reply
    split,         // says each reply in pieces of `bytes` bytes, with `time` between them
    refuseData,    // opens no data connection: the active one is never made, the passive one never
                   // accepted; waits until the client goes on, `time` at most if not 0, then 425
    stallData,     // moves `bytes` bytes, then none until the client closes or aborts
    closeData,     // moves `bytes` bytes, closes the data connection, and confirms with 226
    failData,      // the same, but 426
    resetData,     // moves `bytes` bytes, resets the data connection, and answers 426
    slowData,      // moves blocks of `bytes` bytes with `time` between them
    noFinalReply,  // moves all data, closes the data connection, and never says the final reply
};

/// One rule. `text` is one or more whole reply lines with LF or CR LF between them; a CR LF behind
/// the last one is added.
struct Fault {
    std::string command;  // in capitals, "RETR"; "*" stands for every command; "" for the welcome
    int occurrence = 1;   // the n-th such command from now on; 0 for each of them
    FaultAction action = FaultAction::reply;
    std::string text = {};
    std::size_t bytes = 0;
    std::chrono::milliseconds time{0};
};

/// The rules of one server. Thread-safe.
class FaultTable {
  public:
    void Add(Fault fault);
    void Clear();

    /// Counts one occurrence of `command`, and gives the rules that apply to this one, in the order
    /// in which they were added.
    std::vector<Fault> Take(std::string_view command);

  private:
    struct Rule {
        Fault fault;
        int seen;
    };

    std::mutex lock_;
    std::vector<Rule> rules_;
};

/// The rule with this action, or null.
const Fault* FindFault(const std::vector<Fault>& faults, FaultAction action);

}  // namespace loopback
