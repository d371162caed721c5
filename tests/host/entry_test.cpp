#include <cstring>

#include "host/module_test.h"

using namespace quennet;

namespace {

TEST_F(ModuleTest, NumbersWithoutAHandlerGiveMinusOne) {
    for (const int number : {0, -1, 49, 2, 20, 35, 36, 4711}) {
        EXPECT_EQ(Host().Send(static_cast<MessageNumber>(number), 1, 2, 3, 4, 5, 6, 7), -1);
    }
}

TEST_F(ModuleTest, AHandleThatIsNotLiveIsLeftAlone) {
    FtpHandle dead = {};
    dead.tag = liveHandleTag + 1;
    char buffer[pathSize] = "as it was";
    for (FtpHandle* handle : {static_cast<FtpHandle*>(nullptr), &dead}) {
        EXPECT_EQ(Host().Send(MessageNumber::listDirectory, nullptr, handle, nullptr, 0, 0), -1);
        EXPECT_EQ(Host().Send(MessageNumber::changeDirSync, "x", handle, buffer), -1);
        EXPECT_EQ(Host().Send(MessageNumber::getFile, nullptr, handle, nullptr), -1);
        for (const MessageNumber number :
             {MessageNumber::remoteDelete, MessageNumber::remoteRemoveDir,
              MessageNumber::remoteMakeDir}) {
            EXPECT_EQ(Host().Send(number, buffer, handle), -1);
        }
        TransferRecord record = {};
        record.sourceHandle = WordFromPointer(handle);
        EXPECT_EQ(Host().Send(MessageNumber::applyPermissions, &record, 0x8000), -1);
        EXPECT_EQ(u32{record.status}, 0u);
        EXPECT_EQ(Host().Send(MessageNumber::remoteRename, "x", "y", handle), -1);
        EXPECT_EQ(Host().Send(MessageNumber::copyBetweenServers, nullptr, handle, handle), -1);
        EXPECT_EQ(Host().Send(MessageNumber::putFile, nullptr, handle, nullptr, nullptr), -1);
        Host().Send(MessageNumber::rawCommand, 0, handle, "x", 1);
        Host().Send(MessageNumber::gotoDirectory, 0, "x", "y", 1, nullptr, nullptr);
        Host().Send(MessageNumber::getDirectory, handle, buffer, sizeof buffer);
        Host().Send(MessageNumber::changeDirAsync, "x", 1, handle, nullptr);
        Host().Send(MessageNumber::abortCommand, handle);
        Host().Send(MessageNumber::invalidateCache, handle);
        Host().Send(MessageNumber::saveRawListing, nullptr, nullptr, handle);
    }
    EXPECT_STREQ(buffer, "as it was");
}

TEST_F(ModuleTest, TheHostsTextStaysWithItsSessionAndIsNeverCut) {
    wire.Start(
        "<- 220 a\n-> USER anna\n<- 230 b\n-> SYST\n<- 500 c\n-> PWD\n<- 257 \"/pub\"\n"
        "-> QUIT\n<- 221 d\n");
    Connect({.host = WireHost()});
    ASSERT_TRUE(Await("connected 7"));
    const std::string longest(pathSize - 1, 'x');
    char buffer[pathSize] = "";
    Host().Send(MessageNumber::setHostText, SessionOfHandle(), longest.c_str());
    Host().Send(MessageNumber::setHostText, SessionOfHandle(), (longest + "y").c_str());
    Host().Send(MessageNumber::getHostText, SessionOfHandle(), buffer);
    EXPECT_EQ(buffer, longest);
    char directory[4] = "";
    Host().Send(MessageNumber::getDirectory, Handle(), directory, sizeof directory);
    EXPECT_STREQ(directory, "/pu") << "a buffer that is too small is not run over";
    Disconnect();
    wire.Finish();
}

}  // namespace
