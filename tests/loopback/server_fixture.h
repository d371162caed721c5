#pragma once
// A server over a folder of its own, which goes with the test.

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string_view>

#include "loopback/raw_client.h"
#include "loopback/server.h"
#include "support/temp_folder.h"

class ServerTest : public testing::Test {
  protected:
    ServerTest() {
        std::filesystem::create_directory(root);
        options.root = root;
    }

    void Serve() { server.emplace(options); }

    void Write(const std::filesystem::path& path, std::string_view bytes) {
        std::filesystem::create_directories(path.parent_path());
        WriteWhole(path, bytes);
    }

    TempFolder folder;
    const std::filesystem::path base = folder / "";  // what a client must never see, except for
    const std::filesystem::path root = base / "root";
    loopback::Options options;
    std::optional<loopback::Server> server;
};
