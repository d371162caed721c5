#pragma once
// The module's library, and the host that it is attached to for one run.

#include <functional>
#include <string>

#include "hostkit/host.h"

namespace cli {

/// The library next to the program, or where an installation puts it; its bare name, for the system
/// to find, when it is at neither place.
std::string ModulePath();

/// Loads the module, and runs `job` on a thread of its own while the calling thread serves
/// messages. `wrap`, if any, gives the function that stands in for the module's own. Settings stay
/// in memory. Exceptions of the job come out here.
void RunWithModule(hostkit::HostOptions options, const std::function<void(hostkit::Host&)>& job,
                   quennet::ModuleFunction (*wrap)(quennet::ModuleFunction) = nullptr);

}  // namespace cli
