// Permissions as text, and the command that changes them.

#include "transfer/permissions.h"

#include "host/message.h"
#include "support/session_test.h"

using namespace quennet;
using testing::ElementsAre;

namespace {

TEST(PermissionTextTest, EveryBitHasItsPlace) {
    const struct {
        u16 attributes;
        const char* text;
    } rows[] = {{0x8123, " 644"}, {0xA7E7, "L777"}, {0, " 000"},      {0x8010, " 000"},
                {0x0001, " 400"}, {0x0040, " 020"}, {0x0400, " 001"}, {0x7818, "L000"}};
    for (const auto& row : rows) {
        char buffer[6] = "?????";
        FormatPermissions(buffer, row.attributes);
        EXPECT_STREQ(buffer, row.text);
    }
}

std::vector<std::string> shownNames;

LRESULT CALLBACK NoteNames(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == 0x401 && wParam == 0) {
        shownNames.emplace_back(reinterpret_cast<const char*>(lParam));
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

class PermissionsTest : public SessionTest {
  protected:
    PermissionsTest() {
        WNDCLASSEXA noting = {};
        noting.cbSize = sizeof noting;
        noting.lpfnWndProc = NoteNames;
        noting.lpszClassName = "names";
        RegisterClassExA(&noting);
        window = CreateWindowExA(0, "names", "", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
        shownNames.clear();
        record.progressWindow = NumberFromWindow(window);
        record.sourceHandle = WordFromPointer(session->handle);
        record.clearMask = 0x8040;  // group write
        record.setMask = 0x8101;    // owner and others read
    }
    ~PermissionsTest() override {
        DestroyWindow(window);
        UnregisterClassA("names", nullptr);
    }

    i32 Apply(const std::string& name, u32 attributes) {
        StoreText(record.currentName, sizeof record.currentName, name.c_str());
        return Host().Send(MessageNumber::applyPermissions, &record, 0xABC0000u | attributes);
    }

    HWND window;
    TransferRecord record = {};
};

TEST_F(PermissionsTest, OneCommandAnEntryUnlessNothingWouldChange) {
    LogIn(R"(
        -> SITE chmod 645 a b
        <- 200 ok
        -> SITE chmod 404 same
        <- 250 ok
        -> SITE chmod 404 link
        <- 550 not yours
        -> SITE chmod 404 bare
        <- 200 ok
        -> SITE chmod 404 last
        close
    )");
    EXPECT_EQ(Apply("a b", 0x8462), 0);
    EXPECT_EQ(Apply("same", 0x8101), 0) << "a valid word always goes out";
    EXPECT_EQ(Apply("none", 0x0101), -1);
    EXPECT_EQ(u32{record.status}, 0u);
    EXPECT_EQ(Apply("link", 0xA101), 5);
    EXPECT_EQ(u32{record.status}, 2u);
    record.status = 0;
    EXPECT_EQ(Apply("bare", 0x0041), 0);
    session->busy.Store(1);
    EXPECT_EQ(Apply("busy", 0x8000), -1);
    session->busy.Store(0);
    EXPECT_EQ(u32{record.status}, 2u);
    record.status = 0;
    EXPECT_EQ(Apply("last", 0x8000), -1);
    EXPECT_EQ(u32{record.status}, 2u) << "no answer is no success";
    EXPECT_EQ(u64{record.doneCount}, 3u);
    EXPECT_THAT(shownNames, ElementsAre("a b", "same", "link", "bare", "busy", "last"));
    record.sourceHandle = 0;
    EXPECT_EQ(Apply("gone", 0x8000), -1);
    wire.Finish();
}

}  // namespace
