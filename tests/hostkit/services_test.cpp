// The services, called through the tables as the module calls them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "hostkit/console.h"
#include "hostkit/host.h"
#include "hostkit/panels.h"
#include "hostkit/services.h"
#include "support/temp_folder.h"

using namespace quennet;
using ::testing::ElementsAre;

namespace {

HostMessage tables;

i32 KeepTables(const HostMessage* message) {
    tables = *message;
    return tablesStored;
}

template <typename Function>
Function Core(CoreService word) {
    const auto* core = PointerFromWord<const CoreServices>(tables.arg1);
    return reinterpret_cast<Function>(core->words[static_cast<u32>(word)]);
}

template <typename Function>
Function Shell(ShellService word) {
    const auto* shell = PointerFromWord<const ShellServices>(tables.arg3);
    return reinterpret_cast<Function>(shell->words[static_cast<u32>(word)]);
}

/// A panel that writes down what it hears.
class ListeningPanel : public hostkit::Panel {
  public:
    void PanelConnected(SiteRecord* site) override { heard.push_back(site->name); }
    void PanelClosed() override { heard.push_back("closed"); }
    void Connected(u16 cookie) override { heard.push_back(std::to_string(cookie)); }
    void ConnectFailed(const std::string& text) override { heard.push_back("failed: " + text); }
    void ReconnectFailed() override { heard.push_back("lost"); }
    void DirectoryChanged(u16, const std::string&) override {}
    bool OwnsHandle(const void* handle) const override { return handle == owned; }
    void BeforeFree() override { heard.push_back("freed"); }
    bool OwnsServerName(const char* name) const override { return name == serverName; }
    hostkit::PasswordFunction PasswordSource() const override { return source; }
    void PasswordCancelled() override { heard.push_back("cancelled"); }

    std::vector<std::string> heard;
    const void* owned = nullptr;
    const char* serverName = nullptr;
    hostkit::PasswordFunction source;
};

}  // namespace

class ServicesTest : public ::testing::Test {
  protected:
    hostkit::HostOptions Options() {
        hostkit::HostOptions options;
        options.settings = settings;
        options.passwordKeyFile = folder / "private/password.key";
        options.consoleLine = [this](WindowNumber, const std::string& line) {
            lines.push_back(line);
        };
        options.showMessage = [this](u32 id, const std::string&) { messages.push_back(id); };
        options.reportError = [this](u32 id, const std::string&) { messages.push_back(id); };
        return options;
    }

    ServicesTest() { host.Attach(KeepTables, nullptr); }

    std::string ProfilePath() {
        char path[260] = "";
        Core<CoreGetProfilePathFunction>(CoreService::getProfilePath)(
            Core<HostWord>(CoreService::profile), path);
        return path;
    }

    TempFolder folder;
    std::shared_ptr<hostkit::SettingsStore> settings =
        std::make_shared<hostkit::FileSettings>(folder / "settings.ini");
    std::vector<std::string> lines;
    std::vector<u32> messages;
    hostkit::MessageLoop loop;
    hostkit::Host host{loop, Options()};
};

TEST_F(ServicesTest, EveryWordThatTheModuleMayCallIsThere) {
    const auto* core = PointerFromWord<const CoreServices>(tables.arg1);
    for (u32 word = 2; word < static_cast<u32>(CoreService::count); ++word) {
        EXPECT_NE(core->words[word], 0u) << word;
    }
    const auto* shell = PointerFromWord<const ShellServices>(tables.arg3);
    for (u32 word = 0; word < static_cast<u32>(ShellService::count); ++word) {
        EXPECT_EQ(shell->words[word] == 0, word == 19 || word == 25) << word;
    }
}

TEST_F(ServicesTest, SectionsComeBackWhole) {
    const std::string file = ProfilePath();
    EXPECT_EQ(file, folder / "settings.ini");
    const auto write = Shell<ShellWriteSettingFunction>(ShellService::writeSetting);
    const auto read = Shell<ShellReadSettingFunction>(ShellService::readSetting);
    const auto readSection = Shell<ShellReadSectionFunction>(ShellService::readSection);
    const auto writeSection = Shell<ShellWriteSectionFunction>(ShellService::writeSection);

    ASSERT_EQ(write("FTP", "M1", "site", file.c_str()), 0);
    ASSERT_EQ(write("FTP", "U1", " user\n", file.c_str()), 0);
    EXPECT_NE(write("FTP", "bad=key", "x", file.c_str()), 0);
    char section[64];
    const u32 length = readSection("FTP", section, sizeof(section), file.c_str());
    EXPECT_EQ(length, std::strlen(section));
    ASSERT_EQ(writeSection("Bak", section, file.c_str()), 0);
    ASSERT_EQ(writeSection("FTP", "", file.c_str()), 0);

    char value[260] = "";
    EXPECT_EQ(read("FTP", "M1", "standard", value, sizeof(value), file.c_str()), 8u);
    EXPECT_STREQ(value, "standard");
    EXPECT_EQ(read("Bak", "U1", "", value, sizeof(value), file.c_str()), 6u);
    EXPECT_STREQ(value, " user\n");
    EXPECT_EQ(read("Bak", "M1", "", value, 3, file.c_str()), 4u);
    EXPECT_STREQ(value, "si");
    // A section that the buffer cuts is told by a length that does not fit it.
    EXPECT_EQ(readSection("Bak", section, length, file.c_str()), length);
    EXPECT_EQ(std::strlen(section), length - 1);
}

