#include "hostkit/directory_change.h"

#include <utility>

namespace hostkit {

namespace {

struct Change {
    u16 cookie = 0;
    bool done = false;
};

/// What the calling thread of the module carries out; cookie 0 for none.
thread_local Change change;

extern "C" {

static void BeginChange(u16 cookie, u8) {
    change = {cookie, false};
    Host::Current()->GetPanels().ForEach([&](Panel& panel) { panel.DirectoryChangeBegan(cookie); });
}

static void NoteDone(u16, const char*) {
    change.done = true;
}
}

}  // namespace

void StartDirectoryChange(const Host& host, const quennet::FtpHandle* handle,
                          const std::string& directory, u16 cookie) {
    const quennet::GotoBeginsCallback begins = BeginChange;
    const quennet::GotoDoneCallback done = NoteDone;
    host.Send(quennet::MessageNumber::gotoDirectory, handle->session, "", directory.c_str(), cookie,
              begins, done);
}

bool EndDirectoryChange() {
    const Change ended = std::exchange(change, {});
    if (ended.cookie == 0) {
        return false;
    }
    Host::Current()->GetPanels().ForEach(
        [&](Panel& panel) { panel.DirectoryChangeEnded(ended.cookie, ended.done); });
    return true;
}

}  // namespace hostkit
