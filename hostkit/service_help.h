#pragma once
// What the files of the services share.

#include <exception>
#include <memory>

#include "hostkit/host.h"
#include "hostkit/services.h"

namespace hostkit {

inline std::shared_ptr<SettingsStore> StoreOf(const char* file) {
    return Host::Current()->GetServices().StoreOf(file);
}

/// Keeps exceptions, which only want of memory raises here, on this side. The result is then the
/// type's zero.
template <typename Operation>
auto Guarded(Operation operation) -> decltype(operation()) {
    try {
        return operation();
    } catch (const std::exception&) {
        return decltype(operation())();
    }
}

}  // namespace hostkit
