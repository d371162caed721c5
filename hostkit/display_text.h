#pragma once
// How the host writes paths, dates, numbers and attributes.

#include <string>
#include <string_view>

#include "hostkit/types.h"

namespace hostkit {

/// Offset of the last component: behind the last '/'; in a path without one, behind the last '\' or
/// the drive's ':'. A «./» that protects a name's blank or tilde is part of it (ServerPath), and a
/// path that begins with «/./» is one name (Connection::Upload).
std::size_t NameOffset(std::string_view path);

/// Offset of the dot that begins the extension of a name, or of its end. A dot in front begins
/// none.
std::size_t ExtensionOffset(std::string_view name);

/// «1,234,567».
std::string NumberText(u64 number);

/// «2024-05-17 09:30», local to whoever gave it; empty for a date of 0.
std::string DateText(u16 date, u16 time);

/// «drwxr-x---» for a word that comes from a permission string, else the letters of the set DOS
/// attributes.
std::string AttributeText(u16 attributes);

}  // namespace hostkit
