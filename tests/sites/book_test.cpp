#include "sites/book_test.h"

#include "hostkit/ini_document.h"
#include "hostkit/settings.h"
#include "support/wait.h"

using namespace quennet;

void BookTest::Start(const std::string& settings) {
    WriteWhole(file, settings);
    Start();
}

void BookTest::Start() {
    hostkit::HostOptions options;
    options.settings = std::make_shared<hostkit::FileSettings>(file);
    options.passwordKeyFile = folder / "key";
    WriteWhole(options.passwordKeyFile, "12345678\n");
    options.showMessage = [this](u32 id, const std::string&) {
        notices.Add("message " + std::to_string(id));
    };
    options.reportError = [this](u32 id, const std::string& text) {
        notices.Add("error " + std::to_string(id));
        EXPECT_THAT(text, testing::Not(testing::HasSubstr("secret")));
    };
    StartHost(options);
}

OpenDialog BookTest::Open() {
    returned_ = false;
    Host().Loop().Post([this] {
        SendConnect();
        returned_ = true;
    });
    return Find(directoryField);
}

OpenDialog BookTest::Find(int control) {
    HWND window = nullptr;
    const auto isOpen = [&] {
        while ((window = FindWindowExA(nullptr, window, "#32770", nullptr)) != nullptr) {
            if (IsWindowVisible(window) && IsWindowEnabled(window) &&
                GetDlgItem(window, control) != nullptr) {
                return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(WaitUntil(isOpen)) << "no dialog with control " << control;
    return OpenDialog(window);
}

void BookTest::Close(const OpenDialog& dialog, int button) {
    dialog.Press(button);
    AwaitEnd();
}

void BookTest::AwaitEnd() {
    ASSERT_TRUE(WaitUntil([this] { return returned_.load(); })) << "the dialog is still open";
}

std::string BookTest::Book() const {
    return hostkit::IniDocument(File()).Section("FTP");
}

const SiteRecord& BookTest::Site() const {
    return *PointerFromWord<const SiteRecord>(params.site);
}
