#include "listing/walker.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "control/server_family.h"

namespace quennet {
namespace {

struct Entry {
    std::string name;
    u32 date;
    u32 time;
    u32 attributes;
    u32 size;

    bool operator==(const Entry&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Entry& entry) {
    return out << "«" << entry.name << "»" << std::hex << " date 0x" << entry.date << " time 0x"
               << entry.time << " attributes 0x" << entry.attributes << std::dec << " size "
               << entry.size;
}

using Entries = std::vector<Entry>;

const Entry parent = {"..", 0, 0, 0x18, 0};

extern "C" void KeepEntry(const char* name, u32 date, u32 time, u32 attributes, u32 size,
                          HostWord context) {
    PointerFromWord<Entries>(context)->push_back({name, date, time, attributes, size});
}

class WalkerTest : public ::testing::Test {
  protected:
    // A root has no parent entry, so what comes is what the lines tell.
    Entries Walk(const std::string& text, const char* path = "/") {
        return WalkText(text.c_str(), path);
    }

    Entries WalkText(const char* text, const char* path) {
        Entries entries;
        ParseListing(path, session_, text, KeepEntry, WordFromPointer(&entries));
        return entries;
    }

    void SetFamily(ServerFamily family) { session_->serverType.Store(static_cast<u32>(family)); }
    ServerFamily Family() const { return static_cast<ServerFamily>(session_->serverType.Load()); }

