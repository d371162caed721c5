#include "base/thread_handles.h"
#include "quennet_platform.h"
#include "user/desktop.h"

using namespace quennet::user;

void QuennetCountOpenObjects(QuennetOpenObjects* count) {
    *count = {};
    count->handles = static_cast<UINT>(quennet::OpenThreadHandles());
    DesktopLock desktop;
    count->windows = static_cast<UINT>(desktop->WindowCount());
    count->menus = static_cast<UINT>(desktop->menus.Count());
    count->queues = static_cast<UINT>(desktop->queues.size());
    for (const auto& [thread, queue] : desktop->queues) {
        count->timers += static_cast<UINT>(queue->timers.size());
    }
}
