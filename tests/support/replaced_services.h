#pragma once
// The host's services with some of them replaced, while it stands.

#include <utility>

#include "host/services.h"

class ReplacedServices {
  public:
    ReplacedServices() : services_(*quennet::hostTables.shell) {
        hosts = std::exchange(quennet::hostTables.shell, &services_);
    }
    ~ReplacedServices() { quennet::hostTables.shell = hosts; }
    ReplacedServices(const ReplacedServices&) = delete;
    ReplacedServices& operator=(const ReplacedServices&) = delete;

    template <typename Function>
    void Replace(quennet::ShellService service, Function function) {
        services_.words[static_cast<quennet::u32>(service)] =
            reinterpret_cast<quennet::HostWord>(function);
    }

    /// The host's own, for what stands in its place.
    template <typename Function>
    static Function Hosts(quennet::ShellService service) {
        return reinterpret_cast<Function>(hosts->words[static_cast<quennet::u32>(service)]);
    }

  private:
    static inline const quennet::ShellServices* hosts = nullptr;
    quennet::ShellServices services_;
};