    alignas(8) char block_[sessionOffset + sizeof(Session)] = {};
    Session* session_ = reinterpret_cast<Session*>(block_ + sessionOffset);
};

TEST_F(WalkerTest, ReadsAUnixListing) {
    SetFamily(ServerFamily::unixLike);
    EXPECT_EQ(Walk("total 12\r\n"
                   "drwxr-xr-x 2 u g 512 Jan 1 2001 .\r\n"
                   "drwxr-xr-x 2 u g 512 Jan 1 2001 ..\r\n"
                   "drwxr-xr-x 2 u g 512 Jan 1 2001 dir/\r\n"
                   "drwxr-xr-x 2 u g 512 Jan 1 2001 back\\\r\n"
                   "lrwxrwxrwx 1 u g 7 Jan 1 2001 bin -> usr/bin/\r\n"
                   "lrwxrwxrwx 1 u g 7 Jan 1 2001 lost/\r\n"
                   "-rw-r--r-- 1 u g 9 Jan 1 2001 a->b\r\n"
                   "frw-r--r-- 1 u g 9 Jan 1 2001 ../../x/\r\n"
                   "crw-r--r-- 1 u g 9 Jan 1 2001 tty\r\n"
                   "-rw-r--r-- 1 u g 9 Jan 1 2001 last",
                   "/pub"),
              (Entries{parent,
                       {"dir", 0x2A21, 0, 0x85B7, 512},
                       {"back", 0x2A21, 0, 0x85B7, 512},
                       {"bin", 0x2A21, 0, 0xA7F7, 7},
                       {"lost", 0x2A21, 0, 0xA7E7, 7},
                       {"a->b", 0x2A21, 0, 0x8123, 9},
                       {"../../x/", 0x2A21, 0, 0x8123, 9},
                       {"last", 0x2A21, 0, 0x8123, 9}}));
}

TEST_F(WalkerTest, ShortLinesReachTheHostByTheirFirstLetter) {
    EXPECT_EQ(Walk("f\nd\n-abc 12\nlink\nd./\nd..\nx\n .. \n/\nd/\n..\n.\n"),
              (Entries{{"f", 0, 0, 0, 0},
                       {"d", 0, 0, 0x10, 0},
                       {"-abc", 0, 0, 0, 0},
                       {"link", 0, 0, 0, 0},
                       {"d.", 0, 0, 0x10, 0},
                       {"d..", 0, 0, 0x10, 0},
                       {"d", 0, 0, 0x10, 0}}));
    EXPECT_EQ(Walk("drwxr-xr-x 2 u g 512 Jan 1 2001 /"), (Entries{{"", 0x2A21, 0, 0x85B7, 512}}));
    EXPECT_EQ(Walk(std::string(100000, ' ') + "\n\x01\x02\x1B[31m\n\xFF\xFE"), Entries{});
}

TEST_F(WalkerTest, ReadsDosAndOs2Listings) {
    SetFamily(ServerFamily::windowsNt);
    EXPECT_EQ(Walk("01-15-02  03:45PM       <DIR>          Program Files\r\n"),
              (Entries{{"Program Files", 0x2C2F, 0x7DA0, 0x10, 0}}));
    SetFamily(ServerFamily::os2);
    EXPECT_EQ(Walk("                0           DIR   01-15-02   12:34  ..\r\n"
                   "             1234      A          01-15-02   12:34  my file.txt\r\n"),
              (Entries{{"my file.txt", 0x2C2F, 0x6440, 0x20, 1234}}));
}

TEST_F(WalkerTest, TheParentComesFirstExceptInARoot) {
    for (const char* path : {"/", "/pub/", "C:\\", "x", ""}) {
        EXPECT_EQ(Walk("", path), Entries{}) << path;
        EXPECT_EQ(WalkText(nullptr, path), Entries{parent}) << path;
    }
    for (const char* path : {"/pub", "ab"}) {
        EXPECT_EQ(Walk("", path), Entries{parent}) << path;
    }
    EXPECT_EQ(Walk("", nullptr), Entries{});
    StoreText(session_->site.directory, sizeof(session_->site.directory), "/pub");
    EXPECT_EQ(Walk("", nullptr), Entries{parent});
}

TEST_F(WalkerTest, ALineBeyond256BytesGoesOnAsALineOfItsOwn) {
    const std::string head = "-rw-r--r-- 1 u g 9 Jan 1 2001 ";
    const std::string name(256 - head.size(), 'n');
    EXPECT_EQ(Walk(head + name + "fine\n"),
              (Entries{{name, 0x2A21, 0, 0x8123, 9}, {"fine", 0, 0, 0, 0}}));
    EXPECT_EQ(Walk(std::string(10000, 'd')).size(), 40u);
}

const std::string datasetHeader =
    "Volume Unit    Referred Ext Used Recfm Lrecl BlkSz Dsorg Dsname\r\n";
const std::string memberHeader =
    " Name     VV.MM   Created       Changed      Size  Init   Mod   Id\r\n";

TEST_F(WalkerTest, ReadsMvsDatasets) {
    SetFamily(ServerFamily::mvsDatasets);
    EXPECT_EQ(
        Walk(datasetHeader +
             "SMS001 3390   2001/07/19  1   15  FB      80  6160  PO  USER.DATA\r\n"
             "SMS001 3390   2001/07/19  1   15  FB      80  6160  PS  USER.SEQ \r\n"
             "SMS001 3390   2001/07/19  1   15  FB      80  6160 po-E USER.EXT\r\n"
             "SMS001 3390   02/07/19    1   15  FB      80  6160    POSH\r\n"
             "SMS001 3390   2001/13/32  1   15  FB      80     6160   D\r\n"
             "SMS001 3390   2108/00/0   1   15  FB      80           PSX\r\n"
             "migrated                                                USER.OLD\r\n"
             "Migrated      2001/07/19                                USER.YOUNG\r\n"
             "SMS001 3390   2001/07/19  1   15  FB      80  6160  PS  \r\n"),
        (Entries{{"USER.DATA", 0x2AF3, 0, 0x10, 0},
                 {"USER.SEQ ", 0x2AF3, 0, 0, 6160},
                 {"USER.EXT", 0x2AF3, 0, 0x10, 0},
                 // Behind a year of two digits, month and day are not where they are looked for.
                 {"SH", 2 << 9 | 1, 0, 0x10, 0},
                 {"D", 21 << 9, 0, 0, 6160},
                 {"SX", static_cast<u16>(2108 << 9), 0, 0, 0},
                 {"USER.YOUNG", 0x2AF3, 0, 0, 0}}));
    EXPECT_EQ(Family(), ServerFamily::mvsDatasets);
}

TEST_F(WalkerTest, ReadsMvsMembers) {
    SetFamily(ServerFamily::mvsDatasets);
    EXPECT_EQ(Walk(memberHeader +
                   "MEMBER1   01.03 2001/07/19 2001/07/19 14:22    20    20     0 USER\r\n"
                   "LONGNAME  01.03 2001/07/19 2001/07/19 23:59 99999    20     0 USER\r\n"
                   "NINEBYTES 01.03 2001/07/19 2001/07/19 24:60    20    20     0 USER\r\n"
                   "TENBYTES10 1.03 2001/07/19 2001/07/19 14:22    20    20     0 USER\r\n"
                   " BLANK    01.03 2001/07/19 2001/07/19 14:22       20\r\n"
                   "SHORT     01.03 2001/07/19 2001/07/19 14:22    20 \r\n" +
                   std::string(60, 'x')),
              (Entries{{"MEMBER1 ", 0x2AF3, 0x72C0, 0, 20},
                       {"LONGNAME ", 0x2AF3, 23 << 11 | 59 << 5, 0, 99999},
                       {"NINEBYTES ", 0x2AF3, 0, 0, 20},
                       {" ", 0x2AF3, 0x72C0, 0, 20}}));
    EXPECT_EQ(Family(), ServerFamily::mvsMembers);
    // The next listing of the connection may be of datasets again.
    EXPECT_EQ(Walk(datasetHeader).size(), 0u);
    EXPECT_EQ(Family(), ServerFamily::mvsDatasets);
}

TEST_F(WalkerTest, DropsMvsLinesThatAreTooShort) {
    const std::string dataset = "SMS001 3390   2001/07/19  1   15  FB      80  6160  PO  ";
    ASSERT_EQ(dataset.size(), 56u);
    SetFamily(ServerFamily::mvsDatasets);
    EXPECT_EQ(Walk(datasetHeader + dataset), Entries{});
    EXPECT_EQ(Walk(datasetHeader + dataset + "X"), (Entries{{"X", 0x2AF3, 0, 0x10, 0}}));
    const std::string member = "MEMBER1   01.03 2001/07/19 2001/07/19 14:22    20  ";
    ASSERT_EQ(member.size(), 51u);
    EXPECT_EQ(Walk(memberHeader + member).size(), 1u);
    EXPECT_EQ(Walk(memberHeader + member.substr(0, 50)).size(), 0u);
}

TEST_F(WalkerTest, AnMvsListingWithoutAHeaderEndsTheFamily) {
    const std::string listing = "total 5\n-rw-r--r-- 1 u g 9 Jan 1 2001 a\n";
    const Entries expected = {{"a", 0x2A21, 0, 0x8123, 9}};
    SetFamily(ServerFamily::mvsDatasets);
    EXPECT_EQ(Walk(listing), expected);
    EXPECT_EQ(Family(), ServerFamily::unknown);
    EXPECT_EQ(Walk(datasetHeader + listing), expected) << "and for all later listings";
    EXPECT_EQ(Family(), ServerFamily::unknown);
    SetFamily(ServerFamily::mvsMembers);
    EXPECT_EQ(Walk(""), Entries{});
    EXPECT_EQ(Family(), ServerFamily::unknown);
}

TEST_F(WalkerTest, AUnixLineEndsMvs) {
    const std::string member =
        "MEMBER1   01.03 2001/07/19 2001/07/19 14:22    20    20     0 USER\r\n";
    SetFamily(ServerFamily::mvsMembers);
    // Letters of set-id bits, or none at offset 10, are no such line.
    EXPECT_EQ(Walk(memberHeader +
                   "drwxr-xr-t 2 ftp ftp 512 Dec 10 2001 a\r\n"
                   "drwxr-xr-x+ 2 ftp ftp 512 Dec 10 2001 a\r\n"
                   "crwxr-xr-x 2 ftp ftp 512 Dec 10 2001 a\r\n"
                   "drwxr-xr-\r\n" +
                   member)
                  .size(),
              1u);
    EXPECT_EQ(Family(), ServerFamily::mvsMembers);
    EXPECT_EQ(Walk(memberHeader + "drwxr-xr-x 2 ftp ftp 512 Dec 10 2001 a\r\n" + member),
              (Entries{{"a", 0x2B8A, 0, 0x85B7, 512}}));
    EXPECT_EQ(Family(), ServerFamily::unixLike);
}

}  // namespace
}  // namespace quennet
