// Uploads as the host asks for them.

#include <cstring>

#include "host/message.h"
#include "support/session_test.h"
#include "support/temp_folder.h"

using namespace quennet;
using namespace steps;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

u32 answer = transferGoesOn;
std::vector<HostWord> questions;

extern "C" void AnswerConfirm(TransferItem* item, HostWord resumeOffset) {
    questions.push_back(resumeOffset);
    PointerFromWord<TransferRecord>(item->record)->status = answer;
}

/// Adds an entry to a list of the host.
void AddEntry(std::string& list, const std::string& name, u16 attributes, u64 size) {
    DirEntry entry = {};
    entry.length = static_cast<u16>(offsetof(DirEntry, name) + name.size() + 1);
    entry.date = 0x5A21;
    entry.time = 0x6000;
    entry.sizeLow = static_cast<u32>(size);
    entry.sizeHigh = static_cast<u32>(size >> 32);
    entry.attributes = attributes;
    list.append(reinterpret_cast<const char*>(&entry), offsetof(DirEntry, name));
    list.append(name).push_back('\0');
}

class PutFileTest : public SessionTest {
  protected:
    PutFileTest() {
        questions.clear();
        answer = transferGoesOn;
        folder.Write("local", bytes);
        wire.Data("bytes", bytes);
        StoreText(item.source, sizeof item.source, (folder / "local").string().c_str());
        StoreText(item.destination, sizeof item.destination, "/some/where/f");
        item.record = WordFromPointer(&record);
    }

    i32 Put(const void* list = nullptr) {
        return Host().Send(MessageNumber::putFile, &item, session->handle,
                           reinterpret_cast<HostWord>(AnswerConfirm), list);
    }

    std::string ErrorText() const { return session->handle->errorText; }

    const std::string bytes = Wire::Pattern(10'000);
    TempFolder folder;
    TransferItem item = {};
    TransferRecord record = {};
};

const std::string stores = passive + "-> STOR f\n";
const std::string takesAll = stores + "<- 150 go\ndata accept\ndata expect bytes\n";

TEST_F(PutFileTest, TheQuestionIsAskedWithBothSidesForAFileOfThatNameAlone) {
    std::string without;
    AddEntry(without, "f", attributeDirectory, 1);
    AddEntry(without, "F", 0, 2);
    std::string list = without;
    AddEntry(list, "f", attributePermissions | 1, u64{5} << 32 | 7);
    AddEntry(list, "f", 0, 3);
    for (std::string* each : {&without, &list}) {
        each->append(2, '\0');
    }
    LogIn(binary + takesAll + "<- 226 one\n" + takesAll + "<- 226 two\n" + takesAll +
          "<- 226 three\n");
    EXPECT_EQ(Put(), 0);
    EXPECT_EQ(Put(without.data()), 0);
    EXPECT_THAT(questions, IsEmpty());
    EXPECT_EQ(u64{item.destinationSize}, 0u);

    answer = 1;
    EXPECT_EQ(Put(list.data()), 0) << "left out";
    answer = transferGoesOnToo;
    EXPECT_EQ(Put(list.data()), 0);
    EXPECT_THAT(questions, ElementsAre(0, 0));
    EXPECT_EQ(u64{item.destinationSize}, u64{5} << 32 | 7);
    EXPECT_EQ(u16{item.destinationDate}, 0x5A21);
    EXPECT_EQ(u16{item.destinationTime}, 0x6000);
    EXPECT_EQ(u32{item.destinationAttributes}, u32{attributePermissions | 1});
    EXPECT_EQ(u64{record.bytesDone}, 3 * bytes.size());
    EXPECT_EQ(session->progress, nullptr);
    wire.Finish();
}

TEST_F(PutFileTest, TheServersWordDecidesHoweverItComes) {
    LogIn(binary + stores + "<- 250 known already\n" +  // nothing to send
          stores + "<- 150 go\n<- 226 early\ndata accept\ndata expect bytes\n" + takesAll +
          "<- 552 quota\n" +        //
          stores + "<- 553 no\n" +  //
          "-> PASV\n<- 502 no\n" +  //
          takesAll + "close\n");
    EXPECT_EQ(Put(), 0);
    EXPECT_EQ(Put(), 0);
    for (const std::string text : {"552 quota", "553 no", "502 no", "The server did not answer."}) {
        session->abortFlag.Store(1);
        EXPECT_EQ(Put(), 1);
        EXPECT_EQ(ErrorText(), text);
        EXPECT_EQ(session->progress, nullptr);
        EXPECT_FALSE(session->abortFlag.IsSet());
    }
    wire.Finish();
}

TEST_F(PutFileTest, ANameThatHoldsALineEndSendsNothing) {
    LogIn("");
    StoreText(item.destination, sizeof item.destination, "dir/a\nDELE b");
    EXPECT_EQ(Put(), 1);
    EXPECT_EQ(ErrorText(), "Line holds a line end, not sent.");
    wire.Finish();
}

TEST_F(PutFileTest, APortThatIsNamedTwiceTakesTwoFiles) {
    folder.Write("local", "line\r\n");
    Wire data;
    const std::string one = "-> PASV\n<- 227 (" +
                            loopback::HostPortText(INADDR_LOOPBACK, data.port()) +
                            ")\n-> STOR f\n<- 150 go\n<- 226 done\n";
    LogIn(binary + one + one);
    data.Start("-> line\nexpect close\naccept\n-> line\nexpect close\n");
    EXPECT_EQ(Put(), 0);
    EXPECT_EQ(Put(), 0);
    data.Finish();
    wire.Finish();
}

}  // namespace
