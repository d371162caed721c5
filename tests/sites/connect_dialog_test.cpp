#include <functional>

#include "sites/book_test.h"

using namespace quennet;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

class ConnectDialogTest : public AnyHostBookTest {
  protected:
    std::vector<std::string> Fields(const OpenDialog& dialog) {
        std::vector<std::string> fields;
        for (int id : {nameField, hostField, userField, passwordField, directoryField}) {
            fields.push_back(dialog.Field(id));
        }
        return fields;
    }
    std::string Boxes(const OpenDialog& dialog) {
        std::string boxes;
        for (int id : {anonymousBox, saveBox, firewallBox, passiveBox}) {
            boxes += dialog.IsChecked(id) ? 'x' : '-';
        }
        return boxes;
    }
    LRESULT Echo(const OpenDialog& dialog) {
        return SendDlgItemMessageA(dialog.Window(), passwordField, EM_GETPASSWORDCHAR, 0, 0);
    }
    bool UserIsReadOnly(const OpenDialog& dialog) {
        return (GetWindowLongA(GetDlgItem(dialog.Window(), userField), GWL_STYLE) & ES_READONLY) !=
               0;
    }
};

TEST_P(ConnectDialogTest, TheFirstSiteIsTheNameOnAnEmptyList) {
    Start();
    OpenDialog dialog = Open();
    EXPECT_THAT(dialog.Entries(siteList), IsEmpty());
    EXPECT_THAT(Fields(dialog), ElementsAre("", "", "", "", ""));
    EXPECT_EQ(Boxes(dialog), "----");
    dialog.Type(nameField, std::string(30, 'n') + std::string(70, 'x'));
    dialog.Type(hostField, "FTP://" + nobody);
    dialog.Type(userField, "anna");
    dialog.Type(passwordField, std::string(100, 'p'));
    dialog.Type(directoryField, std::string(300, 'd'));
    dialog.SetChecked(saveBox, true);
    EXPECT_EQ(dialog.Field(nameField).size(), 63u);
    EXPECT_EQ(dialog.Field(directoryField).size(), 259u);
    Close(dialog, okButton);
    std::string scrambled;
    for (int group = 0; group < 20; ++group) {
        scrambled += "82A4C6E8";
    }
    const std::string name = std::string(30, 'n') + std::string(33, 'x');
    EXPECT_EQ(File(), "[FTP]\nM1=" + name + "\nH1=FTP://" + nobody + "\nU1=anna\nW1=" + scrambled +
                          "\nD1=" + std::string(258, 'd') + "\nO1=2\n[Quennet]\nFTP=" + name +
                          "\n");
    EXPECT_EQ(Site().name, std::string(26, 'n'));
    EXPECT_STREQ(Site().host, "127.0.0.1");
    EXPECT_EQ(Site().password, std::string(79, 'p'));
    EXPECT_EQ(u32{Site().siteOptions}, SiteOptionSavePassword);
}

struct BookCase {
    std::string rule;
    std::string book;
    std::string last;
    std::function<void(const OpenDialog&)> work;
    std::string after;
};

const std::string one =
    "M1=one\nH1=127.0.0.1:1\nU1=anna\nW1=8497BBEB1234CADD\nD1=/pub\nO1=10\n"
    "G1=gate\nN1=guard\nP1=123456D9\nT1=5\n";
const std::string secondTwo = "M2=two\nH2=127.0.0.1:1\nU2=anonymous\nW2=me@home\nO2=3\n";
const std::string secondThree =
    "M2=three\nH2=127.0.0.1:1\nU2=bob\nO2=8\nG2=gate3\nN2=guard3\nP2=7697B8D9\nT2=2\n";

