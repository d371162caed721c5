#pragma once
// What the files of the services share.

#include <memory>

#include "hostkit/host.h"
#include "hostkit/services.h"

namespace hostkit {

inline std::shared_ptr<SettingsStore> StoreOf(const char* file) {
    return Host::Current()->GetServices().StoreOf(file);
}

}  // namespace hostkit
