#include "sites/book_test.h"

#include <algorithm>
#include <cstring>

#include "host/services.h"
#include "hostkit/ini_document.h"
#include "hostkit/services.h"
#include "hostkit/settings.h"
#include "support/wait.h"

using namespace quennet;

namespace {

/// The services beneath those that stand in their place.
ShellServices real;
i32 result = 0;

template <typename Function>
Function Real(ShellService service) {
    return reinterpret_cast<Function>(real.words[static_cast<u32>(service)]);
}

extern "C" i32 ReadSetting(const char* section, const char* key, const char* other, char* buffer,
                           u32 size, const char* path) {
    Real<ShellReadSettingFunction>(ShellService::readSetting)(section, key, other, buffer, size,
                                                              path);
    return result;
}

extern "C" i32 WriteSetting(const char* section, const char* key, const char* value,
                            const char* path) {
    Real<ShellWriteSettingFunction>(ShellService::writeSetting)(section, key, value, path);
    return result;
}

extern "C" i32 ReadSection(const char* section, char* buffer, u32 size, const char* path) {
    Real<ShellReadSectionFunction>(ShellService::readSection)(section, buffer, size, path);
    return result;
}

extern "C" i32 WriteSection(const char* section, const char* text, const char* path) {
    Real<ShellWriteSectionFunction>(ShellService::writeSection)(section, text, path);
    return result;
}

extern "C" i32 ReadProfileSection(const char* section, char* buffer, u32 size, const char* path) {
    std::string text(1 << 20, '\0');
    ReadSection(section, text.data(), static_cast<u32>(text.size()), path);
    text.resize(std::strlen(text.c_str()));
    std::replace(text.begin(), text.end(), '\n', '\0');
    text.resize(std::min<std::size_t>(text.size(), size - 2));
    text += std::string(2, '\0');
    std::memcpy(buffer, text.data(), text.size());
    return result;
}

extern "C" i32 WriteProfileSection(const char* section, const char* text, const char* path) {
    std::string lines;
    for (; *text != 0; text += std::strlen(text) + 1) {
        lines += std::string(text) + '\n';
    }
    return WriteSection(section, lines.c_str(), path);
}

/// Makes the host one of that kind. Its table is its own, and nothing has used it yet.
void Become(const SettingsHost& host) {
    auto& services = const_cast<ShellServices&>(*hostTables.shell);
    real = services;
    result = host.result.value_or(0);
    if (host.result) {
        using hostkit::Put;
        Put(services, ShellService::readSetting, ReadSetting);
        Put(services, ShellService::writeSetting, WriteSetting);
        Put(services, ShellService::readSection, host.isProfile ? ReadProfileSection : ReadSection);
        Put(services, ShellService::writeSection,
            host.isProfile ? WriteProfileSection : WriteSection);
    }
}

}  // namespace

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
    Become(settingsHost);
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
