#include "find/find_worker.h"

#include <commctrl.h>

#include <cstring>

#include "control/exchange.h"
#include "control/worker.h"
#include "find/find_commands.h"
#include "find/find_controls.h"
#include "find/find_lookup.h"
#include "find/find_store.h"
#include "find/find_summary.h"
#include "find/find_walk.h"
#include "host/services.h"

namespace quennet {

namespace {

constexpr u32 busyPane = 2;
constexpr char everyName[] = ".";

/// What is looked for; it enters the history as it is looked for.
void TakeMask(FindWindow* find, char* mask) {
    std::memset(mask, 0, findMaskSize);
    GetDlgItemTextA(find->window, findMaskBox, mask, findMaskSize);
    if (mask[0] == 0 || std::strcmp(mask, "*.*") == 0) {
        StoreText(mask, findMaskSize, everyName);
    }
    ShellComboAdd(find->maskBox, mask);
}

void BeginRun(FindWindow* find, FindRun* run) {
    find->busy.Add(1);
    ShellSetStatusIcon(find->statusBar, busyPane, true);
    find->found = {};
    ShowFindSummary(find, find->found, runSummary);
    run->find = find;
    TakeMask(find, run->mask);
    run->options = find->runOptions;
    run->filter = find->filter;
    ResetStore(find);
    UpdateCommandStates(find);
}

/// By a post, and by a send should no more can be posted: somebody may wait for it.
void TellRunEnded(const FindWindow* find) {
    if (!PostMessageA(find->window, WM_COMMAND, findRunEnded, 0)) {
        SendMessageA(find->window, WM_COMMAND, findRunEnded, 0);
    }
}

void EndRun(FindWindow* find) {
    SendMessageA(find->list, LVM_SETITEMCOUNT, find->hits.Load(),
                 LVSICF_NOINVALIDATEALL | LVSICF_NOSCROLL);
    find->busy.Subtract(1);
    if (IsEnding(find)) {
        return;
    }
    ShellSetForeground(find->window);
    UpdateCommandStates(find);
    ShowFindPane(find, 0, "");
    ShellSetStatusIcon(find->statusBar, busyPane, false);
    ShowFindSummary(find, find->found, runSummary);
    if (ShellGetCurrentItem(find->list) < 0) {
        ShellSetCurrentItem(find->list, 0);
    }
    UpdateRecordTable(find);
    TellRunEnded(find);
}

/// As message 41, if the exchange in progress is the worker's: that of another thread goes on.
void Abort(FindWindow* find) {
    Session* session = find->session;
    const u32 thread = find->workerThread.Load();
    if (thread != 0 && HoldsExchange(session, thread)) {
        session->abortFlag.Store(1);
    }
}

DWORD WINAPI FindWorker(void* argument) {
    auto* find = static_cast<FindWindow*>(argument);
    Session* session = find->session;
    find->workerThread.Store(GetCurrentThreadId());
    FindRun run;
    BeginRun(find, &run);
    WalkDirectory(find->startPath, &run);
    EndRun(find);
    find->workerThread.Store(0);
    // From here on the record may be gone, and then the session.
    find->worker.Store(0);
    session->users.Subtract(1);
    return 0;
}

}  // namespace

void StartFind(FindWindow* find) {
    if (find->worker.Exchange(1) != 0) {
        return;
    }
    // The end of the connection waits for its users once it is claimed, or is seen here.
    Session* session = find->session;
    session->users.Add(1);
    if (!find->closing.IsSet() && !session->closing.IsSet()) {
        ReadFindOptions(find);
        find->runOptions = find->options;
        find->stop.Store(0);
        SendMessageA(find->list, LVM_DELETEALLITEMS, 0, 0);
        if (StartWorker(FindWorker, find)) {
            return;
        }
        TellRunEnded(find);  // without a thread the run is over
    }
    find->worker.Store(0);
    session->users.Subtract(1);
}

void StopFind(FindWindow* find) {
    find->stop.Add(1);
}

bool HasWorker(const FindWindow* find) {
    return find->worker.IsSet();
}

void PressWorker(FindWindow* find, u32 waited) {
    constexpr u32 patience = 1000;
    find->stop.Store(1);
    if (waited != 0 && waited % patience == 0) {
        Abort(find);
    }
}

}  // namespace quennet
