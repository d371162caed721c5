// The module as a library: what its loading registers, and what its unloading takes back.

#include <gtest/gtest.h>
#include <windows.h>

namespace {

constexpr WORD connectDialog = 14300;

INT_PTR CALLBACK EndAtOnce(HWND dialog, UINT message, WPARAM, LPARAM) {
    if (message == WM_INITDIALOG) {
        EndDialog(dialog, 7);
    }
    return FALSE;
}

bool HasDialogs(HINSTANCE instance) {
    return DialogBoxParamA(instance, MAKEINTRESOURCEA(connectDialog), nullptr, EndAtOnce, 0) == 7;
}

/// True as long as the library's code stands in memory.
bool IsLoaded(HMODULE module) {
    return GetProcAddress(module, "f") != nullptr;
}

}  // namespace

TEST(UnloadingTest, TheDialogsComeAndGoWithTheLastUseOfTheLibrary) {
    for (int turn = 0; turn < 3; ++turn) {
        const HMODULE module = LoadLibraryA(QUENNET_MODULE);
        ASSERT_NE(module, nullptr);
        ASSERT_TRUE(IsLoaded(module));
        EXPECT_TRUE(HasDialogs(module));
        EXPECT_EQ(GetProcAddress(module, "GetTickCount"), nullptr) << "a name that it only uses";

        ASSERT_EQ(LoadLibraryA(QUENNET_MODULE), module);
        EXPECT_TRUE(FreeLibrary(module));
        EXPECT_TRUE(IsLoaded(module)) << "one use is left";
        EXPECT_TRUE(HasDialogs(module));

        EXPECT_TRUE(FreeLibrary(module));
        EXPECT_FALSE(IsLoaded(module));
        EXPECT_FALSE(HasDialogs(module)) << "templates in memory that is gone";
        EXPECT_FALSE(FreeLibrary(module));
    }
}
