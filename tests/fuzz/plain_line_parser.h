#pragma once
// A second parser of listing lines. It is slow and plain, to be held against the layouts rule by
// rule, and shares no code with the module's: the fuzzer looks for a line on which the two differ.

#include <cstddef>
#include <string>

#include "control/server_family.h"

struct PlainEntry {
    std::string line;  // the buffer as it is left behind, with a NUL at the end of each token
    std::size_t name;  // where the name begins in it
    quennet::u32 size;
    quennet::u16 date;
    quennet::u16 time;
    quennet::u16 attributes;
};

/// Reads a line that holds no NUL on the given day. `attributes` is the word before the call.
PlainEntry ReadLinePlainly(const SYSTEMTIME& today, const std::string& line,
                           quennet::u16 attributes, quennet::ServerFamily family);
