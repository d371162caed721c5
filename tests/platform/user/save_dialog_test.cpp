// The dialog for a file to be written, worked by a person on another thread.

#include <commdlg.h>
#include <dlgs.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include "support/dialog_user.h"
#include "support/temp_folder.h"

using testing::ElementsAre;

namespace {

class SaveDialogTest : public testing::Test {
  protected:
    SaveDialogTest() {
        for (const char* name : {"sub/inner.txt", "sub/deeper/x.txt", "b.TXT", "a.txt", "a.log",
                                 ".hidden.txt", "\xC3\xA4.txt"}) {
            std::filesystem::create_directories((folder_ / name).parent_path());
            WriteWhole(folder_ / name, "");
        }
        request_.lStructSize = OPENFILENAME_SIZE_VERSION_400A;
        request_.lpstrFilter = "Text List\0*.txt\0Logs\0*.log;*.out\0All Files\0*.*\0";
        request_.lpstrFile = file_.data();
        request_.nMaxFile = 259;
        request_.lpstrInitialDir = initial_.c_str();
        request_.Flags = OFN_OVERWRITEPROMPT | OFN_HIDEREADONLY;
        request_.lpstrDefExt = "txt";
    }

    using Person = std::function<void(const OpenDialog&)>;

    BOOL Ask(const Person& person) {
        std::thread working([&] { person(WaitForDialog("Save As")); });
        const BOOL result = GetSaveFileNameA(&request_);
        working.join();
        return result;
    }

    /// Presses OK, and a button of what comes in front of the dialog.
    static void SaveAndAnswer(const OpenDialog& dialog, INT button) {
        dialog.Press(IDOK);
        OpenDialog question = WaitForDialog("Save As");
        while (question.Window() == dialog.Window() && !testing::Test::HasFailure()) {
            std::this_thread::yield();
            question = WaitForDialog("Save As");
        }
        question.Press(button);
        question.WaitUntilClosed();
    }

    std::string In(const std::string& name) const { return (folder_ / name).string(); }

    TempFolder folder_;
    std::string initial_ = (folder_ / "").string();
    std::array<char, 260> file_ = {};
    OPENFILENAMEA request_ = {};
};

}  // namespace

TEST_F(SaveDialogTest, GivesThePathOfTheNameWithItsExtension) {
    for (const auto& [typed, path] : {std::pair<std::string, std::string>{"new", "new.txt"},
                                      {"new.dat", "new.dat"},
                                      {"sub/../new", "new.txt"},
                                      {"sub/n\xC3\xA4w", "sub/n\xC3\xA4w.txt"},
                                      {In("sub") + "/abc", "sub/abc.txt"}}) {
        file_ = {};
        ASSERT_TRUE(Ask([&typed = typed](const OpenDialog& dialog) {
            dialog.SetField(edt1, typed);
            dialog.Press(IDOK);
        })) << typed;
        EXPECT_EQ(file_.data(), In(path));
    }
}

TEST_F(SaveDialogTest, ShowsFoldersAndTheFilesThatTheFilterAccepts) {
    std::strcpy(file_.data(), In("a.log").c_str());
    request_.nFilterIndex = 2;
    EXPECT_FALSE(Ask([&](const OpenDialog& dialog) {
        EXPECT_EQ(dialog.Field(edt1), "a.log");
        EXPECT_EQ(dialog.Field(stc1) + '/', initial_);
        EXPECT_THAT(dialog.Entries(cmb1), ElementsAre("Text List", "Logs", "All Files"));
        EXPECT_THAT(dialog.Entries(lst1), ElementsAre("../", "sub/", "a.log"));
        dialog.Choose(cmb1, 0);
        EXPECT_THAT(dialog.Entries(lst1),
                    ElementsAre("../", "sub/", "a.txt", "b.TXT", "\xC3\xA4.txt"));
        dialog.Choose(lst1, 3);
        EXPECT_EQ(dialog.Field(edt1), "b.TXT");
        dialog.Choose(lst1, 1);
        EXPECT_EQ(dialog.Field(edt1), "b.TXT") << "a folder is no name";
        SendDlgItemMessageA(dialog.Window(), lst1, WM_LBUTTONDBLCLK, 0, MAKELPARAM(1, 17));
        EXPECT_THAT(dialog.Entries(lst1), ElementsAre("../", "deeper/", "inner.txt"));
        // A pattern is a filter, a folder is entered.
        dialog.SetField(edt1, "i*");
        SendDlgItemMessageA(dialog.Window(), IDOK, BM_CLICK, 0, 0);
        dialog.SetField(edt1, "deeper");
        SendDlgItemMessageA(dialog.Window(), IDOK, BM_CLICK, 0, 0);
        EXPECT_THAT(dialog.Entries(lst1), ElementsAre("../"));
        EXPECT_EQ(dialog.Field(edt1), "");
        dialog.Press(IDCANCEL);
    }));
    EXPECT_EQ(file_.data(), In("a.log")) << "as it was";
}

TEST_F(SaveDialogTest, AsksBeforeItWritesOverAndTellsWhatCannotBe) {
    EXPECT_TRUE(Ask([&](const OpenDialog& dialog) {
        dialog.SetField(edt1, "a");  // the extension makes it one that exists
        SaveAndAnswer(dialog, IDNO);
        dialog.SetField(edt1, "missing/a");
        SaveAndAnswer(dialog, IDOK);
        dialog.SetField(edt1, "a");
        SaveAndAnswer(dialog, IDYES);
    }));
    EXPECT_EQ(file_.data(), In("a.txt"));
    request_.Flags = 0;
    EXPECT_TRUE(Ask([&](const OpenDialog& dialog) { dialog.Press(IDOK); })) << "nobody asks";
    EXPECT_EQ(file_.data(), In("a.txt"));
}

TEST_F(SaveDialogTest, KeepsToTheBuffer) {
    const std::size_t needed = In("long.txt").size() + 1;
    file_[needed - 1] = '#';
    const auto before = file_;
    request_.nMaxFile = static_cast<DWORD>(needed - 1);
    EXPECT_FALSE(Ask([](const OpenDialog& dialog) {
        dialog.SetField(edt1, "long");
        SaveAndAnswer(dialog, IDOK);  // it is too long
        dialog.Press(IDCANCEL);
    }));
    EXPECT_EQ(file_, before);
    file_ = {};
    request_.nMaxFile = static_cast<DWORD>(needed);
    EXPECT_TRUE(Ask([](const OpenDialog& dialog) {
        dialog.SetField(edt1, "long");
        dialog.Press(IDOK);
    }));
    EXPECT_EQ(file_.data(), In("long.txt"));
}
