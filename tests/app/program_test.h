#pragma once
// The program against the loopback server, which serves a folder of the test's own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "loopback/server.h"
#include "support/program_run.h"

constexpr int exitDone = 0;
constexpr int exitFailed = 1;
constexpr int exitUsage = 2;
constexpr int exitNoConnection = 3;

class ProgramTest : public testing::Test {
  protected:
    ProgramTest() {
        options.root = served / "";
        home.Write(".netrc", "");
    }

    void Serve() { server = std::make_unique<loopback::Server>(options); }

    /// The URL of a path, encoded already.
    std::string Url(const std::string& path, const std::string& user = "") const {
        return "ftp://" + (user.empty() ? "" : user + "@") +
               "127.0.0.1:" + std::to_string(server->Port()) + "/" + path;
    }

    bool Heard(const std::string& command) const {
        const std::vector<std::string> commands = server->Commands();
        return std::find(commands.begin(), commands.end(), command) != commands.end();
    }

    static std::string Bytes(std::size_t count) { return MixedBytes(count); }

    TempFolder served;
    TempFolder home;  // where the program runs
    loopback::Options options;
    std::unique_ptr<loopback::Server> server;
};
