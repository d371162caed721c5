#include "fault.h"

namespace loopback {

void FaultTable::Add(Fault fault) {
    std::lock_guard guard(lock_);
    rules_.push_back({std::move(fault), 0});
}

void FaultTable::Clear() {
    std::lock_guard guard(lock_);
    rules_.clear();
}

std::vector<Fault> FaultTable::Take(std::string_view command) {
    std::lock_guard guard(lock_);
    std::vector<Fault> taken;
    for (Rule& rule : rules_) {
        bool everyCommand = rule.fault.command == "*" && !command.empty();
        if (rule.fault.command != command && !everyCommand) {
            continue;
        }
        ++rule.seen;
        if (rule.fault.occurrence == 0 || rule.fault.occurrence == rule.seen) {
            taken.push_back(rule.fault);
        }
    }
    return taken;
}

const Fault* FindFault(const std::vector<Fault>& faults, FaultAction action) {
    for (const Fault& fault : faults) {
        if (fault.action == action) {
            return &fault;
        }
    }
    return nullptr;
}

}  // namespace loopback
