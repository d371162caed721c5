// The walk, on wires that carry its commands; what a directory holds is written down beside them.

#include "control/sockets.h"
#include "find/find_store.h"
#include "find/find_test.h"
#include "host/message.h"
#include "hostkit/masks.h"
#include "listing/cache.h"
#include "support/wait.h"

using namespace quennet;
using testing::Contains;
using testing::ElementsAre;

namespace {

class WalkTest : public FindTest {};

const std::string inRoot = "-> CWD /\n<- 250 ok\n-> PWD\n<- 257 \"/\"\n";

/// The commands that enter a directory from its parent.
std::string Step(const std::string& parent, const std::string& name, const std::string& path) {
    return "-> CWD " + parent + "\n<- 250 ok\n-> CWD " + name + "\n<- 250 ok\n-> PWD\n<- 257 \"" +
           path + "\"\n";
}

std::string Back(const std::string& path) {
    return "-> CWD " + path + "\n<- 250 ok\n";
}

TEST_F(WalkTest, HitsComeInListingOrderADirectorysOwnFirst) {
    listings["/"] = {Folder("."),     Folder(".."),        Folder("b"),     {"one.txt", 0, 10},
                     Folder("a.txt"), {"..two.txt", 0, 5}, {"no.dat", 0, 7}};
    listings["/b"] = {Folder("c")};
    listings["/b/c"] = {{"three.txt", 0, 1}};
    Open(inRoot + Step("/", "b", "/b") + Step("/b", "c", "/b/c") + Back("/b") +
         Step("/", "a.txt", "/a.txt") + Back("/"));
    Walk("/", FindOptRecurse | FindOptLongList, "*.txt");
    wire.Finish();
    EXPECT_THAT(Hits(), ElementsAre("/: one.txt", "/: a.txt", "/: ..two.txt", "/b/c: three.txt"));
    EXPECT_THAT(reads, ElementsAre("/ 32", "/b 32", "/b/c 32", "/a.txt 32"));
    EXPECT_EQ(find.found.folders, 1u);
    EXPECT_EQ(find.found.files, 3u);
    EXPECT_EQ(find.found.bytes, 16u);
    EXPECT_EQ(find.separator, '/') << "the path handed over has one";
    // Every directory has a number; rows and summary change where hits were added.
    EXPECT_STREQ(DirectoryByNumber(&find, 2)->path, "/b");
    EXPECT_STREQ(DirectoryByNumber(&find, 4)->path, "/a.txt");
    EXPECT_EQ(DirectoryByNumber(&find, 0), nullptr);
    EXPECT_EQ(DirectoryByNumber(&find, 5), nullptr);
    std::vector<std::string> rows = Shown();
    std::erase_if(rows, [](const std::string& line) { return line.rfind("rows", 0) != 0; });
    EXPECT_THAT(rows, ElementsAre("rows 4", "rows 4"));
}

TEST_F(WalkTest, WithoutSubdirectoriesTheFirstDirectoryAloneIsVisited) {
    listings["/pub"] = {Folder("b"), {"file"}};
    Open("-> CWD pub\n<- 250 ok\n-> PWD\n<- 257 \"/pub\"\n");
    Walk("pub", 0);
    wire.Finish();
    EXPECT_THAT(Hits(), ElementsAre("/pub: b", "/pub: file"));
    EXPECT_EQ(find.separator, '\\') << "the server's answer does not count";
}

TEST_F(WalkTest, WhatCannotBeEnteredIsPassedOver) {
    listings["/"] = {Folder("a"), Folder("b"), Folder("c"), Folder("d")};
    listings["/b"] = {Folder("x"), Folder("y")};
    listings["/c"] = {{"hit"}};
    Open(inRoot + std::string("-> CWD /\n<- 250 ok\n-> CWD a\n<- 550 no\n") + Step("/", "b", "/b") +
         "-> CWD /b\n<- 550 gone\n" +  // which ends /b, without a way back
         Step("/", "c", "/c") + "-> CWD /\n<- 250 ok\n-> CWD d\n<- 250 ok\n-> PWD\n<- 257 none\n" +
         Back("/"));
    Walk("/", FindOptRecurse, "hit");
    wire.Finish();
    EXPECT_THAT(Hits(), ElementsAre("/c: hit"));
    EXPECT_EQ(find.directories.count, 3u);
}

TEST_F(WalkTest, ALinkUpTheTreeEndsTheWalk) {
    const u16 link = folderBit | attributePermissions | attributeLink;
    listings["/"] = {Folder("a")};
    listings["/a"] = {{"self", link}, {"top", link}, {"far", link}, {"file"}};
    listings["/else"] = {{"other"}};
    Open(inRoot + Step("/", "a", "/a") + Step("/a", "self", "/a") + Step("/a", "top", "/") +
         Step("/a", "far", "/else") + Back("/a") + Back("/"));
    Walk("/", FindOptRecurse, "*e*r");
    wire.Finish();
    EXPECT_THAT(Hits(), ElementsAre("/else: other"));
    EXPECT_EQ(find.directories.count, 3u);
}

// Some servers call a directory by the way that led there.
TEST_F(WalkTest, ALinkUpTheTreeEndsTheWalkUnderAnotherNameToo) {
    const u16 link = folderBit | attributePermissions | attributeLink;
    listings["/a"] = {{"up", link}, {"hit"}};
    listings["/a/up"] = {Folder("a"), {"hit"}};
    listings["/a/up/a"] = listings["/a"];
    listings["/a/up/a/up"] = listings["/a/up"];
    Open("-> CWD /a\n<- 250 ok\n-> PWD\n<- 257 \"/a\"\n" + Step("/a", "up", "/a/up") +
         Step("/a/up", "a", "/a/up/a") + Step("/a/up/a", "up", "/a/up/a/up") + Back("/a/up/a") +
         Back("/a/up") + Back("/a"));
    Walk("/a", FindOptRecurse, "hit");
    wire.Finish();
    EXPECT_THAT(Hits(), ElementsAre("/a: hit", "/a/up: hit", "/a/up/a: hit"));
}

TEST_F(WalkTest, NoWalkIsDeeperThan512Levels) {
    constexpr int levels = 512;
    std::string steps = "-> CWD /1\n<- 250 ok\n-> PWD\n<- 257 \"/1\"\n";
    for (int level = 1; level <= levels; ++level) {
        const std::string path = "/" + std::to_string(level);
        listings[path] = {Folder("d")};
        if (level < levels) {
            steps += Step(path, "d", "/" + std::to_string(level + 1));
        }
    }
    for (int level = levels; level >= 1; --level) {
        steps += Back("/" + std::to_string(level));
    }
    Open(steps);
    Walk("/1");
    wire.Finish();
    EXPECT_EQ(find.directories.count, unsigned{levels});
    EXPECT_EQ(Hits().size(), std::size_t{levels});
}

TEST_F(WalkTest, WhatDoesNotFitItsFieldIsLeftOutWhole) {
    const std::string longest(findNameSize - 1, 'n');
    const std::string path = "/" + std::string(findPathSize - 2, 'p');
    listings["/"] = {
        {longest + "n"}, Folder(longest + "d"), {longest}, Folder("long"), Folder("longer")};
    listings[path] = {{"hit"}};
    Open(inRoot + Step("/", "long", path) + Step("/", "longer", path + "p") + Back("/"));
    Walk("/");
    wire.Finish();
    EXPECT_THAT(Hits(), ElementsAre("/: " + longest, "/: long", "/: longer", path + ": hit"));
    EXPECT_THAT(Lines(), Contains("Directory name too long, refused."));
}

TEST_F(WalkTest, AStopEndsTheListingAndEachLevelGoesBack) {
    listings["/"] = {Folder("a"), Folder("b")};
    listings["/a"] = {Folder("c"), Folder("d")};
    listings["/a/c"] = {{"never"}};
    onRead = [this](const std::string& path) {
        if (path == "/a/c") {
            find.stop.Store(1);
        }
    };
    Open(inRoot + Step("/", "a", "/a") + Step("/a", "c", "/a/c") + Back("/a") + Back("/"));
    Walk("/");
    wire.Finish();
    EXPECT_THAT(Hits(), ElementsAre("/: a", "/: b", "/a: c", "/a: d"));
    EXPECT_EQ(Shown().back(), "pane 1: Found: 4 folders - stopped");
}

TEST_F(WalkTest, AServerThatClosesInsteadOfAnsweringIsAskedAgain) {
    const std::string again = "close\n" + steps::relogin;
    bool closed = false;
    listings["/"] = {Folder("a"), Folder("b")};
    listings["/a"] = {{"hit"}};
    onRead = [&](const std::string& path) {
        if (path == "/b" && !closed) {
            closed = WaitUntil([this] { return PeerHasClosed(session->controlSocket); });
        } else if (closed) {
            listings["/b"] = {{"hit"}};
        }
    };
    Open(inRoot + std::string("-> CWD /\n<- 250 ok\n-> CWD a\n") + again + Step("/", "a", "/a") +
         Step("/", "b", "/b") + again + Back("/b") + Back("/"));
    Walk("/", FindOptRecurse, "hit");
    wire.Finish();
    EXPECT_THAT(Hits(), ElementsAre("/a: hit", "/b: hit"));
}

extern "C" void KeepCount(const char*, u32, u32, u32, u32, HostWord count) {
    ++*PointerFromWord<int>(count);
}

TEST_F(WalkTest, TheHostMayReadADirectoryFromAnotherThreadAndNothingElseSlipsIn) {
    listings["/"] = {{"hit"}};
    i32 changed = 0;
    i32 listed = -1;
    int entries = 0;
    onRead = [&](const std::string& path) {
        std::thread([&] {
            changed = Host().Send(MessageNumber::changeDirSync, "/x", session->handle, nullptr);
            listed = Host().Send(MessageNumber::listDirectory, path.c_str(), session->handle,
                                 WordFromPointer(KeepCount), &entries, 0);
        }).join();
    };
    Open(inRoot + steps::passive +
         "-> LIST\n<- 150 go\ndata accept\ndata <- fone\ndata close\n<- 226 done\n");
    Walk("/");
    EXPECT_NE(changed, 0);
    EXPECT_EQ(listed, 0);
    EXPECT_EQ(entries, 1);
    EXPECT_THAT(Hits(), ElementsAre("/: hit"));
    wire.Finish();
    FreeDirCache(session);
}

// Some servers write a quote in a name twice, others don't.
TEST_F(WalkTest, AQuoteInANameIsNotTheEndOfThePath) {
    listings = {{"/", {Folder("a\"b")}},
                {"/a", {{"hit"}}},
                {"/a\"b", {Folder("\"c\"")}},
                {"/a\"b/\"c\"", {Folder("d"), {"hit"}}},
                {"/a\"b/\"c\"/d", {{"hit"}}}};
    std::string script;
    for (const std::string quote : {"\"\"", "\""}) {
        const std::string inner = "/a" + quote + "b/" + quote + "c" + quote;
        script += inRoot + Step("/", "a\"b", "/a" + quote + "b") + Step("/a\"b", "\"c\"", inner) +
                  Step("/a\"b/\"c\"", "d", inner + "/d") + Back("/a\"b/\"c\"") + Back("/a\"b") +
                  Back("/");
    }
    Open(script);
    for (int server = 0; server < 2; ++server) {
        ResetStore(&find);
        Walk("/", FindOptRecurse, "hit");
        EXPECT_THAT(Hits(), ElementsAre("/a\"b/\"c\": hit", "/a\"b/\"c\"/d: hit"));
    }
    wire.Finish();
}

TEST_F(WalkTest, TheFilterAndItsWordForDirectoriesDecide) {
    hostkit::FilterRecord filter = {};
    StoreText(filter.masks, sizeof filter.masks, "k*");
    struct Case {
        u32 option;
        u16 word;
        std::vector<std::string> hits;
    };
    const Case cases[] = {
        {0, 0, {"/: kd", "/: kf", "/: other", "/kd: kx"}},
        {FindOptUseFilter, 0, {"/: kf", "/kd: kx"}},
        {FindOptUseFilter, hostkit::filterTakesFolders, {"/: kd", "/: kf", "/kd: kx"}},
    };
    listings["/"] = {Folder("kd"), {"kf"}, {"other"}};
    listings["/kd"] = {{"kx"}};
    find.filter = &filter;
    std::string script;
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        script += inRoot + Step("/", "kd", "/kd") + Back("/");
    }
    Open(script);
    for (const Case& example : cases) {
        filter.flags = example.word;
        ResetStore(&find);
        Walk("/", FindOptRecurse | example.option);
        EXPECT_EQ(Hits(), example.hits) << example.option << " " << example.word;
    }
    wire.Finish();
}

}  // namespace
