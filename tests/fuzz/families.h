#pragma once
// How the first byte of an input picks the server's family: 'a' the first one below, and so on.

#include <cstdint>
#include <iterator>

#include "control/server_family.h"

constexpr quennet::ServerFamily fuzzedFamilies[] = {
    quennet::ServerFamily::unknown,    quennet::ServerFamily::mvsDatasets,
    quennet::ServerFamily::mvsMembers, quennet::ServerFamily::os2,
    quennet::ServerFamily::exos,       quennet::ServerFamily::unixLike,
    quennet::ServerFamily::multiNet,   quennet::ServerFamily::vms,
    quennet::ServerFamily::windowsNt,  quennet::ServerFamily::windowsNtType,
    quennet::ServerFamily::pc,
};

inline quennet::ServerFamily PickFamily(std::uint8_t letter) {
    return fuzzedFamilies[(letter + std::size(fuzzedFamilies) * 9 - 'a') %
                          std::size(fuzzedFamilies)];
}
