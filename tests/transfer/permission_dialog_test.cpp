// A person at the permission dialogs.

#include <future>

#include "host/message.h"
#include "support/dialog_user.h"
#include "support/session_test.h"

using namespace quennet;

namespace {

constexpr int okButton = 99;
constexpr int cancelButton = 2;
constexpr int octalField = 14375;
constexpr int subfolderBox = 10103;
constexpr int filterBox = 14505;
constexpr int filterButton = 14503;
constexpr int firstBox = 14361;
constexpr int lastBox = 14369;

class PermissionDialogTest : public testing::Test {
  protected:
    /// Sends message 43 and waits for the dialog.
    OpenDialog Open(u32 clearMask, u32 setMask, u32 flags = 0, u32 status = 0) {
        record = {};
        record.clearMask = clearMask;
        record.setMask = setMask;
        record.flags = flags;
        record.status = status;
        result_ = std::promise<i32>();
        thread_.Loop().Post([this] {
            result_.set_value(thread_.Host().Send(MessageNumber::permissionDialog, 0,
                                                  GetModuleHandleA(nullptr), &record));
        });
        return WaitForDialog("Permissions");
    }

    /// Presses a button and gives the message's result.
    i32 Close(const OpenDialog& dialog, int button) {
        dialog.Press(button);
        return result_.get_future().get();
    }

    /// The state of the nine boxes, owner first, and what the octal field shows.
    static std::string Shown(const OpenDialog& dialog) {
        std::string states;
        for (int box = firstBox; box <= lastBox; ++box) {
            states += ".xg"[IsDlgButtonChecked(dialog.Window(), box)];
        }
        return states + " " + dialog.Field(octalField);
    }

    static void Click(const OpenDialog& dialog, int box) {
        SendDlgItemMessageA(dialog.Window(), box, BM_CLICK, 0, 0);
    }

    std::string Masks() const {
        char text[40];
        std::snprintf(text, sizeof text, "clear %X set %X flags %X", record.clearMask,
                      record.setMask, record.flags);
        return text;
    }

    HostThread thread_{hostkit::HostOptions{}};
    TransferRecord record = {};

  private:
    std::promise<i32> result_;
};

TEST_F(PermissionDialogTest, OneFileIsShownAsANumberAndTheTwoKeepInStep) {
    OpenDialog dialog = Open(0xABCD8123, 1, 0x200101, 3);
    EXPECT_EQ(Shown(dialog), "xx.x..x.. 644");
    EXPECT_EQ(u32{record.status}, 0u);
    // The field has the focus.
    const std::pair<std::string, std::string> rows[] = {
        {"7", "......xxx"},   {"", "......xxx"},  {"8x", "......xxx"},
        {"755", "xxxx.xx.x"}, {"0", "........."}, {" 6449", "xx.x..x.."}};
    for (const auto& [typed, boxes] : rows) {
        dialog.SetField(octalField, typed);
        EXPECT_EQ(Shown(dialog), boxes + " " + typed);
    }
    dialog.SetField(octalField, "");
    dialog.Type(octalField, "75551");
    EXPECT_EQ(Shown(dialog), "xxxx.xx.x 755") << "three digits are all that counts";
    Click(dialog, 14368);
    EXPECT_EQ(Shown(dialog), "xxxx.xxxx 757");
    Click(dialog, 14361);
    EXPECT_EQ(Shown(dialog), ".xxx.xxxx 357");
    dialog.SetField(octalField, "000");
    EXPECT_EQ(Shown(dialog), ".xxx.xxxx 000") << "only what is typed counts";
    EXPECT_EQ(Masks(), "clear ABCD8123 set 1 flags 200101");
    EXPECT_EQ(Close(dialog, okButton), 1);
    EXPECT_EQ(Masks(), "clear 8041 set 87A6 flags 1");

    dialog = Open(0x8124, 0, 0x100);
    Click(dialog, 14361);
    EXPECT_EQ(Close(dialog, cancelButton), 0);
    EXPECT_EQ(Masks(), "clear 8124 set 0 flags 100");
}

TEST_F(PermissionDialogTest, ManyKeepWhatIsGrey) {
    OpenDialog dialog = Open(0, 5, 0x40000100, 1);
    EXPECT_EQ(GetDlgItem(dialog.Window(), octalField), nullptr);
    EXPECT_EQ(Shown(dialog), "gggg.gg.g ");
    EXPECT_TRUE(dialog.IsChecked(filterBox));
    EXPECT_TRUE(dialog.IsChecked(subfolderBox));
    dialog.Press(filterButton);
    const OpenDialog filter = WaitForDialog(" Filter");
    filter.Press(cancelButton);
    EXPECT_TRUE(filter.WaitUntilClosed());
    EXPECT_EQ(Close(dialog, okButton), 1);
    EXPECT_EQ(Masks(), "clear 8240 set 8000 flags 40200100");

    // One directory; its word takes the place of the status.
    dialog = Open(0x8010, 0);
    EXPECT_TRUE(dialog.IsChecked(subfolderBox));
    EXPECT_FALSE(dialog.IsChecked(filterBox));
    Click(dialog, subfolderBox);
    Click(dialog, 14361);  // grey to unchecked
    Click(dialog, 14362);
    Click(dialog, 14362);  // to checked
    Click(dialog, 14365);  // unchecked to checked
    EXPECT_EQ(Shown(dialog), ".xggxgg.g ");
    EXPECT_EQ(Close(dialog, okButton), 1);
    EXPECT_EQ(Masks(), "clear 8201 set 8042 flags 0");

    dialog = Open(0, 2);
    EXPECT_FALSE(dialog.IsChecked(subfolderBox));
    EXPECT_EQ(Close(dialog, cancelButton), 0);
    EXPECT_EQ(Masks(), "clear 0 set 0 flags 0") << "the opening took the status for the number";
}

}  // namespace
