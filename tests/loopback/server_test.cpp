// What the loopback server must never do, whoever is its client. That its commands work is proved
// by the tests of the module, which has no other server in most of them.

#include "loopback/server.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <memory>
#include <optional>

#include "loopback/raw_client.h"
#include "support/temp_folder.h"

namespace {

namespace fs = std::filesystem;
using testing::StartsWith;

class ServerTest : public testing::Test {
  protected:
    ServerTest() {
        fs::create_directory(root);
        options.root = root;
    }

    std::unique_ptr<RawClient> Client() {
        server.emplace(options);
        auto client = std::make_unique<RawClient>(server->Port());
        client->Line();
        client->Command("USER anonymous");
        client->Command("PASS me@here");
        return client;
    }

    /// The first reply to a command that wants a data connection.
    static std::string Transfer(RawClient& client, const std::string& line) {
        client.Command("PASV");
        return client.Command(line);
    }

    TempFolder folder;
    const fs::path base = folder / "";  // what a client must never see, except for
    const fs::path root = base / "root";
    loopback::Options options;
    std::optional<loopback::Server> server;
};

TEST_F(ServerTest, NeverLeavesItsFolder) {
    fs::create_directory(root / "in");
    WriteWhole(base / "outside", "secret");
    WriteWhole(root / "in/file", "inside");
    fs::create_symlink("../outside", root / "up");
    fs::create_symlink(base / "outside", root / "absolute");
    fs::create_symlink("..", root / "parent");
    fs::create_symlink("in/../../outside", root / "winding");
    fs::create_symlink("loop", root / "loop");
    fs::create_symlink("in/file", root / "good");
    fs::create_symlink("../in", root / "in" / "self");
    fs::create_symlink("../new", root / "dangling");
    const auto client = Client();
    for (const char* name : {"up", "absolute", "parent/outside", "winding", "loop", "../outside",
                             "/../outside", "in/../../outside", "in/self/../../outside"}) {
        EXPECT_THAT(Transfer(*client, "RETR " + std::string(name)), StartsWith("550 ")) << name;
        EXPECT_THAT(client->Command("SIZE " + std::string(name)), StartsWith("550 ")) << name;
        EXPECT_THAT(client->Command("SITE CHMOD 777 " + std::string(name)), StartsWith("550 "));
    }
    for (const char* name : {"up", "absolute", "parent/x", "winding", "dangling"}) {
        EXPECT_THAT(Transfer(*client, "STOR " + std::string(name)), StartsWith("550 ")) << name;
    }
    EXPECT_THAT(client->Command("CWD parent"), StartsWith("550 "));
    client->Command("RNFR in/file");
    EXPECT_THAT(client->Command("RNTO parent/file"), StartsWith("550 "));
    EXPECT_EQ(ReadWhole(base / "outside"), "secret");
    EXPECT_EQ(std::distance(fs::directory_iterator(base), {}), 2);

    EXPECT_EQ(client->Command("SIZE good"), "213 6");
    EXPECT_EQ(client->Command("SIZE in/self/self/file"), "213 6");
    EXPECT_THAT(client->Command("CWD ../../.."), StartsWith("250 "));
    EXPECT_EQ(client->Command("XPWD"), "257 \"/\" is the current directory");
    EXPECT_THAT(client->Command("DELE up"), StartsWith("250 ")) << "the link itself";
    EXPECT_EQ(ReadWhole(base / "outside"), "secret");
}

TEST_F(ServerTest, ChangesNothingWhereThatIsForbidden) {
    options.writable = false;
    WriteWhole(root / "x", "theirs");
    const auto client = Client();
    for (const char* line :
         {"MKD d", "STOR x", "APPE x", "DELE x", "RMD x", "RNFR x", "SITE CHMOD 777 x"}) {
        EXPECT_THAT(client->Command(line), StartsWith("550 ")) << line;
    }
}

TEST_F(ServerTest, TakesNoAddressButTheClients) {
    const auto client = Client();
    for (const char* wrong : {"127,0,0,2,4,1", "10,0,0,1,4,1", "127,0,0,1,0,0", "127,0,0,1,4",
                              "127,0,0,1,4,1,5", "127,0,0,1,4,256", "a", "127,0,0,1,4,-1"}) {
        EXPECT_THAT(client->Command("PORT " + std::string(wrong)), StartsWith("50")) << wrong;
    }
}

TEST_F(ServerTest, SurvivesWhateverIsSaid) {
    const auto client = Client();
    EXPECT_THAT(client->Command(std::string(50'000, '\xFF')), StartsWith("500 "));
    EXPECT_THAT(client->Command(std::string("USER a\0b", 8)), StartsWith("501 "));
    for (const char* line :
         {"", "TYPE X", "REST -1", "REST 99999999999999999999", "SITE", "SITE CHMOD",
          "SITE CHMOD 9 x", "SITE CHMOD 644", "EPSV", "CWD", "STRU R", "MODE B"}) {
        EXPECT_THAT(client->Command(line), StartsWith("50")) << line;
    }
    EXPECT_THAT(client->Command("CWD " + std::string(4000, 'a')), StartsWith("550 "));
    mkfifo((root / "pipe").c_str(), 0644);
    for (const char* line : {"RETR pipe", "STOR pipe"}) {
        EXPECT_THAT(Transfer(*client, line), StartsWith("550 ")) << line;
    }
    EXPECT_THAT(client->Command("NOOP"), StartsWith("200 "));
}

}  // namespace
