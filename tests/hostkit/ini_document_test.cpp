// The text of a settings file.

#include "hostkit/ini_document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using hostkit::IniDocument;
using ::testing::Eq;
using ::testing::Optional;

namespace {

using namespace std::literals;

constexpr std::string_view strange =
    "\xEF\xBB\xBF; a comment before all\r\n"
    "[Other]\r\n"
    "  Key = value with = and ;  \r\n"
    "# comment\n"
    "no entry\n"
    "=empty key\n"
    "[unclosed\n"
    "nul\0inside=1\n"
    "[]\n"
    "\n"
    "[FTP]\n"
    "M1=one\n"
    "m1=shadowed\n"
    "[ftp]\n"
    "M1=second section\n"
    "last line without an end"sv;

}  // namespace

TEST(IniDocumentTest, WhatNobodyChangesStaysByteForByte) {
    EXPECT_EQ(IniDocument(strange).Text(), strange);

    IniDocument document(strange);
    EXPECT_THAT(document.Value("OTHER", "key"), Optional(Eq("value with = and ;")));
    EXPECT_EQ(document.Value("other", "no entry"), std::nullopt);
    ASSERT_TRUE(document.SetValue("FTP", "M1", "two"));
    ASSERT_TRUE(document.SetValue("FTP", "H1", "host"));
    ASSERT_TRUE(document.RemoveValue("FTP", "H1"));
    ASSERT_TRUE(document.SetValue("ftp", "m1", "one"));
    std::string expected(strange);
    expected.replace(expected.find("M1=one"), 2, "m1");
    EXPECT_EQ(document.Text(), expected);
}

TEST(IniDocumentTest, RefusesWhatWouldBeAnotherEntryOrSection) {
    IniDocument document(strange);
    EXPECT_FALSE(document.SetValue("a", "[key", "value"));
    EXPECT_FALSE(document.SetValue("a", "key=", "value"));
    EXPECT_FALSE(document.SetValue("a", "key\nM1", "value"));
    EXPECT_FALSE(document.SetValue("a", ";key", "value"));
    EXPECT_FALSE(document.SetValue("a", "\xEF\xBB\xBF[b]", "value"));
    EXPECT_FALSE(document.SetValue("a]\n[FTP", "key", "value"));
    EXPECT_FALSE(document.SetValue("", "key", "value"));
    EXPECT_FALSE(document.SetValue("a", "key", std::string_view("nul\0inside", 10)));
    EXPECT_FALSE(document.ReplaceSection("a", "M1=1\n[FTP]\nM1=2\n"));
    EXPECT_EQ(document.Text(), strange);
}

TEST(IniDocumentTest, NewEntriesGoToTheirSectionWithTheLineEndsOfTheFile) {
    IniDocument document("[a]\r\nx=1\r\n\r\n[b]\r\ny=2");
    ASSERT_TRUE(document.SetValue("a", "new", "3"));
    ASSERT_TRUE(document.SetValue("b", "new", "4"));
    ASSERT_TRUE(document.SetValue("c", "new", "5"));
    EXPECT_EQ(document.Text(),
              "[a]\r\nx=1\r\nnew=3\r\n\r\n[b]\r\ny=2\r\nnew=4\r\n[c]\r\nnew=5\r\n");
    // A last line that is cut off stays a line of its own.
    IniDocument halfEnd("[a]\r\nx=1\r");
    ASSERT_TRUE(halfEnd.SetValue("a", "y", "2"));
    EXPECT_EQ(halfEnd.Text(), "[a]\r\nx=1\r\ny=2\r\n");
    IniDocument header("[a]");
    ASSERT_TRUE(header.ReplaceSection("a", "x=1"));
    EXPECT_EQ(header.Text(), "[a]\nx=1");
    ASSERT_TRUE(header.SetValue("b", "y", "2"));
    EXPECT_EQ(header.Text(), "[a]\nx=1\n[b]\ny=2\n");
    EXPECT_EQ(header.Section("a"), "x=1\n");
    ASSERT_TRUE(header.RemoveValue("b", "y"));
    EXPECT_EQ(header.Text(), "[a]\nx=1");
}
