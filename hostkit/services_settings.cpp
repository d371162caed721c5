// The settings file, and what windows keep in it.

#include <cstring>
#include <string>

#include "hostkit/memory.h"
#include "hostkit/service_help.h"

namespace hostkit {

namespace {

using namespace quennet;

constexpr std::size_t profilePathSize = 260;

/// Fills a buffer and returns what the whole text takes, as it may be longer than what was copied.
u32 FillBuffer(char* buffer, u32 size, const std::string& text) {
    if (size > 0) {
        const std::size_t count = std::min<std::size_t>(text.size(), size - 1);
        std::memcpy(buffer, text.data(), count);
        buffer[count] = '\0';
    }
    return static_cast<u32>(text.size());
}

extern "C" {

static void GetProfilePath(HostWord, char* buffer) {
    buffer[0] = '\0';
    Guarded([&] {
        const std::string name = Host::Current()->GetServices().StoreName();
        AppendBounded(buffer, name.c_str(), profilePathSize);
    });
}

/// Returns the length of the whole value.
static u32 ReadSetting(const char* section, const char* key, const char* defaultText, char* buffer,
                       u32 size, const char* file) {
    return Guarded([&] {
        const auto value = StoreOf(file)->Read(section, key);
        return FillBuffer(buffer, size, value.value_or(defaultText != nullptr ? defaultText : ""));
    });
}

/// A null value takes the key out.
static i32 WriteSetting(const char* section, const char* key, const char* value, const char* file) {
    return !Guarded([&] {
        const auto store = StoreOf(file);
        return value != nullptr ? store->Write(section, key, value) : store->Remove(section, key);
    });
}

/// Returns the length of the whole text: a text that the buffer cuts has at least its size.
static u32 ReadSection(const char* section, char* buffer, u32 size, const char* file) {
    return Guarded([&] { return FillBuffer(buffer, size, StoreOf(file)->ReadSection(section)); });
}

static i32 WriteSection(const char* section, const char* text, const char* file) {
    return !Guarded([&] { return StoreOf(file)->WriteSection(section, text); });
}
}

}  // namespace

void FillSettingServices(CoreServices& core, ShellServices& shell) {
    Put<CoreGetProfilePathFunction>(core, CoreService::getProfilePath, GetProfilePath);
    Put<ShellReadSettingFunction>(shell, ShellService::readSetting, ReadSetting);
    Put<ShellWriteSettingFunction>(shell, ShellService::writeSetting, WriteSetting);
    Put<ShellReadSectionFunction>(shell, ShellService::readSection, ReadSection);
    Put<ShellWriteSectionFunction>(shell, ShellService::writeSection, WriteSection);
}

}  // namespace hostkit
