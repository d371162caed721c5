#include "listing.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace loopback {

namespace {

struct FormatRow {
    std::string_view name;
    ListFormat format;
    std::string_view system;
};

constexpr FormatRow formatRows[] = {
    {"unix", ListFormat::posix, "UNIX Type: L8"},
    {"dos", ListFormat::dos, "Windows_NT"},
    {"os2", ListFormat::os2, "OS/2 operating system"},
    {"mvs", ListFormat::mvs, "MVS is the operating system of this server"},
    {"mvs-members", ListFormat::mvsMembers, "MVS is the operating system of this server"},
};

constexpr const char* monthNames[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// Names come last on every line and are added by the caller, so the columns fit.
[[gnu::format(printf, 1, 2)]] std::string Columns(const char* format, ...) {
    char text[200];
    va_list values;
    va_start(values, format);
    std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
    return text;
}

std::tm PartsOf(std::time_t time) {
    std::tm parts{};
    gmtime_r(&time, &parts);
    return parts;
}

std::string Shown(const std::string& name) {
    std::string shown = name;
    std::replace_if(
        shown.begin(), shown.end(),
        [](char letter) { return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7F; },
        '?');
    return shown;
}

unsigned long long Cut(std::uint64_t size, std::uint64_t most) {
    return std::min(size, most);
}

std::string PermissionText(std::uint32_t mode) {
    std::string text = S_ISDIR(mode) ? "d" : S_ISLNK(mode) ? "l" : "-";
    for (int bit = 8; bit >= 0; --bit) {
        text += (mode >> bit & 1) != 0 ? "xwr"[bit % 3] : '-';
    }
    return text;
}

std::string UnixLine(const ListedFile& file, std::time_t now) {
    constexpr std::time_t halfAYear = 182 * 24 * 3600;
    std::tm time = PartsOf(file.modified);
    bool recent = std::abs(static_cast<long long>(now - file.modified)) < halfAYear;
    std::string when = recent ? Columns("%02d:%02d", time.tm_hour, time.tm_min)
                              : Columns("%5d", time.tm_year + 1900);
    std::string line =
        Columns("%s %3u ftp      ftp      %8llu %s %2d %s ", PermissionText(file.mode).c_str(),
                file.links, static_cast<unsigned long long>(file.size), monthNames[time.tm_mon],
                time.tm_mday, when.c_str()) +
        Shown(file.name);
    return file.linkTarget.empty() ? line : line + " -> " + Shown(file.linkTarget);
}

std::string DosLine(const ListedFile& file) {
    std::tm time = PartsOf(file.modified);
    int hour = time.tm_hour % 12;
    std::string line =
        Columns("%02d-%02d-%02d  %02d:%02d%s", time.tm_mon + 1, time.tm_mday, time.tm_year % 100,
                hour == 0 ? 12 : hour, time.tm_min, time.tm_hour < 12 ? "AM" : "PM");
    line += S_ISDIR(file.mode) ? Columns("       <DIR>          ")
                               : Columns("%21llu ", static_cast<unsigned long long>(file.size));
    return line + Shown(file.name);
}

std::string Os2Line(const ListedFile& file) {
    std::tm time = PartsOf(file.modified);
    bool directory = S_ISDIR(file.mode);
    return Columns("%17llu%s   %02d-%02d-%02d   %02d:%02d  ",
                   directory ? 0ull : static_cast<unsigned long long>(file.size),
                   directory ? "           DIR" : "      A       ", time.tm_mon + 1, time.tm_mday,
                   time.tm_year % 100, time.tm_hour, time.tm_min) +
           Shown(file.name);
}

// The block size stands for the size, the organisation PO for a directory. The name is at
// offset 56.
std::string DatasetLine(const ListedFile& file) {
    std::tm time = PartsOf(file.modified);
    bool directory = S_ISDIR(file.mode);
    return Columns("SMS001 3390   %04d/%02d/%02d  1   15  FB      80%7llu %s  ",
                   time.tm_year + 1900, time.tm_mon + 1, time.tm_mday,
                   directory ? 6160ull : Cut(file.size, 999'999), directory ? "PO" : "PS") +
           Shown(file.name);
}

std::string MemberLine(const ListedFile& file) {
    std::tm time = PartsOf(file.modified);
    int year = time.tm_year + 1900;
    unsigned long long size = Cut(file.size, 99'999);
    return Columns("%-9s 01.00 %04d/%02d/%02d %04d/%02d/%02d %02d:%02d %5llu %5llu     0 FTP",
                   Shown(file.name).c_str(), year, time.tm_mon + 1, time.tm_mday, year,
                   time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, size, size);
}

bool CanBeMember(const ListedFile& file) {
    return !S_ISDIR(file.mode) && file.name.size() <= 8 && file.name.find(' ') == std::string::npos;
}

std::string HeaderLine(ListFormat format) {
    switch (format) {
        case ListFormat::posix:
            return "total 0\r\n";
        case ListFormat::mvs:
            return "Volume Unit    Referred Ext Used Recfm Lrecl BlkSz Dsorg Dsname\r\n";
        case ListFormat::mvsMembers:
            return " Name     VV.MM   Created       Changed      Size  Init   Mod   Id\r\n";
        default:
            return "";
    }
}

std::string Line(ListFormat format, const ListedFile& file, std::time_t now) {
    switch (format) {
        case ListFormat::dos:
            return DosLine(file);
        case ListFormat::os2:
            return Os2Line(file);
        case ListFormat::mvs:
            return DatasetLine(file);
        case ListFormat::mvsMembers:
            return MemberLine(file);
        default:
            return UnixLine(file, now);
    }
}

}  // namespace

std::optional<ListFormat> ListFormatFromName(std::string_view name) {
    for (const FormatRow& row : formatRows) {
        if (row.name == name) {
            return row.format;
        }
    }
    return std::nullopt;
}

std::string_view SystemText(ListFormat format) {
    for (const FormatRow& row : formatRows) {
        if (row.format == format) {
            return row.system;
        }
    }
    return {};
}

std::string FormatListing(ListFormat format, const std::vector<ListedFile>& files,
                          std::time_t now) {
    std::string text = HeaderLine(format);
    for (const ListedFile& file : files) {
        if (format != ListFormat::mvsMembers || CanBeMember(file)) {
            text += Line(format, file, now) + "\r\n";
        }
    }
    return text;
}

std::string FormatNames(const std::vector<ListedFile>& files) {
    std::string text;
    for (const ListedFile& file : files) {
        text += Shown(file.name) + "\r\n";
    }
    return text;
}

}  // namespace loopback
