#pragma once

#include "failure.h"
#include "quennet_terminal.h"

namespace cli {

/// Shows windows in the terminal while the object lives.
class TerminalDisplay {
  public:
    TerminalDisplay() {
        if (!quennet::UseTerminalDisplay()) {
            throw Failure(ExitStatus::failed, "the dialog wants a terminal");
        }
    }
    ~TerminalDisplay() { quennet::UseHeadlessDisplay(); }
    TerminalDisplay(const TerminalDisplay&) = delete;
    TerminalDisplay& operator=(const TerminalDisplay&) = delete;
};

}  // namespace cli
