#pragma once
// How the fuzzers of the listing read their input: the first byte picks the server's family, '0'
// the first of the list below; what follows is the server's text.

#include <cstddef>
#include <cstdint>
#include <string>

#include "control/server_family.h"
#include "fuzz/expect.h"

constexpr quennet::ServerFamily fuzzedFamilies[] = {
    quennet::ServerFamily::unixLike,   quennet::ServerFamily::os2,
    quennet::ServerFamily::windowsNt,  quennet::ServerFamily::mvsDatasets,
    quennet::ServerFamily::mvsMembers, quennet::ServerFamily::unknown,
};

struct ListingInput {
    quennet::ServerFamily family;
    std::string text;

    ListingInput(const std::uint8_t* data, std::size_t size)
        : family(fuzzedFamilies[size > 0 ? data[0] % std::size(fuzzedFamilies) : 0]),
          text(reinterpret_cast<const char*>(data) + (size > 0), size - (size > 0)) {}
};
