#pragma once
// A person at the connection dialog, and the settings file beneath it.

#include <atomic>
#include <optional>
#include <string>

#include "support/dialog_user.h"
#include "support/module_test.h"
#include "support/temp_folder.h"

// Controls of dialog 14300.
constexpr int siteList = 14301;
constexpr int nameField = 14202;
constexpr int hostField = 14203;
constexpr int userField = 14302;
constexpr int passwordField = 15202;
constexpr int directoryField = 14204;
constexpr int anonymousBox = 14303;
constexpr int saveBox = 14304;
constexpr int firewallBox = 14305;
constexpr int passiveBox = 14306;
constexpr int addButton = 97;
constexpr int deleteButton = 96;
constexpr int upButton = 14535;
constexpr int downButton = 14536;
// Of the other dialogs.
constexpr int mailField = 14322;
constexpr int firewallLabel = 14312;
constexpr int autoField = 14352;

constexpr int okButton = 99;
constexpr int cancelButton = 2;

/// How a host does what nothing is promised of: what its settings services give as a result,
/// nothing by default, and whether it hands a section's text out as the platform's profile calls
/// do, each line ended by a NUL.
struct SettingsHost {
    const char* name = "NoResult";
    std::optional<quennet::i32> result;
    bool isProfile = false;
};

/// The key word of these tests is 0x12345678.
class BookTest : public ModuleTest {
  protected:
    /// Writes the settings file, unless there is to be none, and starts the host.
    void Start(const std::string& settings);
    void Start();

    /// Sends message 24 and waits for its dialog.
    OpenDialog Open();
    /// Waits until a dialog with that control takes input.
    OpenDialog Find(int control);
    /// Presses a button of the connection dialog, and waits until the message has returned.
    void Close(const OpenDialog& dialog, int button);
    /// Waits until the message has returned.
    void AwaitEnd();

    std::string File() const { return ReadWhole(file); }
    /// The section of the sites as it stands in the file.
    std::string Book() const;
    /// What the last dialog filled, while its connection stands.
    const quennet::SiteRecord& Site() const;

    TempFolder folder;
    std::filesystem::path file = folder / "settings.ini";
    SettingsHost settingsHost;

  private:
    std::atomic<bool> returned_ = true;
};

/// The same on hosts of every kind.
class AnyHostBookTest : public BookTest, public testing::WithParamInterface<SettingsHost> {
  protected:
    AnyHostBookTest() { settingsHost = GetParam(); }
};

inline const SettingsHost settingsHosts[] = {
    {}, {"Zero", 0}, {"One", 1}, {"Profile", 0x7FEE1234, true}};

#define ON_ANY_HOST(suite)                                                   \
    INSTANTIATE_TEST_SUITE_P(Hosts, suite, testing::ValuesIn(settingsHosts), \
                             [](const auto& info) { return info.param.name; })

/// Clicks a button, and returns when that was handled.
inline void Click(const OpenDialog& dialog, int button) {
    SendDlgItemMessageA(dialog.Window(), button, BM_CLICK, 0, 0);
}

/// Three sites: one with a password and a firewall, an anonymous one, and one whose password is not
/// kept.
inline const std::string threeSites =
    "M1=one\nH1=127.0.0.1:1\nU1=anna\nW1=8497BBEB1234CADD\nD1=/pub\nO1=10\n"
    "G1=gate\nN1=guard\nP1=123456D9\nT1=5\n"
    "M2=two\nH2=127.0.0.1:1\nU2=anonymous\nW2=me@home\nO2=3\n"
    "M3=three\nH3=127.0.0.1:1\nU3=bob\nO3=8\nG3=gate3\nN3=guard3\nP3=7697B8D9\nT3=2\n";

/// A settings file with a book, the name of the site chosen last, and a mail address.
inline std::string WithBook(const std::string& book, const std::string& last = "") {
    return "[Quennet]\nFTP=" + last + "\nMAILADDR=me@home\n[FTP]\n" + book;
}

/// A host that nobody answers for, at once.
inline const std::string nobody = "127.0.0.1:1";
