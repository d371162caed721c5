#pragma once
// Lines of a LIST reply: where one ends, and what it tells of an entry.

#include "control/server_family.h"

namespace quennet {

/// Takes the next line of a listing.
///
/// `cursor` points to the read position in the NUL-terminated listing and moves behind the line and
/// every line end that follows it. `buffer` receives the line without its end, NUL-terminated: at
/// most `limit` bytes and the NUL. What a longer line has beyond them is the next line.
void NextListLine(const char** cursor, char* buffer, u32 limit);

/// Reads one line in the layout of a Unix, a DOS/NT or an OS/2 server; the line itself tells which.
///
/// The NUL-terminated `line` is changed in place: tokens are cut apart, the blanks around a link
/// arrow are taken out, and DOS/NT and OS/2 lines get "drw" or "-rw" and a NUL over their first
/// four bytes, so that the first byte tells a directory (d), a link (l) and a file (-) in every
/// layout. The families os2 and windowsNt let names on lines of these two layouts hold blanks.
///
/// Returns the name, a pointer into `line` and never null. `size` is in bytes, modulo 2^32; `date`
/// and `time` are DOS words, 0 and 0 without a valid date. `attributes` is left as it was on a line
/// that tells none: a permission string replaces it by attributePermissions, attributeLink and nine
/// permission bits, OS/2 letters add bits of theirs. A line of an unknown layout gives its first
/// word for a name and zeros. The local date completes dates that have no year.
char* ParseListLine(char* line, u32* size, u16* date, u16* time, u16* attributes,
                    ServerFamily serverType);

/// The same on a given day. Of `today`, only the year, month and day count.
char* ParseListLineOn(const SYSTEMTIME& today, char* line, u32* size, u16* date, u16* time,
                      u16* attributes, ServerFamily serverType);

/// Reads «month-day-year» into `calendar`. A part that is missing or out of range leaves its field.
/// A year below 100 belongs to the century of the year that `calendar` has; one of 100 or more
/// counts from 1900 if that ends by 2107, so 102 is 2002.
void ParseDashDate(const char* token, SYSTEMTIME* calendar);

/// Reads «hour:minute», with a PM behind two digits of the minute, into `calendar`. Hours are taken
/// as they are, but those of 24 and more lose 12. Returns whether the token has a colon; without
/// one nothing is stored.
bool ParseClockTime(const char* token, SYSTEMTIME* calendar);

}  // namespace quennet
