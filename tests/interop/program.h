#pragma once
// The quennet program and the servers that it is run on.

#include "interop/servers.h"
#include "support/program_run.h"

namespace quennet::interop {

using ProgramResult = RunResult;
constexpr auto RunProgram = Quennet;

/// The URL of a path on a server, with the server's account. The path's characters are encoded
/// where a URL wants that; its slashes stand for themselves.
std::string UrlOf(const Server& server, const std::string& path);

}  // namespace quennet::interop
