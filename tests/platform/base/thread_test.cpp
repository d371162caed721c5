#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>

namespace {

std::atomic<bool> mayEnd{false};

DWORD WaitForLeave(LPVOID parameter) {
    while (!mayEnd) {
        Sleep(1);
    }
    *static_cast<DWORD*>(parameter) = GetCurrentThreadId();
    return 77;
}

TEST(ThreadTest, AHandleTellsWhetherTheThreadRunsAndWhatItReturned) {
    mayEnd = false;
    DWORD ownId = 0;
    DWORD id = 0;
    DWORD exitCode = 0;
    const HANDLE thread = CreateThread(nullptr, 0, WaitForLeave, &ownId, 0, &id);
    ASSERT_NE(thread, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, 20), WAIT_TIMEOUT);
    EXPECT_TRUE(GetExitCodeThread(thread, &exitCode));
    EXPECT_EQ(exitCode, STILL_ACTIVE);
    mayEnd = true;
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(GetExitCodeThread(thread, &exitCode));
    EXPECT_EQ(exitCode, 77u);
    EXPECT_EQ(id, ownId);
    EXPECT_NE(id, GetCurrentThreadId());
    EXPECT_TRUE(CloseHandle(thread));
    EXPECT_FALSE(CloseHandle(thread));
    EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

struct SharedCount {
    CRITICAL_SECTION section;
    int count;
};

DWORD CountTwiceLocked(LPVOID parameter) {
    auto* const shared = static_cast<SharedCount*>(parameter);
    for (int turn = 0; turn < 10'000; ++turn) {
        EnterCriticalSection(&shared->section);
        EnterCriticalSection(&shared->section);
        ++shared->count;
        LeaveCriticalSection(&shared->section);
        ++shared->count;  // still inside
        LeaveCriticalSection(&shared->section);
    }
    SetLastError(4711);
    return 0;
}

TEST(ThreadTest, ACriticalSectionKeepsOthersOutUntilItIsLeftAsOftenAsEntered) {
    SharedCount shared{};
    InitializeCriticalSection(&shared.section);
    SetLastError(12);
    HANDLE threads[4];
    for (HANDLE& thread : threads) {
        thread = CreateThread(nullptr, 0, CountTwiceLocked, &shared, 0, nullptr);
    }
    for (const HANDLE thread : threads) {
        EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
        CloseHandle(thread);
    }
    EXPECT_EQ(shared.count, 80'000);
    EXPECT_EQ(GetLastError(), 12u) << "the other threads have errors of their own";
    DeleteCriticalSection(&shared.section);
}

}  // namespace
