// quennet connect.

#include <cctype>
#include <set>

#include "app/screen_program_test.h"
#include "hostkit/texts.h"
#include "support/wait.h"

namespace {

namespace fs = std::filesystem;
using loopback::FaultAction;
using testing::HasSubstr;
using testing::Not;

constexpr const char* bookPath = ".config/quennet/settings.ini";
// With a key of 1, W1 is "secret".
constexpr const char* examples =
    "; kept by hand\r\n[Other]\r\nM1 = untouched \r\n\r\n[FTP]\nM1=Alpha\nH1=ftp.example.org\n"
    "U1=anna\nW1=7263657400007466\nD1=/pub\nO1=10\nM2=Beta\nH2=ftp.example.net:2121\n"
    "U2=anonymous\nW2=anna@example.org\nO2=9\nM3=Gamma\nH3=ftp.example.com\nU3=bert\nO3=0\n"
    "[Quennet]\nFTP=Beta\nMAILADDR=anna@example.org";

class ConnectTest : public ScreenProgramTest {
  protected:
    ConnectTest() {
        fs::create_directories(home / ".config/quennet");
        home.Write(".config/quennet/password-key", "00000001\n");
    }
    std::string Book() const { return home.Read(bookPath); }

    /// The field gets the focus and the text instead of its own.
    static void Fill(const TmuxTerminal& terminal, const char* mark, const std::string& text) {
        terminal.Press({mark, "End", "S-Home", "Delete"});
        terminal.Send(text);
    }
    /// From anywhere in the dialog: the list stands in front of the name.
    static void PressInList(const TmuxTerminal& terminal, const std::vector<std::string>& keys) {
        terminal.Press({"M-n", "BTab"});
        terminal.Press(keys);
    }
};

TEST_F(ConnectTest, SitesAreEditedAddedMovedAndDeleted) {
    home.Write(bookPath, examples);
    const TmuxTerminal cancelled(80, 24, Program("connect"));
    cancelled.ExpectScreen("connect-80x24");
    cancelled.Press({"Escape"});
    EXPECT_SHOWS(cancelled, "quennet: cancelled\n");
    EXPECT_SHOWS(cancelled, "status 3");
    const TmuxTerminal terminal(80, 30, Program("connect"));
    terminal.ExpectScreen("connect");
    PressInList(terminal, {"Home"});
    Fill(terminal, "M-i", "/pub/music");
    terminal.Press({"M-f"});
    EXPECT_SHOWS(terminal, "USER User@Host / Password");
    terminal.Press({"BTab", "BTab", "BTab", "BTab", "Down", "Down"});
    Fill(terminal, "M-h", "gate.example.org");
    Fill(terminal, "M-u", "gate");
    Fill(terminal, "M-w", "hidden");
    terminal.ExpectScreen("connect-firewall");
    terminal.Press({"Enter"});
    EXPECT_SHOWS(terminal, "[x] Firewall");
    PressInList(terminal, {"End", "Up"});
    EXPECT_SHOWS(terminal, "ftp.example.net:2121");
    Fill(terminal, "M-n", "Delta");
    terminal.Press({"M-a"});
    PressInList(terminal, {"End"});
    terminal.Press({"M-d"});
    PressInList(terminal, {"Home"});
    terminal.Press({"M-o"});
    terminal.ExpectScreen("connect-edited");
    EXPECT_EQ(Book(), examples);
    PressInList(terminal, {"Home"});
    EXPECT_SHOWS(terminal, "Name:          Delta");
    Fill(terminal, "M-h", "127.0.0.1:1");  // nobody is there
    terminal.Press({"Enter"});
    EXPECT_SHOWS(terminal, "status 3");
    EXPECT_THAT(terminal.Screen(), HasSubstr("failed"));
    EXPECT_EQ(Book(),
              "; kept by hand\r\n[Other]\r\nM1 = untouched \r\n\r\n[FTP]\nM1=Delta\r\n"
              "H1=127.0.0.1:1\r\nU1=anonymous\r\nO1=9\r\nM2=Alpha\r\nH2=ftp.example.org\r\n"
              "U2=anna\r\nW2=7263657400007466\r\nD2=/pub/music\r\nO2=14\r\n"
              "G2=gate.example.org\r\nN2=gate\r\nP2=6464696900006E66\r\nT2=3\r\nM3=Beta\r\n"
              "H3=ftp.example.net:2121\r\nU3=anonymous\r\nO3=9\r\n[Quennet]\nFTP=Delta\n"
              "MAILADDR=anna@example.org");
}

TEST_F(ConnectTest, OkConnectsAndKeepsTheBookAndAnyKeyDisconnects) {
    options.accounts = {{"anna", "secret"}};
    Make("pub/song", "1234");
    Serve();
    const std::string host = "127.0.0.1:" + std::to_string(server->Port());
    {
        const TmuxTerminal terminal(80, 30, Program("connect"));
        EXPECT_SHOWS(terminal, "Save password");
        terminal.Press({"Here", "Enter"});
        EXPECT_SHOWS(terminal, "wants the name of a host");
        terminal.Press({"Enter"});
        Fill(terminal, "M-h", "ftp://" + host);
        Fill(terminal, "M-u", "anna");
        Fill(terminal, "M-w", "secret");
        Fill(terminal, "M-i", "/pub");
        terminal.Press({"M-v", "M-p", "Enter"});
        EXPECT_SHOWS(terminal, "Connected, in /pub. Any key disconnects.");
        for (const char* text : {"220 Loopback server ready", "USER anna", "song"}) {
            EXPECT_THAT(terminal.Screen(), HasSubstr(text));
        }
        EXPECT_THAT(terminal.Screen("-S -"), Not(HasSubstr("secret")));
        terminal.Press({"x"});
        EXPECT_SHOWS(terminal, "status 0");
    }
    EXPECT_TRUE(Heard("QUIT"));
    EXPECT_EQ(Book(), "[FTP]\nM1=Here\nH1=ftp://" + host +
                          "\nU1=anna\nW1=7263657400007466\nD1=/pub\nO1=10\n[Quennet]\nFTP=Here\n");
    EXPECT_EQ(Quennet(home, {"ls", "site:here"}).output, "song\n");

    // What the server says meanwhile waits below a message.
    fs::permissions(home / bookPath, fs::perms::owner_read);
    {
        const TmuxTerminal terminal(80, 24, Program("connect"));
        EXPECT_SHOWS(terminal, "Here");
        EXPECT_NE(server->Commands().back(), "PWD");
        terminal.Press({"M-n", "Z", "Enter"});
        EXPECT_SHOWS(terminal, "could not be saved");
        EXPECT_TRUE(WaitUntil([&] { return server->Commands().back() == "PWD"; }));
        EXPECT_THAT(terminal.Screen(), Not(HasSubstr("220")));
        terminal.Press({"Enter"});
        EXPECT_SHOWS(terminal, "Connected, in /pub. Any key disconnects.");
        EXPECT_THAT(terminal.Screen(), HasSubstr("220 Loopback server ready"));
    }
    fs::permissions(home / bookPath, fs::perms::owner_read | fs::perms::owner_write);

    // Nobody waits for a server any more when the terminal has gone.
    server->Add({"LIST", 0, FaultAction::stallData, "", 0, {}});
    TmuxTerminal again(80, 30, Program("connect"));
    EXPECT_SHOWS(again, "Here");
    again.Press({"Enter"});
    EXPECT_SHOWS(again, "LIST");
    EXPECT_TRUE(again.HangUp());
}

TEST_F(ConnectTest, ASmallTerminalShowsTheDialogInPartsAndOneThatGoesAwayCancelsIt) {
    home.Write(bookPath, examples);
    TmuxTerminal terminal(20, 5, Program("connect"));
    EXPECT_SHOWS(terminal, "Beta");
    terminal.Press({"M-i"});
    terminal.Send("/deep");
    EXPECT_SHOWS(terminal, "/deep");
    terminal.ExpectScreen("connect-20x5");
    for (const auto& [columns, rows] : {std::pair(3, 2), {200, 60}, {20, 5}, {80, 30}}) {
        terminal.Resize(columns, rows);
    }
    EXPECT_SHOWS(terminal, "/deep____");
    EXPECT_SHOWS(terminal, "Cancel     ] \xE2\x94\x82\n \xE2\x94\x82   ") << "the rows are back";
    terminal.Press({"M-a", "M-f"});
    EXPECT_SHOWS(terminal, "USER User@Host / Password");
    EXPECT_TRUE(terminal.HangUp());
    EXPECT_EQ(Book(), examples);
}

TEST(Connect, WantsATerminal) {
    const TempFolder home;
    for (const char* streams : {"</dev/null", ">connected", "</dev/null >/dev/null"}) {
        const RunResult result = Shell(home, std::string("\"$0\" connect ") + streams);
        EXPECT_EQ(result.status, exitFailed);
        EXPECT_EQ(result.errors, "quennet: the dialog wants a terminal\n");
        EXPECT_EQ(result.output, "");
    }
}

TEST(Connect, EachControlOfADialogHasALetterOfItsOwn) {
    const std::vector<unsigned> dialogs[] = {
        {14314, 14318, 14315, 14316, 14317, 14303, 14304, 14305, 14306, 99, 2, 97, 96, 14535,
         14536},
        {14312, 14315, 14316, 99, 2},
        {14321, 99, 2},
        {14351, 99, 2},
    };
    for (const auto& dialog : dialogs) {
        std::set<int> letters;
        for (const unsigned id : dialog) {
            const std::string text = hostkit::TextOfId(id);
            if (const std::size_t mark = text.find('&'); mark != text.npos) {
                EXPECT_TRUE(letters.insert(std::tolower(text.at(mark + 1))).second) << text;
            }
        }
    }
}

}  // namespace
