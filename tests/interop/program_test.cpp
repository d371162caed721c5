// The quennet program against real servers: what it prints, what it leaves, and its exit status.

#include "interop/program.h"
#include <cstdio>

#include "interop/interop_test.h"

namespace quennet::interop {
namespace {

namespace fs = std::filesystem;

constexpr int exitDone = 0;

class InteropProgram : public InteropTest {
  protected:
    ProgramResult Run(std::vector<std::string> arguments) {
        if (!GetParam().passive) {
            arguments.insert(arguments.begin(), "--active");
        }
        ProgramResult result = RunProgram(local.Path(), arguments);
        if (HasFailure()) {
            std::cerr << result.errors;
        }
        return result;
    }

    std::string Url(const std::string& path) const { return UrlOf(*server, path); }
};
INSTANTIATE_TEST_SUITE_P(Servers, InteropProgram, testing::ValuesIn(AllCases()), CaseName);

// A thousand files in a hundred folders go up, come down, change their permissions, and go; one
// moves.
TEST_P(InteropProgram, WholeTreesAreCopiedChangedAndRemoved) {
    if (server->GetAccount().user.empty() && !SkipsAreFailures()) {
        GTEST_SKIP() << "permissions are for accounts, which this server has for root only";
    }
    fs::permissions(served.Path(), fs::perms::all);
    const char* const names[] = {"plain",    "a blank", "-dash", ".dot",   "..dots",
                                 "\xC3\xA4", "~tilde",  "100%",  "a\"b\"", "#?&"};
    for (int folder = 0; folder < 100; ++folder) {
        const fs::path path = local / "tree" / (names[folder % 10] + std::to_string(folder / 10)) /
                              (folder % 3 == 0 ? "-deep er" : "");
        fs::create_directories(path);
        for (const char* name : names) {
            WriteBytes(path / name, MixedBytes(static_cast<std::size_t>(folder) * 17));
        }
    }
    ProgramResult result = Run({"put", "-r", "tree", Url("")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_TRUE(TreeOf(local / "tree") == TreeOf(served / "tree")) << result.errors;

    fs::last_write_time(served / "tree" / "plain0" / "-deep er" / "plain",
                        fs::file_time_type::clock::now() - std::chrono::years(20));
    result = Run({"get", "-r", "-o", "back", Url("tree")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_TRUE(TreeOf(local / "back") == TreeOf(local / "tree"));
    // A listing tells minutes, and of an old file days.
    for (const auto& [path, minutes] :
         {std::pair("plain0/-deep er/plain", 24 * 60), {"-dash2/.dot", 1}}) {
        const auto lost = fs::last_write_time(served / "tree" / path) -
                          fs::last_write_time(local / "back" / path);
        EXPECT_TRUE(lost >= lost.zero() && lost < std::chrono::minutes(minutes)) << path;
    }

    fs::create_directory(served / "kept");
    WriteBytes(served / "kept" / "file", "kept");
    fs::create_symlink("../kept", served / "tree" / "link");
    result = Run({"chmod", "-R", "go-rwx", Url("tree")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_EQ(fs::status(served / "tree" / "plain1" / ".dot").permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_NE(fs::status(served / "kept" / "file").permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    result = Run({"mv", Url("tree/plain1/.dot"), "../../moved"});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_EQ(ReadBytes(served / "moved"), ReadBytes(local / "tree" / "plain1" / ".dot"));
    result = Run({"rm", "-r", Url("tree")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    EXPECT_FALSE(fs::exists(served / "tree"));
    EXPECT_EQ(ReadBytes(served / "kept" / "file"), "kept");
}

/// Searches, held against the system's own find.
class InteropFind : public InteropProgram {
  protected:
    /// Paths below the tree, one a line, as sorted names of what they really are: some servers name
    /// a directory that a link led to by its own path.
    std::vector<std::string> RealPaths(const std::string& lines, const std::string& prefix) const {
        std::vector<std::string> paths;
        std::istringstream stream(lines);
        for (std::string line; std::getline(stream, line);) {
            const std::size_t at = line.find(prefix);
            if (at == line.npos) {
                ADD_FAILURE() << line;
                continue;
            }
            const fs::path path = served / "tree" / line.substr(at + prefix.size());
            std::error_code error;
            paths.push_back(fs::canonical(path.parent_path(), error) / path.filename());
            EXPECT_FALSE(error) << line;
        }
        std::ranges::sort(paths);
        return paths;
    }

    std::vector<std::string> Expected(const std::string& tests) const {
        const std::string command = "cd '" + (served / "tree").string() +
                                    "' && find -L . -mindepth 1 " + tests + " -printf '/%P\\n'";
        FILE* pipe = popen(command.c_str(), "r");
        std::string lines;
        for (int byte; pipe != nullptr && (byte = std::fgetc(pipe)) != EOF;) {
            lines.push_back(static_cast<char>(byte));
        }
        EXPECT_EQ(pipe != nullptr ? pclose(pipe) : -1, 0) << command;
        return RealPaths(lines, "/");
    }
};
INSTANTIATE_TEST_SUITE_P(Servers, InteropFind, testing::ValuesIn(PassiveCases()), CaseName);

TEST_P(InteropFind, HitsAreThoseOfTheSystemsFind) {
    const char* const names[] = {"plain.txt", "semi;colon.txt", "q\"uote.TXT",  "<a&b>.htm",
                                 "a blank",   "-dash.txt",      "\xC3\xA4.txt", ".hidden.txt"};
    const std::string longName(150, 'l');
    const std::string folders[] = {"",
                                   "sub",
                                   "sub/in;ner",
                                   "sub/<&>",
                                   "other.txt",
                                   "other.txt/deep/er",
                                   "q\"uo\"/te\"",
                                   longName + "/" + longName};
    for (const std::string& folder : folders) {
        fs::create_directories(served / "tree" / folder);
        for (const char* name : names) {
            WriteBytes(served / "tree" / folder / name, name);
        }
    }
    fs::create_directories(served / "tree" / "empty");
    fs::create_symlink("../other.txt", served / "tree" / "sub" / "to-folder.txt");
    fs::create_symlink("plain.txt", served / "tree" / "sub" / "to-file.txt");
    fs::create_symlink("nowhere", served / "tree" / "broken.txt");
    struct Case {
        std::vector<std::string> words;
        const char* tests;
        std::size_t least;
    };
    const Case cases[] = {
        {{"-a"}, "", 70},
        {{"-a", "--no-recurse"}, "-maxdepth 1", 12},
        {{"-a", "-m", "*.txt"}, "-iname '*.txt'", 50},
        {{"-m", "<*;?blank; *DEEP*"}, "\\( -name '<*' -o -name '?blank' -o -iname '*deep*' \\)", 9},
        {{"-m", "semi?colon.*"}, "-name 'semi?colon.*'", 8},
    };
    for (const Case& each : cases) {
        std::vector<std::string> words = each.words;
        words.insert(words.begin(), "find");
        words.push_back(Url("tree"));
        const ProgramResult result = Run(words);
        EXPECT_EQ(result.status, exitDone) << result.errors;
        const std::vector<std::string> expected = Expected(each.tests);
        EXPECT_GE(expected.size(), each.least);
        EXPECT_EQ(RealPaths(result.output, "/tree/"), expected) << each.tests;
    }
}

}  // namespace
}  // namespace quennet::interop
