// quennet find on real servers, held against the system's own find.

#include <gmock/gmock.h>

#include <cstdio>

#include "interop/interop_test.h"
#include "interop/program.h"

namespace quennet::interop {
namespace {

namespace fs = std::filesystem;

class InteropFind : public InteropTest {
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
        words.push_back(UrlOf(*server, "tree"));
        const ProgramResult result = RunProgram(local.Path(), words);
        EXPECT_EQ(result.status, 0) << result.errors;
        const std::vector<std::string> expected = Expected(each.tests);
        EXPECT_GE(expected.size(), each.least);
        EXPECT_EQ(RealPaths(result.output, "/tree/"), expected) << each.tests;
    }
}

}  // namespace
}  // namespace quennet::interop
