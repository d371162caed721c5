#pragma once
// Logins through a firewall.

#include "control/session.h"

namespace quennet {

constexpr u32 firewallTypes = 7;  // type 0 and the six of the firewall dialog's list

/// The text of a firewall type, 1 to 6, in the firewall dialog's list.
const char* FirewallTypeText(u32 type);

/// Runs the login of `site.firewallType`, driven by the codes of the replies, from the welcome in
/// `firstCode` on. Returns the class that decides; 0 when the login failed.
int LoginThroughFirewall(Session* session);

}  // namespace quennet
