// The connection dialog over settings files that are missing, strange, closed or in use.

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <functional>

#include "hostkit/settings.h"
#include "sites/book_test.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

const std::string oneSite = "[Quennet]\nFTP=one\n[FTP]\nM1=one\nH1=127.0.0.1:1\nO1=0\n";

class SettingsFileTest : public BookTest {
  protected:
    void AddSite(const OpenDialog& dialog, const std::string& name) {
        dialog.SetField(nameField, name);
        dialog.SetField(hostField, nobody);
        Click(dialog, addButton);
    }
};

TEST_F(SettingsFileTest, AFileInAFolderThatIsNotThereIsMadeForItsOwnerAlone) {
    file = folder / "a/b/settings.ini";
    Start();
    OpenDialog dialog = Open();
    AddSite(dialog, "one");
    Close(dialog, cancelButton);
    EXPECT_FALSE(std::filesystem::exists(file));
    dialog = Open();
    AddSite(dialog, "one");
    Close(dialog, okButton);
    EXPECT_EQ(File(), "[FTP]\nM1=one\nH1=127.0.0.1:1\nO1=0\n[Quennet]\nFTP=one\n");
    struct stat status = {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    ASSERT_EQ(stat((folder / "a/b").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
}

TEST_F(SettingsFileTest, WhatADialogOnlyShowedStaysByteForByte) {
    const std::string files[] = {
        "",
        "\n",
        "[FTP]",
        "[FTP]\nM1=one\nH1=h\nno end",
        "\xEF\xBB\xBF[FTP]\r\nM1=one\r\n\r\n; comment\r\n[Other]\r\nx=\"y\r\n",
        "[FTP]\nM1=" + std::string(1 << 20, 'x') + "\n" + std::string(1 << 20, '=') + "\n[A]\nb=c",
        "M1=no section\n[FTP\n[Ftp ]\r\nM1 = one \r\nW1=zz\nP1=\xE4\nO1=2x\nM2=\x01",
    };
    Start("");
    for (const std::string& text : files) {
        WriteWhole(file, text);
        struct stat before = {};
        stat(file.c_str(), &before);
        const OpenDialog dialog = Open();
        AddSite(dialog, "new");
        Close(dialog, cancelButton);
        EXPECT_TRUE(File() == text) << text.substr(0, 40);
        struct stat after = {};
        stat(file.c_str(), &after);
        EXPECT_EQ(after.st_ino, before.st_ino);
    }
}

TEST_F(SettingsFileTest, AnyTextInAFieldComesBack) {
    Start("[Quennet]\nMAILADDR=me@home\n");
    OpenDialog dialog = Open();
    const std::string texts[] = {
        "quote\"s\"", "\"whole\"",        " blanks ", "a=b;c#d", "[x]",
        "\\n\\",      "\xC3\xA4\x80\xFF", "\t",       "%s%n",    std::string(258, 'z')};
    for (const std::string& text : texts) {
        for (int field : {hostField, userField, directoryField}) {
            dialog.SetField(field, text);
        }
        dialog.SetField(passwordField, text.substr(0, 80));
        dialog.SetChecked(saveBox, true);
        dialog.SetField(nameField, text);
        Click(dialog, addButton);
    }
    dialog.SetField(hostField, nobody);
    Close(dialog, okButton);
    Disconnect();
    dialog = Open();
    ASSERT_THAT(dialog.Entries(siteList), testing::ElementsAreArray(texts));
    for (int entry = 0; entry < 9; ++entry) {
        dialog.Choose(siteList, entry);
        const std::string& text = texts[entry];
        for (int field : {nameField, hostField, userField, passwordField, directoryField}) {
            EXPECT_EQ(dialog.Field(field), text) << field;
        }
    }
    Close(dialog, cancelButton);
}

TEST_F(SettingsFileTest, AFailedSaveLosesNothingAndIsTold) {
    Start(oneSite);
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    const auto limitSize = [&](rlim_t size) {
        const rlimit changed = {size, limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &changed);
    };
    const std::string edited = oneSite + "[Edited]\nx=1\n";
    const struct {
        std::function<void()> before, during, after;
        std::string kept;
    } hindrances[] = {
        {[&] { chmod(file.c_str(), 0400); }, [] {}, [&] { chmod(file.c_str(), 0600); }, oneSite},
        {[] {}, [&] { limitSize(20); }, [&] { limitSize(limit.rlim_cur); }, oneSite},  // disk full
        {[] {}, [&] { WriteWhole(file, edited); }, [] {}, edited},  // by who knows no lock
    };
    for (const auto& hindrance : hindrances) {
        hindrance.before();
        const OpenDialog dialog = Open();
        AddSite(dialog, "two");
        hindrance.during();
        Close(dialog, okButton);
        hindrance.after();
        EXPECT_EQ(File(), hindrance.kept);
        EXPECT_THAT(notices.All(), Contains("error 6007"));
        EXPECT_FALSE(std::filesystem::exists(folder / "settings.ini.new"));
        EXPECT_NE(holder, 0u) << "one can connect all the same";
        Disconnect();
        notices.Clear();
    }
    const OpenDialog dialog = Open();
    AddSite(dialog, "two");
    Close(dialog, okButton);
    EXPECT_THAT(Book(), HasSubstr("M1=two\n"));
}

TEST_F(SettingsFileTest, ABookThatAnotherProgramHasOpenIsShownAndNotKept) {
    Start(oneSite);
    hostkit::FileSettings other(file);
    ASSERT_TRUE(other.Begin());
    ASSERT_TRUE(other.Write("FTP", "M1", "theirs"));
    const OpenDialog dialog = Open();
    EXPECT_THAT(notices.All(), ElementsAre("error 6008"));
    EXPECT_THAT(dialog.Entries(siteList), ElementsAre("one"));
    AddSite(dialog, "two");
    EXPECT_THAT(dialog.Entries(siteList), ElementsAre("two", "one"));
    Close(dialog, okButton);
    EXPECT_EQ(File(), oneSite);
    ASSERT_TRUE(other.Commit());
    Close(Open(), cancelButton);
    EXPECT_THAT(Book(), HasSubstr("M1=theirs\n"));

    // And the other way round: nobody writes while the dialog is open.
    const OpenDialog again = Open();
    EXPECT_FALSE(other.Begin(std::chrono::milliseconds(0)));
    EXPECT_THAT(other.ErrorText(), HasSubstr("in use by another program"));
    Close(again, cancelButton);
    EXPECT_TRUE(other.Begin(std::chrono::milliseconds(0)));
    EXPECT_TRUE(other.Commit());
}

}  // namespace
