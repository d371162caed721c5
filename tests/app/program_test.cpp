// The program as a whole.

#include "app/program_test.h"

#include <signal.h>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST_F(ProgramTest, HelpAndVersionAreAnsweredAndTheRestIsUsage) {
    for (const char* option : {"--help", "-h", "help"}) {
        const RunResult result = Quennet(home, {option});
        EXPECT_EQ(result.status, exitDone);
        EXPECT_THAT(result.output, StartsWith("usage: quennet"));
        EXPECT_EQ(result.errors, "");
    }
    EXPECT_THAT(Quennet(home, {"--version"}).output, StartsWith("quennet "));
    EXPECT_EQ(Shell(home, "\"$0\" --help > /dev/full").status, exitFailed);
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                      {"ls"},
                                                      {"frobnicate"},
                                                      {"ls", "no url at all"},
                                                      {"get", "ftp://[::1]/x"}}) {
        const RunResult result = Quennet(home, arguments);
        EXPECT_EQ(result.status, exitUsage);
        EXPECT_THAT(result.errors, StartsWith("quennet: "));
        EXPECT_EQ(result.output, "");
    }
}

TEST_F(ProgramTest, TheDemonstrationProvesItsStepsAndLeavesNothing) {
    const RunResult result = Quennet(home, {"demo"});
    EXPECT_EQ(result.status, exitDone) << result.errors;
    for (const char* line : {"REST 299488", "Not the same file!", "MVS is the operating system",
                             "215 Windows_NT", "Done: every step was proved."}) {
        EXPECT_THAT(result.output, HasSubstr(line));
    }
    EXPECT_EQ(NamesIn(home / ""), std::vector<std::string>{".netrc"});

    ProgramRun interrupted(home, {"demo"});
    interrupted.Signal(SIGINT);
    interrupted.Finish();
    EXPECT_EQ(NamesIn(home / ""), std::vector<std::string>{".netrc"});
    EXPECT_EQ(Shell(home, "\"$0\" demo | true; exit ${PIPESTATUS[0]}").status, exitFailed);
    EXPECT_EQ(NamesIn(home / ""), std::vector<std::string>{".netrc"});
}

}  // namespace
