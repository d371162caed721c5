// The program as a whole.

#include "app/program_test.h"

#include <signal.h>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST_F(ProgramTest, HelpAndVersionAreAnsweredAndTheRestIsUsage) {
    const RunResult help = Quennet(home, {"--help"});
    EXPECT_EQ(help.status, exitDone);
    EXPECT_THAT(help.output, StartsWith("usage: quennet"));
    EXPECT_THAT(Quennet(home, {"--version"}).output, StartsWith("quennet "));
    EXPECT_EQ(Shell(home, "\"$0\" --help > /dev/full").status, exitFailed);
    for (const char* argument : {"ls", "get ftp://[::1]/x"}) {
        const RunResult result = Shell(home, std::string("\"$0\" ") + argument);
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