TEST_F(ServicesTest, AMessageCanHavePrivateSettings) {
    const auto write = Shell<ShellWriteSettingFunction>(ShellService::writeSetting);
    const auto copy = std::make_shared<hostkit::MemorySettings>();
    {
        const hostkit::PrivateSettings scope(copy);
        EXPECT_EQ(write("FTP", "M1", "private", ProfilePath().c_str()), 0);
    }
    EXPECT_EQ(copy->Text(), "[FTP]\nM1=private\n");
    EXPECT_EQ(write("FTP", "M1", "public", ProfilePath().c_str()), 0);
    EXPECT_EQ(ReadWhole(folder / "settings.ini"), "[FTP]\nM1=public\n");
}

TEST_F(ServicesTest, ConsoleLinesOfAnyLengthGoToTheirConsole) {
    const auto print = Core<CoreConsolePrintFunction>(CoreService::consolePrint);
    std::vector<std::string> own;
    const std::string text(100000, 'x');
    {
        const hostkit::Console console(host, [&](const std::string& line) { own.push_back(line); });
        print(console.Number(), "%s %d", "reply", 220);
        print(console.Number(), "%s", text.c_str());
        print(console.Number(), "%s\x1B%%", "");
        print(12345, "stray");
    }
    EXPECT_THAT(own, ElementsAre("reply 220", text, "\x1B%"));
    EXPECT_THAT(lines, ElementsAre("stray"));
}

TEST_F(ServicesTest, TextsAreCutToTheirBuffer) {
    const auto load = Core<CoreLoadTextFunction>(CoreService::loadText);
    char text[64] = "old";
    load(14305, text, sizeof(text));
    EXPECT_STREQ(text, "&Firewall");
    load(14305, text, 4);
    EXPECT_STREQ(text, "&Fi");
    load(1, text, sizeof(text));
    EXPECT_STREQ(text, "");
    Core<CoreShowMessageFunction>(CoreService::showMessage)(0, 6000);
    Shell<ShellReportErrorFunction>(ShellService::reportError)(nullptr, 6005, 0, 16);
    EXPECT_THAT(messages, ElementsAre(6000u, 6005u));
}

TEST_F(ServicesTest, ListActionsMoveTheSelectedEntryWithItsData) {
    const HWND dialog = CreateWindowExA(0, "#32770", "", 0, 0, 0, 0, 0, nullptr, nullptr,
                                        GetModuleHandleA(nullptr), nullptr);
    ASSERT_NE(dialog, nullptr);
    const HWND list =
        CreateWindowExA(0, "ListBox", "", WS_CHILD, 0, 0, 0, 0, dialog,
                        reinterpret_cast<HMENU>(WPARAM{14301}), GetModuleHandleA(nullptr), nullptr);
    ASSERT_NE(list, nullptr);
    for (const char* text : {"a", "", "c"}) {
        const LRESULT entry = SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
        SendMessageA(list, LB_SETITEMDATA, static_cast<WPARAM>(entry), 100 + entry);
    }
    const auto order = [&] {
        std::string all;
        for (WPARAM entry = 0; entry < 3; ++entry) {
            char text[8] = "";
            SendMessageA(list, LB_GETTEXT, entry, reinterpret_cast<LPARAM>(text));
            all += text + std::to_string(SendMessageA(list, LB_GETITEMDATA, entry, 0)) + " ";
        }
        return all + std::to_string(SendMessageA(list, LB_GETCURSEL, 0, 0));
    };
    const auto up = Shell<ShellListActionFunction>(ShellService::listAction1);
    const auto down = Shell<ShellListActionFunction>(ShellService::listAction2);
    up(dialog, 14301);  // nothing is selected
    EXPECT_EQ(order(), "a100 101 c102 -1");
    SendMessageA(list, LB_SETCURSEL, 1, 0);
    up(dialog, 14301);
    EXPECT_EQ(order(), "101 a100 c102 0");
    up(dialog, 14301);
    EXPECT_EQ(order(), "101 a100 c102 0");
    down(dialog, 14301);
    down(dialog, 14301);
    down(dialog, 14301);
    EXPECT_EQ(order(), "a100 c102 101 2");
    DestroyWindow(dialog);
}

