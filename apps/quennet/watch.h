#pragma once
// The thread that ends what takes too long: it hears Ctrl-C, watches whether data moves, closes
// what is shown in the terminal, and aborts the operation that runs, again and again until it has
// returned.

#include <signal.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <thread>

#include "hostkit/connection.h"
#include "hostkit/types.h"
#include "status.h"

namespace cli {

class Watch {
  public:
    using Clock = std::chrono::steady_clock;

    /// Takes SIGINT, SIGTERM and SIGHUP for the process, so it must come before all other threads,
    /// and gives them back at its end unless one has come. A process that is still there
    /// 0.9 seconds after the first signal is ended with the reason as its last line, one that gets
    /// a third at once. A limit of 0 is none.
    struct Limits {
        std::chrono::seconds idle;   // of an operation that moves data
        std::chrono::seconds reply;  // of a login or a command, to its end
    };
    Watch(Limits limits, Status& status);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    enum class Verdict { goOn, interrupted, idle, unanswered };
    Verdict Get() const { return verdict_; }
    bool Ended() const { return verdict_ != Verdict::goOn; }

    /// «interrupted», or what did not move for how long.
    std::string Reason() const;

    /// Becomes readable when the verdict falls.
    int Descriptor() const { return wakeRead_; }

    /// Something moved: a byte of a file, a line of the conversation.
    void Moved() { moves_.fetch_add(1, std::memory_order_relaxed); }

    /// Somebody is asked meanwhile: nothing has to move as long as the object lives.
    class Question {
      public:
        explicit Question(Watch& watch) : watch_(watch) { watch_.questions_.fetch_add(1); }
        ~Question() {
            watch_.Moved();
            watch_.questions_.fetch_sub(1);
        }
        Question(const Question&) = delete;
        Question& operator=(const Question&) = delete;

      private:
        Watch& watch_;
    };

    enum class Kind {
        command,   // replies alone: ends when they have not come in time
        data,      // ends when nothing has moved for the idle time
        untimed,   // a person takes part, or nothing of what moves is seen
        farewell,  // goes its way for two seconds before it is aborted
    };

    /// An operation of the connection runs, as long as the object lives. `tick`, if any, is called
    /// ten times a second meanwhile, on the watch's thread.
    class Operation {
      public:
        Operation(Watch& watch, hostkit::Connection& connection, Kind kind,
                  std::function<void()> tick = {});
        /// One without a connection; `tick` has to see to its end.
        Operation(Watch& watch, std::function<void()> tick);
        ~Operation();
        Operation(const Operation&) = delete;
        Operation& operator=(const Operation&) = delete;

      private:
        Watch& watch_;
    };

  private:
    void Run();
    void TakeSignal();
    [[noreturn]] void EndProcess();
    void Look();
    void Decide(Verdict verdict);
    void NoteMoves();
    std::chrono::seconds Limit() const;

    const Limits limits_;
    Status& status_;
    std::atomic<Verdict> verdict_ = Verdict::goOn;
    std::atomic<bool> ending_ = false;
    std::atomic<hostkit::u32> moves_ = 0;
    std::atomic<int> questions_ = 0;
    int wakeRead_ = -1;
    int wakeWrite_ = -1;
    int signals_ = 0;
    Clock::time_point firstSignal_;
    sigset_t signalsBefore_;

    std::mutex mutex_;  // of the operation that runs
    hostkit::Connection* connection_ = nullptr;
    Clock::time_point abortFrom_;
    std::function<void()> tick_;
    Kind kind_ = Kind::command;
    hostkit::u32 seenMoves_ = 0;
    hostkit::u32 seenAppends_ = 0;
    Clock::time_point movedAt_;

    std::thread thread_;  // behind all that it uses
};

}  // namespace cli
