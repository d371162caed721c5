// The settings file, and what windows keep in it.

#include <cstring>
#include <string>

#include "hostkit/memory.h"
#include "hostkit/service_help.h"

namespace hostkit {

namespace {

using namespace quennet;

constexpr std::size_t profilePathSize = 260;

void FillBuffer(char* buffer, u32 size, const std::string& text) {
    if (size > 0) {
        const std::size_t count = std::min<std::size_t>(text.size(), size - 1);
        std::memcpy(buffer, text.data(), count);
        buffer[count] = '\0';
    }
}

extern "C" {

static void GetProfilePath(HostWord, char* buffer) {
    buffer[0] = '\0';
    const std::string name = Host::Current()->GetServices().StoreName();
    AppendBounded(buffer, name.c_str(), profilePathSize);
}

static void ReadSetting(const char* section, const char* key, const char* defaultText, char* buffer,
                        u32 size, const char* file) {
    const auto value = StoreOf(file)->Read(section, key);
    FillBuffer(buffer, size, value.value_or(defaultText != nullptr ? defaultText : ""));
}

/// A null value takes the key out.
static void WriteSetting(const char* section, const char* key, const char* value,
                         const char* file) {
    const auto store = StoreOf(file);
    if (value != nullptr) {
        store->Write(section, key, value);
    } else {
        store->Remove(section, key);
    }
}

static void ReadSection(const char* section, char* buffer, u32 size, const char* file) {
    FillBuffer(buffer, size, StoreOf(file)->ReadSection(section));
}

static void WriteSection(const char* section, const char* text, const char* file) {
    StoreOf(file)->WriteSection(section, text);
}
}

}  // namespace

void FillSettingServices(CoreServices& core, ShellServices& shell) {
    Put<CoreGetProfilePathFunction, GetProfilePath>(core, CoreService::getProfilePath);
    Put<ShellReadSettingFunction, ReadSetting>(shell, ShellService::readSetting);
    Put<ShellWriteSettingFunction, WriteSetting>(shell, ShellService::writeSetting);
    Put<ShellReadSectionFunction, ReadSection>(shell, ShellService::readSection);
    Put<ShellWriteSectionFunction, WriteSection>(shell, ShellService::writeSection);
}

}  // namespace hostkit
