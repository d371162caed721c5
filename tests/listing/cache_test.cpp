#include "listing/cache.h"

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <vector>

#include "support/replaced_services.h"
#include "support/session_test.h"

using namespace quennet;

namespace {

using Names = std::vector<std::string>;

extern "C" void KeepName(const char* name, u32, u32, u32, u32, HostWord context) {
    PointerFromWord<Names>(context)->push_back(name);
}

extern "C" i32 RefuseAppend(GrowBuffer*, const void*, u32) {
    return 1;
}

std::string written;
constexpr ShellFile rawFile = 4711;

extern "C" i32 KeepWrite(HWND, ShellFile file, const void* data, u32 length) {
    EXPECT_EQ(file, rawFile);
    written.assign(static_cast<const char*>(data), length);
    return 0;
}

/// The steps of one fetch whose listing is `text`.
std::string Fetch(const std::string& text, const std::string& command = "LIST") {
    return steps::passive + "-> " + command + "\n<- 150 here\ndata accept\ndata <- " + text +
           "\ndata close\n<- 226 done\n";
}

const std::string refusedFetch = steps::passive + "-> LIST\n<- 450 no\n";

class CacheTest : public SessionTest {
  protected:
    CacheTest() { StoreText(session->site.directory, pathSize, "/pub"); }
    ~CacheTest() override { FreeDirCache(session); }

    /// Message 26: the names without the parent's, or a text for its failure.
    Names List(const char* path = nullptr, u32 longOption = 0) {
        Names names;
        if (ListDirectory(path, session->handle, KeepName, WordFromPointer(&names), longOption) !=
            0) {
            return {"failed"};
        }
        std::erase(names, "..");
        return names;
    }

    CacheEntry* Entry(u32 number) { return CacheEntryAt(session, number); }
    // By value: the entry lies on any byte.
    u32 Valid(u32 number) { return Entry(number)->valid; }

