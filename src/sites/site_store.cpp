#include "sites/site_store.h"

#include <cstdio>
#include <cstdlib>

#include "host/services.h"
#include "sites/connect_controls.h"

namespace quennet {

namespace {

constexpr char copySection[] = "Bak";  // holds something only while sites are renumbered

// In the order in which they are copied; the name comes first and decides.
constexpr char siteLetters[] = "MHUWDOGNPT";

enum class SiteCopy { done, nameless, failed };

/// Copies a site out of the copied section, under a new number.
SiteCopy CopySite(i32 id, i32 number, const char* file) {
    char value[settingSize];
    ShellReadSetting(copySection, SiteKey('O', id).text, value, settingSize, file);
    const auto options = static_cast<u32>(NumberFromText(value));
    for (const char* letter = siteLetters; *letter != 0; ++letter) {
        ShellReadSetting(copySection, SiteKey(*letter, id).text, value, settingSize, file);
        if (value[0] == 0) {
            if (*letter == 'M') {
                return SiteCopy::nameless;
            }
            continue;
        }
        if (*letter == 'W' && (options & SiteOptionSavePassword) == 0) {
            continue;
        }
        if (!WriteSiteValue(*letter, number, value, file)) {
            return SiteCopy::failed;
        }
    }
    return SiteCopy::done;
}

bool CopySites(HWND dialog, i32 count, const char* file) {
    i32 number = 1;
    for (i32 index = 0; index < count; ++index) {
        const LRESULT data =
            SendDlgItemMessageA(dialog, siteList, LB_GETITEMDATA, static_cast<WPARAM>(index), 0);
        const i32 id = data == LB_ERR ? 1 : static_cast<i32>(data);
        const SiteCopy copied = CopySite(id, number, file);
        if (copied == SiteCopy::failed) {
            return false;
        }
        if (copied == SiteCopy::done) {
            ++number;
        }
    }
    return true;
}

void CopyToField(char* field, u32 size, const char* value) {
    field[0] = 0;
    CoreCopyText(field, value, size);
}

}  // namespace

SettingsPath::SettingsPath() {
    CoreGetProfilePath(text);
}

SiteKey::SiteKey(char letter, i32 id) {
    std::snprintf(text, sizeof text, "M%ld", static_cast<long>(id));
    text[0] = letter;
}

NumberText::NumberText(u32 number) {
    std::snprintf(text, sizeof text, "%lu", static_cast<unsigned long>(number));
}

void ReadSiteValue(char letter, i32 id, const char* file, char (&value)[settingSize]) {
    ShellReadSetting(siteSection, SiteKey(letter, id).text, value, settingSize, file);
}

bool WriteSiteValue(char letter, i32 id, const char* value, const char* file) {
    return ShellWriteSetting(siteSection, SiteKey(letter, id).text, value, file);
}

i32 NumberFromText(const char* text) {
    const long number = std::strtol(text, nullptr, 10);
    if (number > INT32_MAX) {
        return INT32_MAX;
    }
    return number < INT32_MIN ? INT32_MIN : static_cast<i32>(number);
}

char* ReadWholeSection(const char* section, const char* file) {
    constexpr int mostAttempts = 3;  // it may grow meanwhile
    u32 size = siteSectionSize;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        void* text = CoreAlloc(size);
        if (text == nullptr) {
            return nullptr;
        }
        const u32 length = ShellReadSection(section, static_cast<char*>(text), size, file);
        if (length < size) {
            return static_cast<char*>(text);
        }
        CoreFree(&text);
        if (length == UINT32_MAX) {
            return nullptr;
        }
        size = length + 1;
    }
    return nullptr;
}

BookOutcome RenumberSites(HWND dialog, i32 count, const char* file) {
    void* copy = ReadWholeSection(siteSection, file);
    if (copy == nullptr) {
        return BookOutcome::failed;
    }
    const auto* text = static_cast<const char*>(copy);
    BookOutcome outcome = BookOutcome::stored;
    if (ShellWriteSection(copySection, text, file) && ShellWriteSection(siteSection, "", file) &&
        CopySites(dialog, count, file)) {
        ShellWriteSection(copySection, "", file);
        char probe[1];
        if (ShellReadSection(siteSection, probe, sizeof probe, file) >= siteSectionSize) {
            outcome = BookOutcome::tooLarge;
        }
    } else {
        ShellWriteSection(siteSection, text, file);
        outcome = BookOutcome::failed;
    }
    CoreFree(&copy);
    return outcome;
}

void LoadFirewallFields(SiteRecord* site, const char* file) {
    const i32 id = CurrentSiteId();
    char value[settingSize];
    ReadSiteValue('G', id, file, value);
    CopyToField(site->firewallHost, sizeof site->firewallHost, value);
    ReadSiteValue('N', id, file, value);
    CopyToField(site->firewallUser, sizeof site->firewallUser, value);
    ReadSiteValue('P', id, file, value);
    UnscramblePassword(value);
    CopyToField(site->firewallPassword, sizeof site->firewallPassword, value);
    ReadSiteValue('T', id, file, value);
    site->firewallType = static_cast<u32>(NumberFromText(value));
}

}  // namespace quennet
