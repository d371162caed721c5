#pragma once
// A change of a session's directory on a thread of the module, by message 46: unlike that of
// message 29 it tells of its end whether it has succeeded or not.

#include <string>

#include "hostkit/host.h"

namespace hostkit {

/// Starts a change. Its end comes to the panels with the cookie; to none when the module could not
/// start it.
void StartDirectoryChange(const Host& host, const quennet::FtpHandle* handle,
                          const std::string& directory, u16 cookie);

/// Takes the call of ShellSetForeground that ends a change, and tells the panels. False on a thread
/// that carries out none.
bool EndDirectoryChange();

}  // namespace hostkit
