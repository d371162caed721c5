// Delete, remove, make and rename, as whole conversations.

#include "host/message.h"
#include "support/session_test.h"
#include "support/temp_folder.h"

using namespace quennet;
using testing::Contains;
using testing::Each;
using testing::Eq;

namespace {

struct CommandRow {
    MessageNumber message;
    std::string text;
    std::string wire;  // "COMMAND=REPLY;COMMAND=REPLY"
    i32 result;
    std::string newName = {};
};

constexpr auto removal = MessageNumber::remoteDelete;
constexpr auto dirRemoval = MessageNumber::remoteRemoveDir;
constexpr auto making = MessageNumber::remoteMakeDir;
constexpr auto renaming = MessageNumber::remoteRename;

const CommandRow commandRows[] = {
    {removal, "a b%s", "DELE a b%s=250 ok", 0},
    {removal, "a", "DELE a=450 busy", 4},
    {removal, "a", "DELE a=150 wait\n<- 125 still\n<- 250 ok", 0},
    {removal, "a", "DELE a=500 what", 5},
    {removal, "a\r\nDELE b", "", -1},
    {dirRemoval, "d", "RMD d=250 ok", 0},
    {dirRemoval, "d", "RMD d=500 what;XRMD d=250 ok", 0},
    {dirRemoval, "d", "RMD d=450 busy", 4},
    {dirRemoval, "l", "RMD l=550 no directory;DELE l=250 ok", 0},
    {dirRemoval, "l", "RMD l=550 no directory;DELE l=450 busy", 4},
    {making, "a//b/", "MKD a/b=257 ok", 0},
    {making, "/a/b/c", "MKD /a/b/c=550;MKD /a/b=553;MKD /a=257;MKD /a/b=257;MKD /a/b/c=257", 0},
    {making, "/a/b", "MKD /a/b=550;MKD /a=257;MKD /a/b=550", 2},
    {making, "/a/b", "MKD /a/b=550;MKD /a=550", 2},
    {making, "a\\b", "MKD a\\b=550;MKD a=500;XMKD a=550", 2},
    {making, "a/b", "MKD a/b=550;MKD a=521", 2},
    {making, "a/b", "MKD a/b=450", 2},
    {making, "c:/x", "MKD c:/x=550;MKD c:/=550", 2},
    {making, std::string(pathSize, 'x'), "", 2},
    {renaming, "a", "RNFR a=350;RNTO b=250", 0, "b"},
    {renaming, "a", "RNFR a=350;RNTO b=553", 5, "b"},
    {renaming, "a", "RNFR a=550", 5, "b"},
    {renaming, "a", "RNFR a=250", 2, "b"},
    {renaming, "a", "", -1, "b\n"},
    {renaming, "a\r", "", -1, "b"},
};

std::string ScriptOf(const CommandRow& row) {
    std::string script;
    for (std::size_t begin = 0; begin < row.wire.size();) {
        const std::size_t equals = row.wire.find('=', begin);
        const std::size_t end = std::min(row.wire.find(';', equals), row.wire.size());
        std::string command = row.wire.substr(begin, equals - begin);
        if (const std::size_t slash = command.find('\\'); slash != std::string::npos) {
            command.insert(slash, 1, '\\');
        }
        script += "-> " + command + "\n<- " + row.wire.substr(equals + 1, end - equals - 1) + "\n";
        begin = end + 1;
    }
    return script;
}

class RemoteCommandTest : public SessionTest {
  protected:
    i32 Run(const CommandRow& row) {
        char path[512] = "";
        StoreText(path, sizeof path, row.text.c_str());
        return row.message == renaming
                   ? Host().Send(row.message, path, row.newName.c_str(), session->handle)
                   : Host().Send(row.message, path, session->handle);
    }
};

TEST_F(RemoteCommandTest, EachConversationHasItsResult) {
    std::string script;
    for (const CommandRow& row : commandRows) {
        script += ScriptOf(row);
    }
    LogIn(script + "-> DELE last\nclose\n");
    for (const CommandRow& row : commandRows) {
        session->abortFlag.Store(1);
        EXPECT_EQ(Run(row), row.result) << row.text << ": " << row.wire;
        EXPECT_EQ(session->abortFlag.IsSet(), row.message == renaming && row.wire.empty());
    }
    EXPECT_EQ(Run({removal, "last", "", 0}), -1) << "no answer is no success";
    wire.Finish();
}

TEST_F(RemoteCommandTest, NamesMeanNothingOutsideTheSessionsDirectory) {
    StoreText(session->site.directory, pathSize, "/pub");
    const std::string gone = "-> CWD /pub\n<- 550 gone\n";
    LogIn("-> RMD a\n" + steps::lost + gone + gone +
          "-> CWD /pub\n<- 250 there again\n-> MKD c\n<- 257 ok\n-> DELE d\n<- 250 ok\n");
    // With the 550 as its answer, a DELE of the same name would follow.
    EXPECT_EQ(Run({dirRemoval, "a", "", 0}), -1);
    EXPECT_THAT(Lines(), Contains("The directory could not be entered again."));
    EXPECT_EQ(Run({removal, "b", "", 0}), -1);
    EXPECT_EQ(Run({making, "c", "", 0}), 0);
    EXPECT_EQ(Run({removal, "d", "", 0}), 0);
    wire.Finish();
}

TEST_F(RemoteCommandTest, NamesMeanWhatIsInTheDirectoryThatIsVisited) {
    StoreText(session->site.directory, pathSize, "/pub");
    const std::string repaired = steps::lost + "-> CWD /pub\n<- 250 ok\n-> CWD /a\n";
    LogIn("-> CWD a\n<- 250 ok\n-> PWD\n<- 257 \"/a\"\n-> DELE x\n" + repaired +
          "<- 250 ok\n-> DELE x\n<- 250 done\n-> DELE y\n" + repaired +
          "<- 550 gone\n-> CWD /a\n<- 550 gone\n"
          "-> CWD /pub\n<- 250 ok\n-> PWD\n<- 257 \"/pub\"\n-> DELE z\n" +
          steps::lost + "-> CWD /pub\n<- 250 ok\n-> DELE z\n<- 250 done\n");
    const auto visit = [&](const char* path) {
        return Host().Send(MessageNumber::changeDirSync, path, session->handle, nullptr);
    };
    EXPECT_EQ(visit("a"), 0);
    EXPECT_EQ(Run({removal, "x", "", 0}), 0);
    EXPECT_EQ(Run({removal, "y", "", 0}), -1);
    EXPECT_EQ(Run({dirRemoval, "y", "", 0}), -1);
    EXPECT_EQ(visit("/pub"), 0);
    EXPECT_EQ(Run({removal, "z", "", 0}), 0) << "not in the other one";
    wire.Finish();
}

TEST_F(RemoteCommandTest, WhatAnotherExchangeOwnsIsLeftAlone) {
    LogIn("");
    session->busy.Store(1);
    session->abortFlag.Store(1);
    EXPECT_EQ(Run({removal, "a", "", 0}), -1);
    EXPECT_EQ(Run({dirRemoval, "a", "", 0}), -1);
    EXPECT_EQ(Run({making, "a", "", 0}), 2);
    EXPECT_EQ(Run({renaming, "a", "", 0, "b"}), -1);
    TransferItem item = {};
    TransferRecord running = {};
    session->progress = &running;
    for (const auto message : {MessageNumber::getFile, MessageNumber::putFile}) {
        session->handle->errorText[0] = 0;
        EXPECT_EQ(Host().Send(message, &item, session->handle, 0, 0), 1);
        EXPECT_STREQ(session->handle->errorText, "Command in progress, ignored.");
    }
    EXPECT_EQ(session->progress, &running);
    session->progress = nullptr;
    Host().Send(MessageNumber::rawCommand, 0, session->handle, "NOOP", 1);
    EXPECT_TRUE(session->abortFlag.IsSet());
    EXPECT_FALSE(session->users.IsSet());
    EXPECT_THAT(Lines(), Each(Eq("Command in progress, ignored.")));
    session->busy.Store(0);
    wire.Finish();
}

}  // namespace
