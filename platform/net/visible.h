#pragma once
// A value of a socket that changes under the socket's lock and may be looked at without it.

#include <atomic>

namespace quennet::net {

template <typename Value>
class Visible {
  public:
    Visible(Value value) : value_(value) {}
    Visible(const Visible& other) : Visible(Value(other)) {}
    Visible& operator=(const Visible& other) {
        value_.store(other, std::memory_order_relaxed);
        return *this;
    }

    operator Value() const { return value_.load(std::memory_order_relaxed); }

  private:
    std::atomic<Value> value_;
};

}  // namespace quennet::net
