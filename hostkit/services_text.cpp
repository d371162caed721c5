// Paths, masks, and how the host writes numbers and dates.

#include <cstring>
#include <shared_mutex>
#include <string>

#include "hostkit/display_text.h"
#include "hostkit/host.h"
#include "hostkit/masks.h"
#include "hostkit/memory.h"
#include "hostkit/services.h"

namespace hostkit {

namespace {

using namespace quennet;

constexpr std::size_t numberTextSize = 32;
constexpr char systemFolder[] = "/";

u64 NumberAt(const void* address) {
    u64 number;
    std::memcpy(&number, address, sizeof(number));
    return number;
}

void CopyText(char* target, const std::string& text, std::size_t size) {
    if (size > 0) {
        target[0] = '\0';
        AppendBounded(target, text.c_str(), size);
    }
}

extern "C" {

/// Makes one '/' of a run of separators, and takes off one at the end, except of a root.
static i32 PreparePath(char* path) {
    char* out = path;
    for (const char* in = path; *in != '\0'; ++in) {
        const bool repeated = *in == '/' && out != path && out[-1] == '/';
        if (!repeated) {
            *out++ = *in;
        }
    }
    if (out - path > 1 && out[-1] == '/') {
        --out;
    }
    *out = '\0';
    return 0;
}

static u32 NameOffsetOf(const char* path) {
    return static_cast<u32>(NameOffset(path));
}

static u16 ExtensionOffsetOf(const char* name) {
    return static_cast<u16>(ExtensionOffset(name));
}

static u32 GetSystemDir(char* buffer, u32 size) {
    CopyText(buffer, systemFolder, size);
    return static_cast<u32>(std::strlen(systemFolder));
}

static void UpperFirst(char* text) {
    if (text[0] >= 'a' && text[0] <= 'z') {
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
    }
}

static void FormatDate(char* text, u32 date, u32 time, u32 size) {
    CopyText(text, DateText(static_cast<u16>(date), static_cast<u16>(time)), size);
}

static void FormatAttributes(char* text, u32 attributes) {
    CopyText(text, AttributeText(static_cast<u16>(attributes)), numberTextSize);
}

static void FormatNumber(const void* number, char* text) {
    CopyText(text, NumberText(NumberAt(number)), numberTextSize);
}

static i32 MatchMask(const char* name, const char* masks) {
    return MatchesMasks(name, masks);
}

static i32 FilterMatch(const char* name, u32 attributes, u32 date, u32, const void* size,
                       const void* filter) {
    if (filter == nullptr) {
        return 1;
    }
    const std::shared_lock lock(Host::Current()->GetServices().FilterMutex());
    return PassesFilter(*static_cast<const FilterRecord*>(filter), name,
                        static_cast<u16>(attributes), static_cast<u16>(date), NumberAt(size));
}
}

}  // namespace

void FillTextServices(ShellServices& shell) {
    Put<ShellPreparePathFunction, PreparePath>(shell, ShellService::preparePath);
    Put<ShellNameOffsetFunction, NameOffsetOf>(shell, ShellService::nameOffset);
    Put<ShellExtensionOffsetFunction, ExtensionOffsetOf>(shell, ShellService::extensionOffset);
    Put<ShellGetSystemDirFunction, GetSystemDir>(shell, ShellService::getSystemDir);
    Put<ShellUpperFirstFunction, UpperFirst>(shell, ShellService::upperFirst);
    Put<ShellFormatDateFunction, FormatDate>(shell, ShellService::formatDate);
    Put<ShellFormatAttributesFunction, FormatAttributes>(shell, ShellService::formatAttributes);
    Put<ShellFormatNumberFunction, FormatNumber>(shell, ShellService::formatNumber);
    Put<ShellMatchMaskFunction, MatchMask>(shell, ShellService::matchMask);
    Put<ShellFilterMatchFunction, FilterMatch>(shell, ShellService::filterMatch);
}

}  // namespace hostkit
