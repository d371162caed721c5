#include "options.h"

#include <gtest/gtest.h>

#include "failure.h"

namespace cli {
namespace {

TEST(OptionsTest, StandBeforeOrBehindTheCommandAndMayBeJoined) {
    const Options list = ParseOptions({"-v", "ls", "-lq", "--active", "ftp://host/"});
    EXPECT_EQ(list.command, Command::ls);
    EXPECT_EQ(list.url, "ftp://host/");
    EXPECT_TRUE(list.verbose && list.longForm && list.quiet);
    EXPECT_FALSE(list.passive || list.porcelain);
    EXPECT_EQ(list.idleTimeout, std::chrono::seconds(300));

    for (const std::vector<std::string>& output :
         {std::vector<std::string>{"-o", "x"}, {"-ox"}, {"--output", "x"}, {"--output=x"}}) {
        std::vector<std::string> arguments = output;
        arguments.insert(arguments.end(), {"get", "--idle-timeout=7", "u", "--resume"});
        const Options get = ParseOptions(arguments);
        EXPECT_EQ(get.command, Command::get);
        EXPECT_EQ(get.output, "x");
        EXPECT_EQ(get.existing, ExistingFile::resume);
        EXPECT_EQ(get.idleTimeout, std::chrono::seconds(7));
    }
    EXPECT_EQ(ParseOptions({"get", "-o", "-", "--", "-u"}).url, "-u");
    EXPECT_EQ(ParseOptions({"get", "u", "-o-"}).output, "-");
    EXPECT_EQ(ParseOptions({"demo"}).command, Command::demo);
    EXPECT_EQ(ParseOptions({"ls", "--help"}).command, Command::help);
    EXPECT_EQ(ParseOptions({"--version"}).command, Command::version);
}

TEST(OptionsTest, WhatMakesNoSenseIsAUsageFailure) {
    const std::vector<std::string> table[] = {
        {},
        {"frobnicate"},
        {"ls"},
        {"ls", "u", "v"},
        {"demo", "u"},
        {"ls", "-x", "u"},
        {"ls", "--long=yes", "u"},
        {"ls", "--no-such", "u"},
        {"ls", "-o", "x", "u"},
        {"get", "-l", "u"},
        {"demo", "--resume"},
        {"get", "u", "-o"},
        {"get", "--resume", "--skip", "u"},
        {"get", "--idle-timeout", "x", "u"},
        {"get", "--idle-timeout=-1", "u"},
        {"get", "--idle-timeout=", "u"},
        {"ls", "--listing-limit=1025", "u"},
        {"get", "--password", "secret", "u"},
    };
    for (const auto& arguments : table) {
        try {
            ParseOptions(arguments);
            ADD_FAILURE() << testing::PrintToString(arguments) << " was taken";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Status(), ExitStatus::usage);
        }
    }
}

}  // namespace
}  // namespace cli
