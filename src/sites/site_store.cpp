#include "sites/site_store.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "host/services.h"
#include "sites/connect_controls.h"

namespace quennet {

namespace {

constexpr char copySection[] = "Bak";  // holds something only while sites are renumbered

// In the order in which they are copied; the name comes first and decides.
constexpr char siteLetters[] = "MHUWDOGNPT";

using SiteValue = char[settingSize];

void ReadValue(const char* section, char letter, i32 id, const char* file, SiteValue& value) {
    ShellReadSetting(section, SiteKey(letter, id).text, value, settingSize, file);
}

bool HasSite(const char* section, i32 id, const char* file) {
    SiteValue name;
    ReadValue(section, 'M', id, file, name);
    return name[0] != 0;
}

/// The value that a site keeps when it gets a new number: empty for a password that is not kept.
void ReadKeptValue(const char* section, char letter, i32 id, const char* file, SiteValue& value) {
    if (letter == 'W') {
        ReadValue(section, 'O', id, file, value);
        if ((static_cast<u32>(NumberFromText(value)) & SiteOptionSavePassword) == 0) {
            value[0] = 0;
            return;
        }
    }
    ReadValue(section, letter, id, file, value);
}

/// Copies a site out of the copied section, under a new number.
void CopySite(i32 id, i32 number, const char* file) {
    SiteValue value;
    for (const char* letter = siteLetters; *letter != 0; ++letter) {
        ReadKeptValue(copySection, *letter, id, file, value);
        if (value[0] != 0) {
            WriteSiteValue(*letter, number, value, file);
        }
    }
}

/// Whether a site of the book is what the one of `id` in a section is to become.
bool SiteStands(const char* section, i32 id, i32 number, const char* file) {
    SiteValue wanted;
    SiteValue found;
    for (const char* letter = siteLetters; *letter != 0; ++letter) {
        ReadKeptValue(section, *letter, id, file, wanted);
        ReadSiteValue(*letter, number, file, found);
        if (std::strcmp(wanted, found) != 0) {
            return false;
        }
    }
    return true;
}

/// Whether the copy holds a site as the book does.
bool SiteIsCopied(i32 id, const char* file) {
    SiteValue original;
    SiteValue copy;
    for (const char* letter = siteLetters; *letter != 0; ++letter) {
        ReadSiteValue(*letter, id, file, original);
        ReadValue(copySection, *letter, id, file, copy);
        if (std::strcmp(original, copy) != 0) {
            return false;
        }
    }
    return true;
}

/// The sites in the dialog's list, of those that a section has.
class ListedSites {
  public:
    ListedSites(HWND dialog, i32 count, const char* file)
        : dialog_(dialog), count_(count), file_(file) {}

    bool AreCopied() const {
        for (i32 index = 0; index < count_; ++index) {
            if (!SiteIsCopied(IdAt(index), file_)) {
                return false;
            }
        }
        return true;
    }

    void Copy() const {
        i32 number = 1;
        for (i32 index = 0; index < count_; ++index) {
            const i32 id = IdAt(index);
            if (HasSite(copySection, id, file_)) {
                CopySite(id, number++, file_);
            }
        }
    }

    /// Whether the book has just those of a section, numbered anew.
    bool Stand(const char* section) const {
        i32 number = 1;
        for (i32 index = 0; index < count_; ++index) {
            const i32 id = IdAt(index);
            if (HasSite(section, id, file_) && !SiteStands(section, id, number++, file_)) {
                return false;
            }
        }
        return !HasSite(siteSection, number, file_);
    }

  private:
    i32 IdAt(i32 index) const {
        const LRESULT data =
            SendDlgItemMessageA(dialog_, siteList, LB_GETITEMDATA, static_cast<WPARAM>(index), 0);
        return data == LB_ERR ? 1 : static_cast<i32>(data);
    }

    HWND dialog_;
    i32 count_;
    const char* file_;
};

/// Whether a zeroed buffer is so full that its text may go on: one byte or two end a section.
bool IsFull(const char* text, u32 size) {
    return text[size - 2] != 0 || text[size - 3] != 0;
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
    ReadValue(siteSection, letter, id, file, value);
}

void WriteSiteValue(char letter, i32 id, const char* value, const char* file) {
    ShellWriteSetting(siteSection, SiteKey(letter, id).text, value, file);
}

i32 NumberFromText(const char* text) {
    const long number = std::strtol(text, nullptr, 10);
    if (number > INT32_MAX) {
        return INT32_MAX;
    }
    return number < INT32_MIN ? INT32_MIN : static_cast<i32>(number);
}

BookText::BookText(const char* file) {
    constexpr u32 largest = 1024 * siteSectionSize;
    u32 before = 0;
    for (u32 size = siteSectionSize; size <= largest; before = size, size *= 2) {
        if (!ReadWith(size, file)) {
            return;
        }
        // What a larger buffer does not lengthen may be all that this host can give.
        if (before != 0 && Text()[before - 1] == 0 && Text()[before] == 0) {
            return;
        }
        if (!IsFull(Text(), size)) {
            // An empty text of a book that has sites is a host's that could not read it.
            isWhole_ = Text()[0] != 0 || !HasSite(siteSection, 1, file);
            return;
        }
        isTooLarge_ = true;
    }
}

bool BookText::ReadWith(u32 size, const char* file) {
    Free();
    text_ = CoreAlloc(size);
    if (text_ != nullptr) {
        ShellReadSection(siteSection, static_cast<char*>(text_), size, file);
    }
    return text_ != nullptr;
}

void BookText::Free() {
    CoreFree(&text_);
}

char* BookText::Release() {
    return isWhole_ ? static_cast<char*>(std::exchange(text_, nullptr)) : nullptr;
}

BookOutcome RenumberSites(HWND dialog, i32 count, const char* file) {
    const ListedSites sites(dialog, count, file);
    const BookText before(file);
    bool isCopied = false;
    if (before.IsWhole()) {
        ShellWriteSection(copySection, before.Text(), file);
        isCopied = sites.AreCopied();
        if (!isCopied) {
            ShellWriteSection(copySection, "", file);
        }
    }
    if (!isCopied) {
        // Then a book that needs no new numbers is stored as it stands.
        const BookOutcome refusal =
            before.IsTooLarge() ? BookOutcome::tooLarge : BookOutcome::failed;
        return sites.Stand(siteSection) ? BookOutcome::stored : refusal;
    }
    ShellWriteSection(siteSection, "", file);
    sites.Copy();
    if (!sites.Stand(copySection)) {
        ShellWriteSection(siteSection, before.Text(), file);
        return BookOutcome::failed;
    }
    ShellWriteSection(copySection, "", file);
    return BookText(file).IsTooLarge() ? BookOutcome::tooLarge : BookOutcome::stored;
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
