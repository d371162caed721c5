// The loopback server's commands, as a client sees them.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "loopback/server_fixture.h"
#include "support/wire.h"

namespace {

using loopback::ListFormat;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

TEST_F(ServerTest, LetsInWhoHasAnAccount) {
    options.accounts = {{"anna", "secret"}};
    options.anonymous = false;
    Serve();
    RawClient client(server->Port());
    EXPECT_THAT(client.Reply(), StartsWith("220 "));
    EXPECT_THAT(client.Command("LIST"), StartsWith("530 "));
    EXPECT_THAT(client.Command("PASS secret"), StartsWith("503 "));
    for (const char* user : {"anna", "anonymous", "bert"}) {
        EXPECT_THAT(client.Command("USER " + std::string(user)), StartsWith("331 "));
        EXPECT_THAT(client.Command("PASS wrong"), StartsWith("530 "));
    }
    EXPECT_THAT(client.Command("user anna"), StartsWith("331 "));
    EXPECT_THAT(client.Command("pass secret"), StartsWith("230 "));
    EXPECT_EQ(client.Command("PWD"), "257 \"/\" is the current directory");
    EXPECT_THAT(client.Command("QUIT"), StartsWith("221 "));
    EXPECT_EQ(client.Line(), "(closed)");
}

TEST_F(ServerTest, AsksForAnAccountWhereOneIsWanted) {
    options.accountWanted = true;
    Serve();
    RawClient client(server->Port());
    client.Reply();
    client.Command("USER anna");
    EXPECT_THAT(client.Command("PASS x"), StartsWith("332 "));
    EXPECT_THAT(client.Command("PWD"), StartsWith("530 "));
    EXPECT_THAT(client.Command("ACCT anna"), StartsWith("230 "));
}

TEST_F(ServerTest, MovesBytesUnchangedFromAnyOffset) {
    std::string bytes = Wire::Pattern(1'000'000);
    Write(root / "big", bytes);
    Serve();
    RawClient client(server->Port());
    ASSERT_TRUE(client.Login());
    EXPECT_EQ(client.Command("SIZE big"), "213 1000000");
    EXPECT_EQ(client.Fetch("RETR big"), bytes);
    EXPECT_THAT(client.lastReplies, MatchesRegex("150 .*\n226 .*"));
    EXPECT_THAT(client.Command("REST 999990"), StartsWith("350 "));
    EXPECT_EQ(client.Fetch("RETR big"), bytes.substr(999'990));
    EXPECT_EQ(client.Fetch("RETR big"), bytes) << "REST counts once";

    EXPECT_THAT(client.Store("STOR copy", bytes), StartsWith("226 "));
    EXPECT_EQ(ReadWhole(root / "copy"), bytes);
    EXPECT_THAT(client.Store("STOR copy", "abcdef"), StartsWith("226 "));
    client.Command("REST 2");
    EXPECT_THAT(client.Store("STOR copy", "XY"), StartsWith("226 "));
    EXPECT_THAT(client.Store("APPE copy", "gh"), StartsWith("226 "));
    EXPECT_EQ(ReadWhole(root / "copy"), "abXYefgh");

    ASSERT_TRUE(client.OpenActive());
    EXPECT_THAT(client.Command("RETR copy"), StartsWith("150 "));
    ASSERT_TRUE(client.AcceptActive());
    EXPECT_EQ(client.ReadData(), "abXYefgh");
    EXPECT_THAT(client.Reply(), StartsWith("226 "));
    EXPECT_THAT(client.Command("RETR copy"), StartsWith("425 "));
}

TEST_F(ServerTest, ChangesTheFolderUnlessItIsForbidden) {
    Write(root / "file", "x");
    Serve();
    RawClient client(server->Port());
    ASSERT_TRUE(client.Login());
    EXPECT_EQ(client.Command("MKD a \"b\""), "257 \"/a \"\"b\"\"\" made");
    EXPECT_THAT(client.Command("CWD a \"b\""), StartsWith("250 "));
    EXPECT_THAT(client.Command("RNFR /file"), StartsWith("350 "));
    EXPECT_THAT(client.Command("RNTO moved"), StartsWith("250 "));
    EXPECT_THAT(client.Command("RNTO again"), StartsWith("503 "));
    EXPECT_THAT(client.Command("SITE CHMOD 640 moved"), StartsWith("200 "));
    struct stat status {};
    ASSERT_EQ(stat((root / "a \"b\"" / "moved").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0640u);
    EXPECT_THAT(client.Command("XCWD .."), StartsWith("250 "));
    EXPECT_THAT(client.Command("RMD a \"b\""), StartsWith("550 "));
    EXPECT_THAT(client.Command("DELE a \"b\"/moved"), StartsWith("250 "));
    EXPECT_THAT(client.Command("XRMD a \"b\""), StartsWith("250 "));
    EXPECT_TRUE(std::filesystem::is_empty(root));

    options.writable = false;
    RawClient reader((Serve(), server->Port()));
    ASSERT_TRUE(reader.Login());
    for (const char* line :
         {"MKD x", "STOR x", "APPE x", "DELE x", "RMD x", "RNFR x", "SITE CHMOD 777 x"}) {
        EXPECT_THAT(reader.Command(line), StartsWith("550 ")) << line;
    }
}

TEST_F(ServerTest, NeverLeavesItsFolder) {
    namespace fs = std::filesystem;
    Write(base / "outside", "secret");
    Write(root / "in/file", "inside");
    fs::create_symlink("../outside", root / "up");
    fs::create_symlink(base / "outside", root / "absolute");
    fs::create_symlink("..", root / "parent");
    fs::create_symlink("in/../../outside", root / "winding");
    fs::create_symlink("loop", root / "loop");
    fs::create_symlink("in/file", root / "good");
    fs::create_symlink("../in", root / "in" / "self");
    fs::create_symlink("../new", root / "dangling");
    Serve();
    RawClient client(server->Port());
    ASSERT_TRUE(client.Login());
    for (const char* name : {"up", "absolute", "parent/outside", "winding", "loop", "../outside",
                             "/../outside", "in/../../outside", "in/self/../../outside"}) {
        EXPECT_EQ(client.Fetch("RETR " + std::string(name)), "") << name;
        EXPECT_THAT(client.lastReplies, StartsWith("550 ")) << name;
        EXPECT_THAT(client.Command("SIZE " + std::string(name)), StartsWith("550 ")) << name;
        EXPECT_THAT(client.Command("SITE CHMOD 777 " + std::string(name)), StartsWith("550 "));
    }
    for (const char* name : {"up", "absolute", "parent/x", "winding", "dangling"}) {
        EXPECT_THAT(client.Store("STOR " + std::string(name), "evil"), StartsWith("550 ")) << name;
    }
    EXPECT_THAT(client.Command("CWD parent"), StartsWith("550 "));
    client.Command("RNFR in/file");
    EXPECT_THAT(client.Command("RNTO parent/file"), StartsWith("550 "));
    EXPECT_EQ(ReadWhole(base / "outside"), "secret");
    EXPECT_EQ(std::distance(fs::directory_iterator(base), {}), 2);

    EXPECT_EQ(client.Fetch("RETR good"), "inside");
    EXPECT_EQ(client.Fetch("RETR in/self/self/file"), "inside");
    EXPECT_THAT(client.Command("CWD ../../.."), StartsWith("250 "));
    EXPECT_EQ(client.Command("XPWD"), "257 \"/\" is the current directory");
    EXPECT_THAT(client.Command("CDUP"), StartsWith("250 "));
    EXPECT_THAT(client.Command("DELE up"), StartsWith("250 ")) << "the link itself";
    EXPECT_EQ(ReadWhole(base / "outside"), "secret");
}

TEST_F(ServerTest, ListsInTheFormatOfEachDirectory) {
    namespace fs = std::filesystem;
    for (const char* directory : {"unix", "dos", "os2", "mvs", "members"}) {
        Write(root / directory / "FILE", "1234567");
        Write(root / directory / ".hidden", "");
        fs::create_directory(root / directory / "my dir");
    }
    fs::create_symlink("FILE", root / "unix" / "link");
    Write(root / "unix" / "two\nlines", "");
    options.formats = {
        {"/dos", ListFormat::dos}, {"os2/", ListFormat::os2}, {"/mvs", ListFormat::mvs}};
    Serve();
    server->SetFormat("/members", ListFormat::mvsMembers);
    RawClient client(server->Port());
    ASSERT_TRUE(client.Login());

    EXPECT_THAT(
        client.Fetch("LIST unix"),
        MatchesRegex("total 0\r\n"
                     "-rw-r--r--   1 ftp      ftp             7 ... .. ..:.. FILE\r\n"
                     "l.........   1 ftp      ftp             4 ... .. ..:.. link -> FILE\r\n"
                     "d.........   2 ftp      ftp      +[0-9]+ ... .. ..:.. my dir\r\n"
                     "-rw-r--r--   1 ftp      ftp             0 ... .. ..:.. two.lines\r\n"));
    EXPECT_THAT(client.Fetch("LIST -la unix"),
                AllOf(HasSubstr(" .\r\n"), HasSubstr(" ..\r\n"), HasSubstr(" .hidden\r\n")));
    // Names of DOS begin at offset 39, of data sets at 56; sizes of members end at 48.
    EXPECT_THAT(client.Fetch("LIST dos"),
                MatchesRegex("..-..-..  ..:..[AP]M                    7 FILE\r\n"
                             "..-..-..  ..:..[AP]M       <DIR>          my dir\r\n"));
    EXPECT_THAT(client.Fetch("LIST os2"),
                MatchesRegex("                7      A          ..-..-..   ..:..  FILE\r\n"
                             "                0           DIR   ..-..-..   ..:..  my dir\r\n"));
    EXPECT_THAT(client.Fetch("LIST mvs"),
                MatchesRegex("Volume .* Lrecl .*\r\n"
                             "SMS001 3390   ..../../..  1   15  FB      80      7 PS  FILE\r\n"
                             "SMS001 3390   ..../../..  1   15  FB      80   6160 PO  my dir\r\n"));
    EXPECT_THAT(
        client.Fetch("LIST members"),
        MatchesRegex(" Name .*\r\nFILE      01.00 ..../../.. ..../../.. ..:..     7 .*\r\n"));
    EXPECT_EQ(client.Fetch("NLST dos"), "FILE\r\nmy dir\r\n");
    EXPECT_EQ(client.Fetch("LIST nowhere"), "");
    EXPECT_THAT(client.lastReplies, StartsWith("550 "));
}

TEST_F(ServerTest, FormatsDatesAndSizesAtTheirEdges) {
    using loopback::FormatListing;
    using loopback::ListedFile;
    constexpr std::time_t noon = 1026734700;  // 15 July 2002, 12:05
    ListedFile file{"NAME", "", S_IFREG | 0755, 1, 5'000'000'000, noon};
    EXPECT_THAT(FormatListing(ListFormat::posix, {file}, noon),
                HasSubstr("-rwxr-xr-x   1 ftp      ftp      5000000000 Jul 15 12:05 NAME\r\n"));
    EXPECT_THAT(FormatListing(ListFormat::posix, {file}, noon + 200 * 86400),
                HasSubstr(" Jul 15  2002 NAME"));
    EXPECT_THAT(FormatListing(ListFormat::dos, {file}, noon),
                "07-15-02  12:05PM           5000000000 NAME\r\n");
    file.modified -= 12 * 3600;
    EXPECT_THAT(FormatListing(ListFormat::dos, {file}, noon), StartsWith("07-15-02  12:05AM"));
    EXPECT_THAT(FormatListing(ListFormat::mvs, {file}, noon),
                HasSubstr("SMS001 3390   2002/07/15  1   15  FB      80 999999 PS  NAME\r\n"));
    EXPECT_THAT(FormatListing(ListFormat::mvsMembers, {file}, noon),
                HasSubstr(" 00:05 99999 99999 "));
}

TEST_F(ServerTest, TakesNoAddressButTheClients) {
    Serve();
    RawClient client(server->Port());
    ASSERT_TRUE(client.Login());
    for (const char* wrong : {"127,0,0,2,4,1", "10,0,0,1,4,1", "127,0,0,1,0,0", "127,0,0,1,4",
                              "127,0,0,1,4,1,5", "127,0,0,1,4,256", "a", "127,0,0,1,4,-1"}) {
        EXPECT_THAT(client.Command("PORT " + std::string(wrong)), StartsWith("50")) << wrong;
    }
    options.foreignPorts = true;
    RawClient foreign((Serve(), server->Port()));
    ASSERT_TRUE(foreign.Login());
    EXPECT_THAT(foreign.Command("PORT 127,0,0,2,4,1"), StartsWith("200 "));
    EXPECT_THAT(foreign.Command("PORT 10,0,0,1,4,1"), StartsWith("500 "));
}

TEST_F(ServerTest, SurvivesWhateverIsSaid) {
    Serve();
    RawClient client(server->Port());
    client.Reply();
    std::string garbage;
    for (unsigned place = 0; place < 50'000; ++place) {
        garbage += Wire::Pattern(1, place)[0] == '\n' ? 'x' : Wire::Pattern(1, place)[0];
    }
    EXPECT_THAT(client.Command(garbage), StartsWith("500 "));
    EXPECT_THAT(client.Command(std::string("USER a\0b", 8)), StartsWith("501 "));
    EXPECT_THAT(client.Command(""), StartsWith("500 "));
    client.SendBytes("USER a\nPASS b\nPWD\n");
    EXPECT_THAT(client.Reply(), StartsWith("331 "));
    EXPECT_THAT(client.Reply(), StartsWith("230 "));
    EXPECT_THAT(client.Reply(), StartsWith("257 "));
    for (const char* line :
         {"TYPE X", "REST -1", "REST 99999999999999999999", "SITE", "SITE CHMOD", "SITE CHMOD 9 x",
          "SITE CHMOD 644", "SITE IDLE", "EPSV", "CWD", "STRU R", "MODE B"}) {
        EXPECT_THAT(client.Command(line), StartsWith("50")) << line;
    }
    EXPECT_THAT(client.Command("CWD " + std::string(4000, 'a')), StartsWith("550 "));
    std::string deep;
    for (int level = 0; level < 150; ++level) {
        client.Command("MKD " + deep + "d");
        deep += "d/";
    }
    EXPECT_THAT(client.Command("CWD " + deep), StartsWith("550 "));
    mkfifo((root / "pipe").c_str(), 0644);
    client.Fetch("RETR pipe");
    EXPECT_THAT(client.lastReplies, StartsWith("550 "));
    EXPECT_THAT(client.Store("STOR pipe", "x"), StartsWith("550 "));
    EXPECT_THAT(client.Command("NOOP"), StartsWith("200 "));
}

TEST_F(ServerTest, EndsIdleAndSurplusConnections) {
    options.idleSeconds = 1;
    options.clientLimit = 2;
    Serve();
    RawClient first(server->Port());
    RawClient second(server->Port());
    first.Reply();
    second.Reply();
    RawClient third(server->Port());
    EXPECT_THAT(third.Reply(), StartsWith("421 "));
    EXPECT_EQ(third.Line(), "(closed)");
    EXPECT_THAT(first.Line(), StartsWith("421 "));
    EXPECT_EQ(first.Line(), "(closed)");
    EXPECT_THAT(second.Line(), StartsWith("421 "));
}

int OpenDescriptors() {
    return static_cast<int>(
        std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

TEST_F(ServerTest, StopEndsEverythingAndLeavesNothingOpen) {
    Write(root / "big", Wire::Pattern(10'000'000));
    int before = OpenDescriptors();
    {
        Serve();
        server->Add({.command = "STOR", .action = loopback::FaultAction::stallData});
        RawClient idle(server->Port());
        RawClient downloads(server->Port());
        RawClient uploads(server->Port());
        RawClient waits(server->Port());
        ASSERT_TRUE(idle.Login() && downloads.Login() && uploads.Login() && waits.Login());
        ASSERT_TRUE(downloads.OpenPassive() && uploads.OpenPassive() && waits.OpenActive());
        EXPECT_THAT(downloads.Command("RETR big"), StartsWith("150 "));
        EXPECT_THAT(uploads.Command("STOR new"), StartsWith("150 "));
        EXPECT_THAT(waits.Command("RETR big"), StartsWith("150 "));
        auto start = std::chrono::steady_clock::now();
        server->Stop();
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
        EXPECT_THAT(idle.Line(), StartsWith("("));
        EXPECT_FALSE(RawClient(server->Port()).Connected());
        server.reset();
    }
    EXPECT_EQ(OpenDescriptors(), before);
}

}  // namespace
