// The program as a whole.

#include "app/program_test.h"

#include <signal.h>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST_F(ProgramTest, HelpAndVersionAreAnsweredAndTheRestIsUsage) {
    Run({"--help"});
    EXPECT_THAT(result.output, StartsWith("usage: quennet"));
    Run({"--version"});
    EXPECT_THAT(result.output, StartsWith("quennet "));
    EXPECT_EQ(Shell(home, "\"$0\" --help > /dev/full").status, exitFailed);
    IsUsage({"get", "ftp://[::1]/x"});
    EXPECT_THAT(result.errors, StartsWith("quennet: "));
    EXPECT_EQ(result.output, "");
}

TEST_F(ProgramTest, TheDemonstrationProvesItsStepsAndLeavesNothing) {
    Run({"demo"});
    for (const char* line : {"REST 299488", "Not the same file!", "MVS is the operating system",
                             "215 Windows_NT", "Done: every step was proved."}) {
        EXPECT_THAT(result.output, HasSubstr(line));
    }
    ExpectAtHome({});

    ProgramRun interrupted(home, {"demo"});
    interrupted.Signal(SIGINT);
    interrupted.Finish();
    ExpectAtHome({});
    EXPECT_EQ(Shell(home, "\"$0\" demo | true; exit ${PIPESTATUS[0]}").status, exitFailed);
    ExpectAtHome({});
}

}  // namespace
