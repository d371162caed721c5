#pragma once
// The site book in the host's settings file.
//
// Section "FTP" holds the sites. Each has a number and up to ten keys, a letter with the number
// behind it. In the file the numbers run from 1 without a gap, in the order of the dialog's list;
// the first number without a name (M) ends the book. While the connection dialog is open the
// entries of its list carry their number as a site id, and ids need not be dense nor in order.
//
//   M name              W password, scrambled; as it is for an anonymous site
//   H host              D directory to begin in
//   U user              O option word (SiteOption bits), decimal
//   G firewall's host   N user there   P password there, scrambled   T firewall type, decimal

#include "host/records.h"
#include "sites/password_scrambling.h"

namespace quennet {

constexpr char siteSection[] = "FTP";
constexpr char lastSiteKey[] = "FTP";  // of the host's main section: the site chosen last

/// The book's section is at most this long, with what ends it.
constexpr u32 siteSectionSize = 32767;

/// Where the settings are at this moment; to be asked for anew before each group of accesses.
struct SettingsPath {
    SettingsPath();
    char text[settingSize] = "";
};

/// A key of a site.
struct SiteKey {
    SiteKey(char letter, i32 id);
    char text[16];
};

void ReadSiteValue(char letter, i32 id, const char* file, char (&value)[settingSize]);
void WriteSiteValue(char letter, i32 id, const char* value, const char* file);

/// The number that a text begins with, 0 for none; the nearest one when it is out of range.
i32 NumberFromText(const char* text);
/// A number as a decimal text.
struct NumberText {
    explicit NumberText(u32 number);
    char text[16];
};

/// The text of the book's section as the host gives it. Its form is the host's: nothing is looked
/// at but where it ends. A text that fills its buffer may have been cut, so it is asked for again
/// with larger ones.
class BookText {
  public:
    explicit BookText(const char* file);
    ~BookText() { Free(); }
    BookText(const BookText&) = delete;
    BookText& operator=(const BookText&) = delete;

    /// False without memory.
    bool IsThere() const { return text_ != nullptr; }
    /// Whether it may be written back: nothing of the book is missing.
    bool IsWhole() const { return isWhole_; }
    /// Whether it is longer than `siteSectionSize`, as far as can be seen.
    bool IsTooLarge() const { return isTooLarge_; }
    const char* Text() const { return static_cast<const char*>(text_); }
    /// A block for CoreFree; null when it may not be written back.
    char* Release();

  private:
    void Free();
    bool ReadWith(u32 size, const char* file);

    void* text_ = nullptr;
    bool isWhole_ = false;
    bool isTooLarge_ = false;
};

enum class BookOutcome {
    stored,
    failed,    // the section is as it was before; its copy may stay in section "Bak"
    tooLarge,  // it does not fit `siteSectionSize`
};

/// Gives the sites in the connection dialog's list new numbers, 1 and up, in the order of the list.
/// Only what the list names stays in the book: deleted sites, those without a name, empty values
/// and passwords that are not to be kept are left out. `count` is the number of entries; 1 for an
/// empty list, which then stands for the site of id 1. The results of the host's services say
/// nothing: that the book is stored is read back.
BookOutcome RenumberSites(HWND dialog, i32 count, const char* file);

/// Copies the firewall of the current site into a record; a value longer than its field is cut.
void LoadFirewallFields(SiteRecord* site, const char* file);

}  // namespace quennet
