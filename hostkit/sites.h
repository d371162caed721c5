#pragma once
// The site book, for those who only want to read it.

#include <string>
#include <string_view>
#include <vector>

#include "hostkit/settings.h"
#include "hostkit/types.h"

namespace hostkit {

constexpr char siteSection[] = "FTP";
constexpr char mailAddressKey[] = "MAILADDR";  // of the host's main section

/// A stored site, without its passwords.
struct StoredSite {
    std::string name;
    std::string host;
    std::string user;
    std::string directory;
    u32 options = 0;  // SiteOption bits
};

/// The sites in the order of the book.
std::vector<StoredSite> StoredSites(SettingsStore& settings);

/// Is there a site of that name, case ignored?
bool HasSite(SettingsStore& settings, std::string_view name);

}  // namespace hostkit