TEST_F(ServicesTest, NewsGoToThePanelThatTheModuleNames) {
    ListeningPanel first;
    ListeningPanel second;
    const u8 firstId = host.GetPanels().Add(first);
    const u8 secondId = host.GetPanels().Add(second);
    SiteRecord site = {};
    std::strcpy(site.name, "site");
    Shell<ShellPanelConnectedFunction>(ShellService::panelConnected)(secondId, &site);
    PostMessageA(host.MainWindow(), notifyMessage, 6, 0);
    PostMessageA(host.MainWindow(), notifyMessage, 5, 0xABCD00 | secondId);
    PostMessageA(host.MainWindow(), notifyMessage, 3, firstId);
    auto* block = static_cast<char*>(Core<CoreAllocFunction>(CoreService::alloc)(4097));
    block[0] = static_cast<char>(firstId);
    std::strcpy(block + 1, "no route");
    PostMessageA(host.MainWindow(), notifyMessage, 2, reinterpret_cast<LPARAM>(block));
    PostMessageA(host.MainWindow(), notifyMessage, 5, 0x77);  // nobody's
    void* handle = Core<CoreAllocFunction>(CoreService::alloc)(100);
    first.owned = handle;
    EXPECT_EQ(Shell<ShellFreeHandleFunction>(ShellService::freeHandle)(handle), nullptr);
    Shell<ShellPanelClosedFunction>(ShellService::panelClosed)(nullptr, secondId);
    loop.WaitUntil([&] { return first.heard.size() == 3; }, std::chrono::seconds(10));
    EXPECT_THAT(first.heard, ElementsAre("freed", "lost", "failed: no route"));
    EXPECT_THAT(second.heard, ElementsAre("site", "closed", "43981"));
    host.GetPanels().Remove(firstId);
    host.GetPanels().Remove(secondId);
}

TEST_F(ServicesTest, PasswordsComeWholeOrNotAtAll) {
    ListeningPanel panel;
    const u8 id = host.GetPanels().Add(panel);
    const char name[] = "server";
    char buffer[80] = "";
    PasswordQuestion question = {WordFromPointer(buffer), sizeof(buffer), WordFromPointer(name)};
    const auto ask = Shell<ShellAskPasswordFunction>(ShellService::askPassword);
    EXPECT_EQ(ask(nullptr, &question), 0);  // nobody can be asked
    EXPECT_TRUE(panel.heard.empty());

    panel.serverName = name;
    std::optional<std::string> answer = std::string(79, 'p');
    panel.source = [&](const std::string& server) {
        EXPECT_EQ(server, name);
        return answer;
    };
    EXPECT_NE(ask(nullptr, &question), 0);
    EXPECT_EQ(buffer, *answer);
    answer->push_back('p');
    EXPECT_EQ(ask(nullptr, &question), 0);
    EXPECT_EQ(std::strlen(buffer), 79u);
    answer.reset();
    EXPECT_EQ(ask(nullptr, &question), 0);
    EXPECT_THAT(panel.heard, ElementsAre("cancelled"));
    host.GetPanels().Remove(id);
}

TEST_F(ServicesTest, ThePasswordKeyIsMadeOnceForItsOwnerAlone) {
    const u32 key = *PointerFromWord<u32>(tables.arg2);
    const auto path = folder / "private/password.key";
    EXPECT_NE(key, 0u);
    const auto permissions = std::filesystem::status(path).permissions();
    EXPECT_EQ(permissions,
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    EXPECT_EQ(*hostkit::Services(Options()).PasswordKey(), key);
    WriteWhole(path, "no key\n");
    EXPECT_EQ(*hostkit::Services(Options()).PasswordKey(), 0u);
    EXPECT_EQ(ReadWhole(path), "no key\n");
}

TEST_F(ServicesTest, PathsAreTidied) {
    const auto prepare = Shell<ShellPreparePathFunction>(ShellService::preparePath);
    struct Case {
        const char* path;
        const char* tidied;
    };
    constexpr Case cases[] = {{"/a//b/", "/a/b"}, {"/", "/"},     {"//", "/"},
                              {"", ""},           {"a/b", "a/b"}, {"a\\", "a\\"}};
    for (const Case& one : cases) {
        char path[16];
        std::strcpy(path, one.path);
        prepare(path);
        EXPECT_STREQ(path, one.tidied);
    }
}
