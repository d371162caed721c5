#pragma once
// Directory listings in the formats of several server families.

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace loopback {

enum class ListFormat { posix, dos, os2, mvs, mvsMembers };

/// "unix", "dos", "os2", "mvs", "mvs-members"; nothing for any other name.
std::optional<ListFormat> ListFormatFromName(std::string_view name);

/// The text behind the code of the reply to SYST, such as "UNIX Type: L8".
std::string_view SystemText(ListFormat format);

/// What a listing says of one file.
struct ListedFile {
    std::string name;
    std::string linkTarget;  // empty: no link
    std::uint32_t mode = 0;  // type and permission bits, as stat gives them
    std::uint32_t links = 1;
    std::uint64_t size = 0;
    std::time_t modified = 0;  // shown in UTC
};

/// Writes a whole listing with CR LF line ends, header line included. `now` decides whether the
/// Unix format shows the year or the time. The formats, by example:
///
///     -rw-r--r--   1 ftp      ftp          1024 Mar  5 12:34 readme.txt
///     01-15-02  03:45PM       <DIR>          Program Files
///                  1234      A          01-15-02   12:34  my file.txt
///     SMS001 3390   2001/07/19  1   15  FB      80  6160  PO  USER.DATA
///     MEMBER1   01.03 2001/07/19 2001/07/19 14:22    20    20     0 USER
///
/// Sizes that do not fit the columns of the MVS formats are cut to the largest that does. A member
/// list names files of at most 8 bytes only. Control characters in names show as '?'.
std::string FormatListing(ListFormat format, const std::vector<ListedFile>& files, std::time_t now);

/// Names alone, one a line.
std::string FormatNames(const std::vector<ListedFile>& files);

}  // namespace loopback