const BookCase bookCases[] = {
    {"TheSecondOfThreeDeleted", threeSites, "two",
     [](const OpenDialog& dialog) {
         Click(dialog, deleteButton);
         EXPECT_EQ(dialog.Selected(siteList), 1);
         EXPECT_EQ(dialog.Field(nameField), "two");
     },
     one + secondThree},
    {"ANameEmptied", threeSites, "two",
     [](const OpenDialog& dialog) { dialog.SetField(nameField, ""); }, one + secondThree},
    {"ARenamedSiteChangesInTheList", threeSites, "one",
     [](const OpenDialog& dialog) {
         dialog.SetField(nameField, "first; \"=[1]\xE4");
         dialog.Choose(siteList, 2);
         EXPECT_EQ(dialog.Entries(siteList)[0], "first; \"=[1]\xE4");
         EXPECT_EQ(dialog.Field(userField), "bob");
     },
     "M1=first; \"=[1]\xE4" + threeSites.substr(6)},
    {"TheLastDeletedAndOneAddedInFrontOfTheSelected", threeSites, "three",
     [](const OpenDialog& dialog) {
         Click(dialog, deleteButton);
         dialog.SetField(nameField, "new");
         Click(dialog, addButton);
         EXPECT_THAT(dialog.Entries(siteList), ElementsAre("one", "new", "two"));
         EXPECT_EQ(dialog.Selected(siteList), 2);
         EXPECT_EQ(dialog.Field(nameField), "new");
     },
     // The new site has the deleted one's id, and with it the firewall keys that it left behind.
     one + "M2=new\nH2=127.0.0.1:1\nU2=bob\nO2=8\nG2=gate3\nN2=guard3\nP2=7697B8D9\nT2=2\n"
           "M3=two\nH3=127.0.0.1:1\nU3=anonymous\nW3=me@home\nO3=3\n"},
    {"AnAddWithoutANameDoesNothing", threeSites, "two",
     [](const OpenDialog& dialog) {
         const std::string name = dialog.Field(nameField);
         dialog.SetField(nameField, "");
         Click(dialog, addButton);
         EXPECT_EQ(dialog.Entries(siteList).size(), 3u);
         dialog.SetField(nameField, name);
     },
     threeSites},
    {"MovedUpAndDownAndNoFurther", threeSites, "three",
     [](const OpenDialog& dialog) {
         for (int button : {downButton, upButton, upButton, upButton, downButton}) {
             Click(dialog, button);
         }
         EXPECT_THAT(dialog.Entries(siteList), ElementsAre("one", "three", "two"));
     },
     one + secondThree + "M3=two\nH3=127.0.0.1:1\nU3=anonymous\nW3=me@home\nO3=3\n"},
    {"APasswordThatIsNoLongerKept", threeSites, "one",
     [](const OpenDialog& dialog) {
         EXPECT_EQ(dialog.Field(passwordField), "secret");
         dialog.SetChecked(saveBox, false);
     },
     "M1=one\nH1=127.0.0.1:1\nU1=anna\nD1=/pub\nO1=8\nG1=gate\nN1=guard\nP1=123456D9\nT1=5\n" +
         threeSites.substr(one.size())},
    {"NumbersBehindAGap", one + "H2=lost\n" + "M3=unseen\nH3=127.0.0.1:1\n", "unseen",
     [](const OpenDialog& dialog) {
         EXPECT_THAT(dialog.Entries(siteList), ElementsAre("one"));
         EXPECT_EQ(dialog.Selected(siteList), 0);
     },
     one},
    {"AllDeleted", one, "one",
     [](const OpenDialog& dialog) {
         Click(dialog, deleteButton);
         for (int id : {nameField, hostField, userField, passwordField, directoryField}) {
             EXPECT_EQ(dialog.Field(id), "");
         }
         Click(dialog, deleteButton);
         dialog.SetField(hostField, nobody);
     },
     ""},
    {"OddValuesComeBack",
     "M1=  \"a\\\"b;=[x]\\\\ \"\nH1=127.0.0.1:1\nU1=\"\" \nD1=\" /x \"\nO1=10x\n", "",
     [](const OpenDialog& dialog) { dialog.SetField(hostField, nobody); },
     "M1=\"a\\\"b;=[x]\\\\ \"\nH1=127.0.0.1:1\nD1=\" /x \"\nO1=10\n"},
};

TEST_P(ConnectDialogTest, OkNumbersTheListAnewAndCancelUndoesAll) {
    Start();
    for (const BookCase& row : bookCases) {
        SCOPED_TRACE(row.rule);
        const std::string before =
            "; mine\r\n[Other]\r\nx=1\r\n\r\n" + WithBook(row.book, row.last);
        WriteWhole(file, before);
        OpenDialog dialog = Open();
        row.work(dialog);
        EXPECT_EQ(File(), before) << "written before the end";
        Close(dialog, cancelButton);
        EXPECT_EQ(File(), before);
        EXPECT_EQ(holder, 0u);
        EXPECT_EQ(socketUses, 0u);

        dialog = Open();
        row.work(dialog);
        Close(dialog, okButton);
        std::string book = Book();
        std::erase(book, '\r');  // the file's own line ends
        EXPECT_EQ(book, row.after);
        EXPECT_THAT(File(), HasSubstr("; mine\r\n[Other]\r\nx=1\r\n\r\n[Quennet]\n"));
        EXPECT_THAT(File(), Not(HasSubstr("Bak")));
        EXPECT_THAT(notices.All(), Not(testing::Contains(HasSubstr("message"))));
        Disconnect();
    }
}

