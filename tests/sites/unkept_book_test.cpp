// Books that can't be kept, dialogs that can't work on one, and the dialog without one.

#include <algorithm>
#include <atomic>
#include <cstring>

#include "host/services.h"
#include "hostkit/services.h"
#include "sites/book_test.h"
#include "sites/connect_dialog.h"
#include "sites/site_store.h"
#include "support/wait.h"

using namespace quennet;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

class UnkeptBookTest : public AnyHostBookTest {};

/// A book of a given length: sites with long directories, and a last one that fills it up.
std::string BookOfLength(std::size_t length) {
    std::string book;
    for (int number = 1; book.size() < length; ++number) {
        const std::string id = std::to_string(number);
        const std::string site = "M" + id + "=" + id + "\nH" + id + "=127.0.0.1:1\nD" + id + "=";
        const std::string rest = "\nO" + id + "=0\n";
        const std::size_t left = length - book.size();
        std::size_t directory = 200;
        if (left < site.size() + rest.size() + 250) {
            directory = left - site.size() - rest.size();
        }
        book += site + std::string(directory, 'd') + rest;
    }
    return book;
}

TEST_P(UnkeptBookTest, ABookThatDoesNotFitIsLeftAsItWas) {
    struct {
        std::size_t length;
        bool adds;
        bool kept;
    } cases[] = {{32764, false, true}, {32764, true, false}, {32767, false, false}};
    Start("");
    for (const auto& row : cases) {
        const std::string book = BookOfLength(row.length);
        ASSERT_EQ(book.size(), row.length);
        WriteWhole(file, WithBook(book, "1"));
        const OpenDialog dialog = Open();
        if (row.adds) {
            dialog.SetField(nameField, "more");
            Click(dialog, addButton);
        }
        Close(dialog, okButton);
        EXPECT_EQ(Book(), book) << row.length;
        const std::vector<std::string> heard = notices.All();
        EXPECT_EQ(std::count(heard.begin(), heard.end(), "message 6006"), row.kept ? 0 : 1);
        EXPECT_NE(holder, 0u);
        Disconnect();
        notices.Clear();
    }
    // One that is too large may be made smaller, and Cancel keeps it whole.
    const std::string book = BookOfLength(60000);
    WriteWhole(file, WithBook(book, "1"));
    OpenDialog dialog = Open();
    dialog.SetField(hostField, "elsewhere");
    dialog.Choose(siteList, 1);
    Close(dialog, cancelButton);
    EXPECT_EQ(Book(), book);
    dialog = Open();
    while (dialog.Entries(siteList).size() > 100) {
        Click(dialog, deleteButton);
    }
    dialog.Choose(siteList, 1);
    Close(dialog, okButton);
    EXPECT_LT(Book().size(), 32767u);
    EXPECT_GT(Book().size(), 20000u);
    EXPECT_THAT(notices.All(), Not(Contains("message 6006")));
}

// A host that fails. What its services do is changed while workers use its table, so that itself
// stays.
constexpr int allWrites = 1'000'000;
std::atomic<int> writesLeft;
std::atomic<bool> writesSections;
std::atomic<u32> longestSection;
ShellServices kept;

template <typename Function>
Function Kept(ShellService word) {
    return reinterpret_cast<Function>(kept.words[static_cast<u32>(word)]);
}

extern "C" void WriteUntilFull(const char* section, const char* key, const char* value,
                               const char* path) {
    if (writesLeft-- > 0) {
        Kept<ShellWriteSettingFunction>(ShellService::writeSetting)(section, key, value, path);
    }
}

extern "C" void WriteSectionOrNot(const char* section, const char* text, const char* path) {
    if (writesSections) {
        Kept<ShellWriteSectionFunction>(ShellService::writeSection)(section, text, path);
    }
}

extern "C" void ReadSectionCut(const char* section, char* buffer, u32 size, const char* path) {
    Kept<ShellReadSectionFunction>(ShellService::readSection)(
        section, buffer, std::min<u32>(size, longestSection), path);
}

void MakeHostFail() {
    auto& services = const_cast<ShellServices&>(*hostTables.shell);
    kept = services;
    writesLeft = allWrites;
    writesSections = true;
    longestSection = UINT32_MAX;
    hostkit::Put(services, ShellService::writeSetting, WriteUntilFull);
    hostkit::Put(services, ShellService::writeSection, WriteSectionOrNot);
    hostkit::Put(services, ShellService::readSection, ReadSectionCut);
}

