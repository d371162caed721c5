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

/// The book's section is at most this long, with a terminator.
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
bool WriteSiteValue(char letter, i32 id, const char* value, const char* file);

/// The number that a text begins with, 0 for none; the nearest one when it is out of range.
i32 NumberFromText(const char* text);
/// A number as a decimal text.
struct NumberText {
    explicit NumberText(u32 number);
    char text[16];
};

/// The whole text of a section in a block for CoreFree, however long; null without memory.
char* ReadWholeSection(const char* section, const char* file);

enum class BookOutcome {
    stored,
    failed,    // the section is as it was before, its copy stays in section "Bak"
    tooLarge,  // the section is renumbered, and does not fit `siteSectionSize`
};

/// Gives the sites in the connection dialog's list new numbers, 1 and up, in the order of the list.
/// Only what the list names stays in the book: deleted sites, those without a name, empty values
/// and passwords that are not to be kept are left out. `count` is the number of entries; 1 for an
/// empty list, which then stands for the site of id 1.
BookOutcome RenumberSites(HWND dialog, i32 count, const char* file);

/// Copies the firewall of the current site into a record; a value longer than its field is cut.
void LoadFirewallFields(SiteRecord* site, const char* file);

}  // namespace quennet