TEST_P(ConnectDialogTest, TheSiteChosenLastIsLookedForBehindTheFirstEntry) {
    struct {
        const char* last;
        int selected;
    } cases[] = {{"TWIN", 2}, {"twi", 0}, {"other", 1}, {"", 0}};
    Start();
    for (const auto& row : cases) {
        WriteWhole(file, WithBook("M1=Twin\nM2=Other\nM3=twin\n", row.last));
        const OpenDialog dialog = Open();
        EXPECT_EQ(dialog.Selected(siteList), row.selected) << row.last;
        Close(dialog, cancelButton);
    }
}

TEST_P(ConnectDialogTest, SteppingBetweenSitesSwitchesTheEcho) {
    Start(WithBook(threeSites, "one"));
    const OpenDialog dialog = Open();
    for (int round = 0; round < 2; ++round) {
        EXPECT_THAT(Fields(dialog), ElementsAre("one", nobody, "anna", "secret", "/pub"));
        EXPECT_EQ(Boxes(dialog), "-x-x");
        EXPECT_EQ(Echo(dialog), '*');
        dialog.Choose(siteList, 1);
        EXPECT_THAT(Fields(dialog), ElementsAre("two", nobody, "anonymous", "me@home", ""));
        EXPECT_EQ(Boxes(dialog), "xx--");
        EXPECT_EQ(Echo(dialog), 0);
        EXPECT_TRUE(UserIsReadOnly(dialog));
        dialog.Choose(siteList, 0);
        EXPECT_FALSE(UserIsReadOnly(dialog));
    }
    dialog.Choose(siteList, 2);
    EXPECT_EQ(dialog.Field(passwordField), "");
    Close(dialog, okButton);
    EXPECT_EQ(Book(), threeSites);
    EXPECT_THAT(File(), HasSubstr("FTP=three\n"));
}

TEST_P(ConnectDialogTest, TheUserNameAnonymousIsTheStateAndTheMailAddressOutlivesACancel) {
    Start("[FTP]\nM1=site\nH1=127.0.0.1:1\n");
    const OpenDialog dialog = Open();
    dialog.SetField(passwordField, "typed");
    dialog.Type(userField, "anonymou");
    EXPECT_EQ(dialog.Field(passwordField), "typed");
    PostMessageA(GetDlgItem(dialog.Window(), userField), WM_CHAR, 's', 0);
    OpenDialog mail = Find(mailField);
    mail.Type(mailField, std::string(100, 'm'));
    EXPECT_EQ(mail.Field(mailField).size(), 80u);
    mail.Press(cancelButton);
    Find(directoryField);
    EXPECT_EQ(Boxes(dialog), "x---");
    EXPECT_EQ(dialog.Field(passwordField), "");

    dialog.SetChecked(anonymousBox, false);
    EXPECT_THAT(Fields(dialog), ElementsAre("site", nobody, "", "", ""));
    EXPECT_FALSE(UserIsReadOnly(dialog));
    EXPECT_EQ(Echo(dialog), '*');
    dialog.Press(anonymousBox);
    mail = Find(mailField);
    mail.SetField(mailField, "me@home");
    mail.Press(okButton);
    Find(directoryField);
    EXPECT_THAT(Fields(dialog), ElementsAre("site", nobody, "anonymous", "me@home", ""));
    EXPECT_EQ(Echo(dialog), 0);
    Close(dialog, cancelButton);
    EXPECT_EQ(File(), "[FTP]\nM1=site\nH1=127.0.0.1:1\n[Quennet]\nMAILADDR=me@home\n");
}

TEST_P(ConnectDialogTest, AnAnonymousSiteWithoutAnAddressAsksWhenItIsSelected) {
    Start("[FTP]\nM1=site\nH1=127.0.0.1:1\nM2=open\nH2=127.0.0.1:1\nU2=anonymous\nO2=1\n");
    const OpenDialog dialog = Open();
    PostMessageA(GetDlgItem(dialog.Window(), siteList), WM_KEYDOWN, VK_DOWN, 0);
    Find(mailField).Press(cancelButton);
    Find(directoryField);  // once is enough
    EXPECT_EQ(dialog.Field(passwordField), "");
    EXPECT_EQ(Boxes(dialog), "x---");
    Close(dialog, okButton);
    EXPECT_EQ(Book(),
              "M1=site\nH1=127.0.0.1:1\nO1=0\nM2=open\nH2=127.0.0.1:1\nU2=anonymous\nO2=1\n");
    EXPECT_STREQ(Site().password, "");
}

TEST_P(ConnectDialogTest, ADoubleClickIsOk) {
    Start(WithBook(threeSites, "one"));
    const OpenDialog dialog = Open();
    PostMessageA(GetDlgItem(dialog.Window(), siteList), WM_LBUTTONDBLCLK, 0, MAKELPARAM(1, 1));
    AwaitEnd();
    EXPECT_NE(holder, 0u);
}

ON_ANY_HOST(ConnectDialogTest);

}  // namespace