    /// What message 48 writes, "(nothing)" without a write.
    std::string RawListing() {
        written = "(nothing)";
        ReplacedServices services;
        services.Replace(ShellService::writeFile, KeepWrite);
        Host().Send(MessageNumber::saveRawListing, 0, rawFile, session->handle);
        return written;
    }
};

TEST_F(CacheTest, TheCurrentDirectoryIsListedAgainOnlyWhenStale) {
    LogIn(Fetch("fone") + Fetch("ftwo", "LIST -la") + Fetch("fthree"));
    EXPECT_EQ(List(), Names{"fone"});
    EXPECT_EQ(session->currentCacheIndex, 1u);
    EXPECT_EQ(Valid(1), 1u);
    EXPECT_STREQ(session->listingDir, "");
    EXPECT_EQ(List(session->site.directory), Names{"fone"});
    InvalidateCacheEntry(session->handle, nullptr);
    EXPECT_EQ(List(nullptr, 8), Names{"ftwo"});
    InvalidateDirCache(session->handle);
    EXPECT_EQ(Valid(1), 0u);
    EXPECT_EQ(session->currentCacheIndex, 1u);
    EXPECT_EQ(List(), Names{"fthree"});
    EXPECT_EQ(List(), Names{"fthree"});
    EXPECT_EQ(session->cacheBlock.count, 1u) << "all in the same entry";
    wire.Finish();
}

TEST_F(CacheTest, ANamedDirectoryIsAlwaysListed) {
    LogIn(Fetch("fone") + Fetch("ftwo") + Fetch("fthree") + Fetch("ffour"));
    EXPECT_EQ(List(), Names{"fone"});
    EXPECT_EQ(List("/pub"), Names{"ftwo"});
    EXPECT_EQ(List("/PUB"), Names{"fthree"}) << "case makes no other entry";
    EXPECT_EQ(session->cacheBlock.count, 1u);
    EXPECT_EQ(List("/pub2"), Names{"ffour"});
    EXPECT_EQ(session->currentCacheIndex, 2u);
    EXPECT_EQ(List(), Names{"fthree"});
    EXPECT_EQ(session->currentCacheIndex, 1u);
    InvalidateCacheEntry(session->handle, "/PUB2");
    EXPECT_EQ(Valid(1), 1u);
    EXPECT_EQ(Valid(2), 0u);
    InvalidateCacheEntry(session->handle, "/nowhere");
    EXPECT_EQ(Valid(1), 1u);
    wire.Finish();
}

TEST_F(CacheTest, AFailedFetchLeavesTheCacheAsItWas) {
    // The second fetch ends with data but without the server's word.
    LogIn(Fetch("fone") + refusedFetch + steps::passive +
          "-> LIST\n<- 150 here\ndata accept\ndata <- fpart\n"
          "data close\n<- 451 no\n");
    EXPECT_EQ(List(), Names{"fone"});
    InvalidateDirCache(session->handle);
    EXPECT_EQ(List(), Names{"failed"});
    EXPECT_EQ(List("/other"), Names{"failed"});
    EXPECT_EQ(session->cacheBlock.count, 1u);
    EXPECT_EQ(session->currentCacheIndex, 1u);
    EXPECT_EQ(Valid(1), 0u);
    EXPECT_STREQ(session->listingDir, "");
    EXPECT_EQ(RawListing(), "fone");
    wire.Finish();
}

TEST_F(CacheTest, SavesTheTextThatWasReadLast) {
    LogIn(Fetch("\\x01raw\\r\\n  text") + Fetch(""));
    EXPECT_EQ(RawListing(), "(nothing)");
    List();
    EXPECT_EQ(RawListing(), "\x01raw\r\n  text");
    EXPECT_EQ(List("/empty"), Names{});
    EXPECT_EQ(RawListing(), "(nothing)");
    wire.Finish();
}

TEST_F(CacheTest, PathsOfAllLengthsAreListedALongerOneIsKeptByItsEnd) {
    const std::string longest(pathSize - 1, 'x');
    LogIn(Fetch("fone") + Fetch("ftwo"));
    EXPECT_EQ(List(longest.c_str()), Names{"fone"});
    EXPECT_EQ(List((longest + "y").c_str()), Names{"ftwo"});
    EXPECT_STREQ(Entry(1)->path, longest.c_str());
    EXPECT_STREQ(Entry(2)->path, (longest.substr(1) + "y").c_str());
    EXPECT_EQ(FindCacheEntry(session, (longest + "x").c_str()), 0u);
    EXPECT_EQ(AddCacheEntry(session, (longest + "x").c_str()), 0u);
    EXPECT_EQ(Entry(0), nullptr);
    EXPECT_EQ(Entry(3), nullptr);
    wire.Finish();
}

TEST_F(CacheTest, WithoutMemoryForANewEntryTheOldOneStays) {
    LogIn(Fetch("fone"));
    EXPECT_EQ(List(), Names{"fone"});
    ReplacedServices services;
    services.Replace(ShellService::bufferAppend, RefuseAppend);
    EXPECT_EQ(AddCacheEntry(session, "/new"), 0u);
    EXPECT_EQ(session->cacheBlock.count, 1u);
    EXPECT_EQ(List(), Names{"fone"});
    wire.Finish();
}

// While a directory is received, the lock is free: a request for the same directory shows what is
// there, one for another directory finds the connection occupied.
TEST_F(CacheTest, OtherRequestsDuringAFetchAreNotHeldUp) {
    LogIn(Fetch("fone") + steps::passive +
          "-> LIST\n<- 150 here\ndata accept\nmark receiving\n"
          "await go on\ndata <- ftwo\ndata close\n<- 226 done\n");
    EXPECT_EQ(List(), Names{"fone"});
    InvalidateDirCache(session->handle);
    auto second = std::async(std::launch::async, [this] { return List(); });
    ASSERT_TRUE(wire.AwaitMark("receiving"));
    EXPECT_EQ(List("/pub"), Names{"fone"});
    EXPECT_EQ(List("/other"), Names{"failed"});
    EXPECT_THAT(Lines(), testing::Contains("Command in progress, ignored."));
    wire.Signal("go on");
    EXPECT_EQ(second.get(), Names{"ftwo"});
    EXPECT_EQ(session->cacheBlock.count, 1u);
    wire.Finish();
}

struct LockedWalk {
    FtpHandle* handle;
    std::future<void> other = {};
    bool wasHeldUp = false;
};

extern "C" void InvalidateElsewhere(const char* name, u32, u32, u32, u32, HostWord context) {
    LockedWalk* walk = PointerFromWord<LockedWalk>(context);
    if (std::string(name) == "fone") {
        walk->other = std::async(std::launch::async, [walk] { InvalidateDirCache(walk->handle); });
        walk->wasHeldUp =
            walk->other.wait_for(std::chrono::milliseconds(100)) == std::future_status::timeout;
    }
}

TEST_F(CacheTest, TheHostsCallbackRunsInsideTheListLock) {
    LogIn(Fetch("fone"));
    LockedWalk walk = {session->handle};
    EXPECT_EQ(
        ListDirectory(nullptr, session->handle, InvalidateElsewhere, WordFromPointer(&walk), 0), 0);
    walk.other.get();
    EXPECT_TRUE(walk.wasHeldUp);
    EXPECT_EQ(Valid(1), 0u);
    wire.Finish();
}

}  // namespace
