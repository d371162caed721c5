// The site book in a settings file of any bytes: what is read of a site, and what is left of the
// book when the connection dialog closes with OK.
//
// The first line of the input is the dialog's list, a digit for the id of each entry; the rest is
// the file.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/expect.h"
#include "host/services.h"
#include "hostkit/services.h"
#include "hostkit/sites.h"
#include "sites/connect_controls.h"
#include "sites/site_store.h"

using namespace quennet;
using hostkit::IniDocument;

namespace {

constexpr char letters[] = "MHUWDOGNPT";
constexpr char copySection[] = "Bak";
constexpr char file[] = "settings";

IniDocument document;
std::string listEntries;

/// A digit's value.
i32 IdOf(char entry) {
    return entry & 15;
}

void FillBuffer(char* buffer, u32 size, const std::string& text) {
    const std::size_t count = std::min<std::size_t>(text.size(), size - 1);
    std::memcpy(buffer, text.data(), count);
    buffer[count] = 0;
}

extern "C" {
static void ReadSetting(const char* section, const char* key, const char*, char* buffer, u32 size,
                        const char*) {
    FillBuffer(buffer, size, document.Value(section, key).value_or(""));
}
static void WriteSetting(const char* section, const char* key, const char* value, const char*) {
    document.SetValue(section, key, value);
}
static void ReadSection(const char* section, char* buffer, u32 size, const char*) {
    FillBuffer(buffer, size, document.Section(section));
}
static void WriteSection(const char* section, const char* text, const char*) {
    document.ReplaceSection(section, text);
}
}

struct BookHost {
    CoreServices core = {};
    ShellServices shell = {};
    u32 passwordKey = 0x54510C9C;
    i32 currentSiteId = 0;

    BookHost() {
        hostkit::FillMemoryServices(core, shell);
        using hostkit::Put;
        Put<ShellReadSettingFunction, ReadSetting>(shell, ShellService::readSetting);
        Put<ShellWriteSettingFunction, WriteSetting>(shell, ShellService::writeSetting);
        Put<ShellReadSectionFunction, ReadSection>(shell, ShellService::readSection);
        Put<ShellWriteSectionFunction, WriteSection>(shell, ShellService::writeSection);
        Put(shell, ShellService::currentSiteId, &currentSiteId);
        hostTables.core = &core;
        hostTables.shell = &shell;
        hostTables.passwordKey = &passwordKey;
    }
};

/// What the services give the module of a value: a C text of at most 259 bytes.
std::string PlainValue(const IniDocument& from, char letter, i32 id) {
    const std::string key = letter + std::to_string(id);
    return from.Value(siteSection, key).value_or("").substr(0, settingSize - 1).c_str();
}

u32 PlainNumber(const std::string& text) {
    const long long number = std::strtoll(text.c_str(), nullptr, 10);
    return static_cast<u32>(std::clamp<long long>(number, INT32_MIN, INT32_MAX));
}

using Book = std::map<std::string, std::string>;

/// What the book is after OK.
Book PlainBook(const IniDocument& before) {
    const IniDocument copy("[FTP]\n" + before.Section(siteSection));
    const auto value = [&](char letter, i32 id) { return PlainValue(copy, letter, id); };
    Book book;
    int number = 1;
    for (const char entry : listEntries.empty() ? "1" : listEntries) {
        const i32 id = IdOf(entry);
        if (value('M', id).empty()) {
            continue;
        }
        const bool keepsPassword = (PlainNumber(value('O', id)) & SiteOptionSavePassword) != 0;
        for (const char letter : std::string(letters)) {
            if (!value(letter, id).empty() && (letter != 'W' || keepsPassword)) {
                book[letter + std::to_string(number)] = value(letter, id);
            }
        }
        ++number;
    }
    return book;
}

std::string WithoutBook(IniDocument from) {
    from.ReplaceSection(siteSection, "");
    from.ReplaceSection(copySection, "");
    return from.Text();
}

void Renumber(HWND dialog) {
    IniDocument before = document;
    const Book expected = PlainBook(before);
    const auto count = static_cast<i32>(std::max<std::size_t>(listEntries.size(), 1));
    const BookOutcome outcome = RenumberSites(dialog, count, file);
    if (before.Text().find('\0') != std::string::npos) {
        // The text of the section lacks what holds a NUL, so the book is not taken apart.
        const bool isKept = document.Section(siteSection) == before.Section(siteSection);
        Expect(isKept || outcome == BookOutcome::stored);
        return;
    }
    Expect(outcome == BookOutcome::stored);
    const std::vector<std::string> keys = document.Keys(siteSection);
    Expect(keys.size() == expected.size());
    for (const auto& [key, value] : expected) {
        Expect(document.Value(siteSection, key) == value);
    }
    Expect(document.Section(copySection).empty());
    Expect(WithoutBook(std::move(document)) == WithoutBook(std::move(before)));
}

void ReadFirewall() {
    const auto site = std::make_unique<SiteRecord>();
    std::memset(static_cast<void*>(site.get()), 'A', sizeof *site);
    LoadFirewallFields(site.get(), file);
    const auto value = [&](char letter) { return PlainValue(document, letter, CurrentSiteId()); };
    const auto holds = [](const auto& field, const std::string& text) {
        return std::memchr(field, 0, sizeof field) != nullptr &&
               text.substr(0, sizeof field - 1) == field;
    };
    Expect(holds(site->firewallHost, value('G')) && holds(site->firewallUser, value('N')));
    Expect(std::memchr(site->firewallPassword, 0, sizeof site->firewallPassword) != nullptr);
    Expect(site->firewallType == PlainNumber(value('T')));
    Expect(site->name[0] == 'A' && site->host[0] == 'A' && site->siteOptions == 0x41414141);
}

}  // namespace

/// The dialog's list.
LRESULT WINAPI SendDlgItemMessageA(HWND, INT id, UINT message, WPARAM index, LPARAM) {
    Expect(id == siteList && message == LB_GETITEMDATA);
    return index < listEntries.size() ? IdOf(listEntries[index]) : LB_ERR;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static BookHost host;
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t end = input.find('\n');
    constexpr std::size_t mostEntries = 6;
    if (end > mostEntries) {
        return -1;
    }
    listEntries = input.substr(0, end);
    document = IniDocument(std::string_view(input).substr(end + 1));
    CurrentSiteId() = listEntries.empty() ? 1 : IdOf(listEntries[0]);
    ReadFirewall();
    Renumber(nullptr);
    return 0;
}
