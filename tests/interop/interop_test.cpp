#include "interop/interop_test.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <numeric>
#include <sstream>
#include <thread>

namespace quennet::interop {

using hostkit::Connection;
using hostkit::RunJob;

namespace {

std::vector<InteropCase> Cases(std::initializer_list<bool> ways) {
    std::vector<InteropCase> cases;
    for (ServerKind kind : allServerKinds) {
        for (bool passive : ways) {
            cases.push_back({kind, passive});
        }
    }
    return cases;
}

constexpr const char* stepText = "this and nothing else\n";

}  // namespace

bool SkipsAreFailures() {
    const char* value = std::getenv("QUENNET_REQUIRE_INTEROP");
    return value != nullptr && std::string_view(value) == "1";
}

std::ostream& operator<<(std::ostream& stream, const InteropCase& interopCase) {
    return stream << ServerName(interopCase.kind) << (interopCase.passive ? "_passive" : "_active");
}

std::string CaseName(const testing::TestParamInfo<InteropCase>& info) {
    std::ostringstream name;
    name << info.param;
    std::string text = name.str();
    std::erase(text, '-');
    return text;
}

std::vector<InteropCase> AllCases() {
    return Cases({true, false});
}

std::vector<InteropCase> PassiveCases() {
    return Cases({true});
}

hostkit::ConnectionOptions Transcript::Options() {
    hostkit::ConnectionOptions options;
    options.console = [this](const std::string& line) {
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start_;
        const std::lock_guard lock(mutex_);
        lines_.push_back(std::to_string(time.count()) + "  " + hostkit::HarmlessLine(line) + "\n");
    };
    return options;
}

int Transcript::Count(const std::string& text) const {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(std::ranges::count_if(
        lines_, [&](const std::string& line) { return line.find(text) != line.npos; }));
}

std::string Transcript::Text() const {
    const std::lock_guard lock(mutex_);
    return std::accumulate(lines_.begin(), lines_.end(), std::string());
}

InteropTest::InteropTest() : host(loop, hostkit::HostOptions()) {}

void InteropTest::SetUp() {
    std::filesystem::create_directory(served / "sub");
    WriteBytes(served / "step.txt", stepText);
    server.emplace(GetParam().kind, served.Path());
    if (!server->Running()) {
        if (server->Unavailable() && !SkipsAreFailures()) {
            GTEST_SKIP() << server->Failure();
        }
        FAIL() << server->Failure();
    }
    host.LoadModule(QUENNET_MODULE);
}

void InteropTest::TearDown() {
    if (HasFailure() && server) {
        std::cerr << "---- the connection's log\n"
                  << transcript.Text() << "---- the server's log\n"
                  << server->Log() << "----\n";
    }
}

hostkit::ConnectRequest InteropTest::Request() const {
    hostkit::ConnectRequest request;
    request.host = "127.0.0.1:" + std::to_string(server->Port());
    request.user = server->GetAccount().user;
    request.password = server->GetAccount().password;
    request.passive = GetParam().passive;
    return request;
}

void InteropTest::Converse(const std::function<void(Connection& connection)>& conversation) {
    const hostkit::ConnectRequest request = Request();
    RunJob(loop, [&] {
        Connection connection(host, transcript.Options());
        const hostkit::ConnectResult connected = connection.Connect(request);
        ASSERT_TRUE(connected.Connected()) << connected.text;
        conversation(connection);
        connection.Disconnect();
    });
}

hostkit::TransferResult InteropTest::Download(Connection& connection, const std::string& name,
                                              hostkit::TransferOperation& operation) {
    hostkit::DownloadRequest request;
    request.source = name;
    request.destination = local / name;
    std::error_code missing;
    const std::uintmax_t size = std::filesystem::file_size(served / name, missing);
    request.size = missing ? 0 : size;
    return connection.Download(request, operation);
}

hostkit::TransferResult InteropTest::Download(Connection& connection, const std::string& name) {
    hostkit::TransferOperation operation = GoOn();
    return Download(connection, name, operation);
}

void InteropTest::ExpectInStep(Connection& connection) {
    const std::string home = connection.Directory();
    for (int round = 0; round < 2; ++round) {
        const hostkit::DirectoryResult directory = connection.CheckDirectory("sub");
        EXPECT_TRUE(directory.Done()) << directory.text;
        EXPECT_TRUE(directory.directory.ends_with("/sub")) << directory.directory;
        EXPECT_EQ(connection.CheckDirectory(home).directory, home);

        const hostkit::TransferResult missing = Download(connection, "no such file");
        EXPECT_FALSE(missing.Done());
        EXPECT_EQ(missing.text.substr(0, 3), "550") << missing.text;

        const hostkit::TransferResult present = Download(connection, "step.txt");
        EXPECT_TRUE(present.Done()) << present.text;
        EXPECT_EQ(ReadBytes(local / "step.txt"), stepText);
        std::filesystem::remove(local / "step.txt");
    }
}

std::map<std::string, Listed> ByName(const hostkit::ListResult& result) {
    std::map<std::string, Listed> entries;
    for (const hostkit::ListingEntry& entry : result.entries) {
        if (entry.name != "..") {
            entries[std::string(entry.name)] = {entry.size, entry.IsDirectory()};
        }
    }
    return entries;
}

hostkit::TransferOperation GoOn() {
    hostkit::TransferOperation operation;
    operation.confirm = [](const TransferItem&, u32) { return hostkit::ConfirmAnswer::goOn; };
    return operation;
}

RepeatedAbort::RepeatedAbort(Connection& connection, std::chrono::microseconds delay)
    : thread_([this, &connection, delay] {
          std::this_thread::sleep_for(delay);
          while (!ended_) {
              connection.Abort();
              std::this_thread::sleep_for(std::chrono::milliseconds(250));
          }
      }) {}

RepeatedAbort::~RepeatedAbort() {
    ended_ = true;
    thread_.join();
}

}  // namespace quennet::interop
