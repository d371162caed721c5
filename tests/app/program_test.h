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

/// How a conversation on a Wire begins: the session stands in "/" behind it.
constexpr char loginScript[] = R"(
    <- 220 ready
    -> USER anonymous
    <- 230 in
    -> SYST
    <- 215 UNIX
    -> PWD
    <- 257 "/" it is
)";

class ProgramTest : public testing::Test {
  protected:
    ProgramTest() {
        options.root = served / "";
        home.Write(".netrc", "");
    }

    /// A file of the server's, in folders that are made when they are missing.
    void Make(const std::string& name, const std::string& bytes = "") const {
        std::filesystem::create_directories((served / name).parent_path());
        served.Write(name, bytes);
    }

    /// Permissions in octal digits.
    std::string ModeOf(const std::string& name) const {
        char text[8];
        std::snprintf(text, sizeof text, "%03o",
                      static_cast<unsigned>(std::filesystem::status(served / name).permissions()));
        return text;
    }
    void SetMode(const std::string& name, const std::string& mode) const {
        std::filesystem::permissions(
            served / name, static_cast<std::filesystem::perms>(std::stoi(mode, nullptr, 8)));
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

    /// Runs the program to its end. What it printed stands in `result`.
    void Run(const std::vector<std::string>& arguments, int status = exitDone) {
        result = Quennet(home, arguments);
        EXPECT_EQ(result.status, status) << testing::PrintToString(arguments) << result.errors;
    }
    void Fails(const std::vector<std::string>& arguments, const std::string& words = "",
               int status = exitFailed) {
        Run(arguments, status);
        EXPECT_THAT(result.errors, testing::HasSubstr(words)) << testing::PrintToString(arguments);
    }
    void IsUsage(const std::vector<std::string>& arguments) { Fails(arguments, "", exitUsage); }

    /// Nothing but these stands where the program ran, beside its .netrc.
    void ExpectAtHome(std::vector<std::string> names) const {
        names.insert(names.begin(), ".netrc");
        EXPECT_EQ(NamesIn(home / ""), names);
    }

    /// Nobody but the next client is let in.
    void RefuseReconnects() const {
        for (int occurrence = 2; occurrence < 40; ++occurrence) {
            server->Add({"", occurrence, loopback::FaultAction::reply, "421 gone", 0, {}});
        }
    }

    static std::string Bytes(std::size_t count) { return MixedBytes(count); }

    TempFolder served;
    TempFolder home;  // where the program runs
    loopback::Options options;
    std::unique_ptr<loopback::Server> server;
    RunResult result;
};
