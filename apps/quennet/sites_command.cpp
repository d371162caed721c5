#include <array>
#include <string>

#include "commands.h"
#include "failure.h"
#include "hostkit/sites.h"
#include "standard_output.h"
#include "stored_settings.h"
#include "terminal_text.h"

namespace cli {

namespace {

using hostkit::StoredSite;

struct OptionName {
    hostkit::u32 bit;
    const char* name;
};
constexpr OptionName optionNames[] = {
    {quennet::SiteOptionAnonymous, "anonymous"},
    {quennet::SiteOptionSavePassword, "password"},
    {quennet::SiteOptionFirewall, "firewall"},
    {quennet::SiteOptionPassive, "passive"},
};

/// The names of the options that are set, with commas between; "-" for none.
std::string OptionsText(hostkit::u32 options) {
    std::string text;
    for (const OptionName& option : optionNames) {
        if ((options & option.bit) != 0) {
            text += (text.empty() ? "" : ",") + std::string(option.name);
        }
    }
    return text.empty() ? "-" : text;
}

constexpr std::size_t columnCount = 5;
using Columns = std::array<std::string, columnCount>;

Columns ColumnsOf(const StoredSite& site, std::string (*fit)(std::string_view)) {
    return {fit(site.name), fit(site.host), fit(site.user), fit(site.directory),
            OptionsText(site.options)};
}

void PrintForScripts(const std::vector<StoredSite>& sites, StandardOutput& output) {
    for (const StoredSite& site : sites) {
        std::string line;
        for (const std::string& column : ColumnsOf(site, PorcelainText)) {
            line += (line.empty() ? "" : "\t") + column;
        }
        output.Write(line + "\n");
    }
}

void PrintTable(const std::vector<StoredSite>& sites, StandardOutput& output) {
    std::vector<Columns> rows;
    std::array<std::size_t, columnCount> widths = {};
    for (const StoredSite& site : sites) {
        rows.push_back(ColumnsOf(site, HarmlessText));
        for (std::size_t i = 0; i < columnCount; ++i) {
            widths[i] = std::max(widths[i], rows.back()[i].size());
        }
    }
    for (const Columns& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < columnCount; ++i) {
            const bool isLast = i + 1 == columnCount;
            line += row[i] + (isLast ? "\n" : std::string(widths[i] - row[i].size() + 2, ' '));
        }
        output.Write(line);
    }
}

}  // namespace

void RunSites(const Options& options) {
    hostkit::HostOptions host;
    UseStoredSettings(host);
    const std::vector<StoredSite> sites = hostkit::StoredSites(*host.settings);
    if (const std::string error = host.settings->ErrorText(); !error.empty()) {
        throw Failure(ExitStatus::failed, error);
    }
    StandardOutput output;
    if (options.porcelain) {
        PrintForScripts(sites, output);
    } else {
        PrintTable(sites, output);
    }
    output.Flush();
}

}  // namespace cli
