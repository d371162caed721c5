#include "hostkit/sites.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>

namespace hostkit {

std::vector<StoredSite> StoredSites(SettingsStore& settings) {
    std::vector<StoredSite> sites;
    for (;;) {
        const std::string number = std::to_string(sites.size() + 1);
        const auto value = [&](const char* letter) {
            return settings.Read(siteSection, letter + number).value_or("");
        };
        const std::string name = value("M");
        if (name.empty()) {
            return sites;
        }
        const auto options = static_cast<u32>(std::strtoul(value("O").c_str(), nullptr, 10));
        sites.push_back({name, value("H"), value("U"), value("D"), options});
    }
}

bool HasSite(SettingsStore& settings, std::string_view name) {
    const std::string wanted(name);
    const auto sites = StoredSites(settings);
    return std::any_of(sites.begin(), sites.end(), [&](const StoredSite& site) {
        return lstrcmpiA(site.name.c_str(), wanted.c_str()) == 0;
    });
}

}  // namespace hostkit