extern "C" void* NoMemory(HostWord) {
    return nullptr;
}

TEST_P(UnkeptBookTest, AFailedWriteRestoresTheSectionAndLeavesItsCopy) {
    Start(WithBook(threeSites, "one"));
    MakeHostFail();
    // The site on show, and some of the renumbered ones; nothing at all.
    for (const int writes : {6 + 15, 0}) {
        const OpenDialog dialog = Open();
        writesLeft = writes;
        Close(dialog, okButton);
        writesLeft = allWrites;
        EXPECT_EQ(Book(), threeSites);
        EXPECT_THAT(File(), HasSubstr("[Bak]\n" + threeSites));
        EXPECT_THAT(notices.All(), Contains("message 6007"));
        Disconnect();
        notices.Clear();
    }
}

TEST_P(UnkeptBookTest, ABookOfWhichNoCopyCanBeMadeIsNotEmptied) {
    const std::string large = BookOfLength(60000);
    const struct {
        std::string book;
        const char* told;
    } cases[] = {{threeSites, "message 6007"}, {large, "message 6006"}};
    Start("");
    MakeHostFail();
    for (const auto& row : cases) {
        const bool isLarge = row.book == large;
        WriteWhole(file, WithBook(row.book, "1"));
        writesSections = isLarge;
        longestSection = isLarge ? siteSectionSize : UINT32_MAX;
        Close(Open(), cancelButton);
        EXPECT_EQ(Book(), row.book);
        const OpenDialog dialog = Open();
        Click(dialog, deleteButton);
        Close(dialog, okButton);
        EXPECT_GE(Book().size(), row.book.size());
        EXPECT_THAT(notices.All(), Contains(row.told));
        Disconnect();
    }
}

TEST_P(UnkeptBookTest, ADialogWithoutStateCanOnlyEnd) {
    Start(WithBook(threeSites, "one"));
    const CoreServices* real = hostTables.core;
    CoreServices core = *real;
    core.words[static_cast<u32>(CoreService::alloc)] = reinterpret_cast<HostWord>(NoMemory);
    ConnectParams params = {};
    for (const bool withParams : {false, true}) {
        std::atomic<INT_PTR> result = -1;
        hostTables.core = withParams ? &core : real;
        Host().Loop().Post([&] {
            result = DialogBoxParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(14300), nullptr,
                                     ConnectDialogProc,
                                     withParams ? reinterpret_cast<LPARAM>(&params) : 0);
        });
        const OpenDialog dialog = Find(directoryField);
        dialog.SetField(userField, "anonymous");
        for (int id : {addButton, deleteButton, upButton, anonymousBox, firewallBox}) {
            Click(dialog, id);
        }
        EXPECT_THAT(dialog.Entries(siteList), IsEmpty());
        dialog.Press(okButton);
        EXPECT_TRUE(WaitUntil([&] { return result == 0; })) << result;
        hostTables.core = real;
    }
    EXPECT_EQ(File(), WithBook(threeSites, "one"));
}

TEST_P(UnkeptBookTest, FtpAutoFillsTheHostsBuffer) {
    Start();
    struct {
        std::string before;
        std::string typed;
        int button;
        i32 result;
        std::string after;
    } cases[] = {{"", "text", okButton, 1, "text"},
                 {"old", "", okButton, 1, "old"},
                 {"old", "er", cancelButton, 0, "old"},
                 {"", std::string(300, 'x'), okButton, 1, std::string(259, 'x')}};
    for (const auto& row : cases) {
        char buffer[260] = "";
        std::strcpy(buffer, row.before.c_str());
        std::atomic<i32> result = -1;
        Host().Loop().Post([&] {
            result = Host().Send(MessageNumber::autoDialog, 0, GetModuleHandleA(nullptr), buffer);
        });
        const OpenDialog dialog = Find(autoField);
        EXPECT_EQ(dialog.Caption(), " FTP Auto");
        EXPECT_EQ(dialog.Field(autoField), row.before);
        dialog.Type(autoField, row.typed);
        dialog.Press(row.button);
        EXPECT_TRUE(WaitUntil([&] { return result == row.result; })) << result;
        EXPECT_EQ(buffer, row.after);
    }
}

ON_ANY_HOST(UnkeptBookTest);

}  // namespace
