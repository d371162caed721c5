#pragma once
// The end of a worker of the module that tells of none: it releases, as its last step, the request
// record that its message has allocated.

#include <atomic>
#include <functional>
#include <set>

namespace hostkit {

class RequestWatch {
  public:
    /// Watches what the calling thread allocates for the module until `Sent`. `ended` is called on
    /// whatever thread releases the last of it.
    explicit RequestWatch(std::function<void()> ended);
    ~RequestWatch();
    RequestWatch(const RequestWatch&) = delete;
    RequestWatch& operator=(const RequestWatch&) = delete;

    void Sent();

    /// Whether all is released, as it is when the message has started no worker.
    bool HasEnded() const { return !isPending_; }

    // What the host's services for memory tell; null is nothing.
    static void Allocated(void* block);
    static void Released(void* block);

  private:
    const std::function<void()> ended_;
    std::set<void*> blocks_;
    std::atomic<bool> isPending_ = false;
};

}  // namespace hostkit
