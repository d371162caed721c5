#include "server.h"

#include <algorithm>
#include <atomic>
#include <list>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "client.h"
#include "shared.h"

namespace loopback {

// The acceptor's thread and those of the clients.
class Server::House {
  public:
    explicit House(Options options)
        : shared(std::move(options)), listener_(Listen(shared.options.port)) {
        acceptor_ = std::thread([this] { AcceptClients(); });
    }

    ~House() { Stop(); }

    std::uint16_t Port() const { return listener_.port; }

    void Stop() {
        std::lock_guard stopping(stopLock_);
        stop_.Set();
        if (acceptor_.joinable()) {
            acceptor_.join();
        }
        listener_.socket.Close();
        DropClients();
        // Nobody adds to the list any more.
        for (Entry& entry : entries_) {
            entry.thread.join();
        }
        std::lock_guard guard(lock_);
        entries_.clear();
    }

    void DropClients() {
        std::lock_guard guard(lock_);
        for (Entry& entry : entries_) {
            entry.stop.Set();
        }
    }

    int ClientCount() const {
        std::lock_guard guard(lock_);
        return static_cast<int>(std::count_if(entries_.begin(), entries_.end(),
                                              [](const Entry& entry) { return !entry.ended; }));
    }

    int ConnectionCount() const {
        std::lock_guard guard(lock_);
        return connections_;
    }

    Shared shared;

  private:
    struct Entry {
        StopSignal stop;
        std::atomic<bool> ended = false;
        std::thread thread;
    };

    void AcceptClients() {
        constexpr Milliseconds restAfterFailure{50};
        while (WaitReady(listener_.socket.Number(), false, Clock::time_point::max(), stop_) !=
               Ready::stopped) {
            try {
                Descriptor socket = Accept(listener_);
                if (socket.Valid()) {
                    TakeIn(std::move(socket));
                    continue;
                }
            } catch (const std::system_error&) {
                // No thread or descriptor is left for this client; its socket has been closed.
            }
            Sleep(restAfterFailure, stop_);
        }
    }

    void TakeIn(Descriptor socket) {
        std::lock_guard guard(lock_);
        JoinEnded();
        bool full = static_cast<int>(entries_.size()) >= shared.options.clientLimit;
        int number = ++connections_;
        if (full) {
            Client(&shared, &stop_, std::move(socket), number).TurnAway();
            return;
        }
        Entry& entry = entries_.emplace_back();
        try {
            entry.thread = std::thread(
                [this, &entry, number](Descriptor control) {
                    Client(&shared, &entry.stop, std::move(control), number).Run();
                    entry.ended = true;
                },
                std::move(socket));
        } catch (const std::system_error&) {
            entries_.pop_back();
            throw;
        }
    }

    void JoinEnded() {
        entries_.remove_if([](Entry& entry) {
            if (entry.ended) {
                entry.thread.join();
            }
            return entry.ended.load();
        });
    }

    StopSignal stop_;
    Listener listener_;
    std::thread acceptor_;
    std::mutex stopLock_;

    mutable std::mutex lock_;  // guards the list and the count
    std::list<Entry> entries_;
    int connections_ = 0;
};

Server::Server(Options options) : house_(std::make_unique<House>(std::move(options))) {}

Server::~Server() = default;

std::uint16_t Server::Port() const {
    return house_->Port();
}

void Server::Stop() {
    house_->Stop();
}

void Server::Add(Fault fault) {
    house_->shared.faults.Add(std::move(fault));
}

void Server::ClearFaults() {
    house_->shared.faults.Clear();
}

void Server::SetBreak(const Break& next) {
    house_->shared.breaker.Set(next);
}

bool Server::HasBroken() const {
    return house_->shared.breaker.HasBroken();
}

void Server::SetSystem(std::string text) {
    house_->shared.manner.SetSystem(std::move(text));
}

void Server::SetFormat(std::string directory, ListFormat format) {
    house_->shared.manner.SetFormat(directory, format);
}

std::vector<LogLine> Server::Log() const {
    return house_->shared.log.Lines();
}

void Server::ClearLog() {
    house_->shared.log.Clear();
}

std::vector<std::string> Server::Commands() const {
    std::vector<std::string> commands;
    for (LogLine& line : house_->shared.log.Lines()) {
        if (line.fromClient) {
            commands.push_back(std::move(line.text));
        }
    }
    return commands;
}

int Server::ClientCount() const {
    return house_->ClientCount();
}

int Server::ConnectionCount() const {
    return house_->ConnectionCount();
}

void Server::DropClients() {
    house_->DropClients();
}

}  // namespace loopback
