// The exports, byte for byte. The person at the save dialog is the thread of the test.

#include "find/find_export.h"

#include <dlgs.h>

#include <future>

#include "find/find_line.h"
#include "find/find_lookup.h"
#include "find/find_store.h"
#include "find/find_test.h"
#include "support/dialog_user.h"
#include "support/temp_folder.h"

using namespace quennet;

namespace {

constexpr u16 someDate = 0x2A6F;  // 2001-03-15
constexpr u16 someTime = 0x645E;  // 12:34:60
constexpr u16 readable = attributePermissions | 0x0124;
constexpr u16 link = folderBit | attributePermissions | attributeLink;

class ExportTest : public FindTest {
  protected:
    ExportTest() { find.window = find.list; }

    /// Runs an export on the window's thread while the person does something with its dialog.
    void Export(void (*write)(FindWindow*), const std::function<void(const OpenDialog&)>& person) {
        std::promise<void> ended;
        Host().Loop().Post([&] {
            write(&find);
            ended.set_value();
        });
        person(WaitForDialog("Save As"));
        ended.get_future().wait();
    }

    /// What an export writes.
    std::string Exported(void (*write)(FindWindow*), const std::string& name = "out") {
        Export(write, [&](const OpenDialog& dialog) {
            dialog.SetField(edt1, (folder / name).string());
            dialog.Press(IDOK);
        });
        return folder.Read(name);
    }

    void StoreSample() {
        Store("/pub", {{"a.txt", 0, 1234, someDate, someTime},
                       {"semi;colon \"q\"", readable, 5, someDate, someTime},
                       {"dir", folderBit, 9, someDate, someTime},
                       {"arrow", link, 9}});
        Store("/", {{"<b>&", 0, ~u64{0}}});
        Store("", {{"lost", 0, 1}});
        UpdateRecordTable(&find);
    }

    TempFolder folder;
};

int linesLeft = 0;
std::vector<std::string> triedLines;

extern "C" i32 WriteSomeLines(HWND, ShellFile, const char* text) {
    triedLines.emplace_back(text);
    return linesLeft-- > 0 ? 0 : 28;
}

/// The lines of a text as the host writes them.
std::string WithLineEnds(std::string_view text) {
    std::string lines;
    for (const char character : text) {
        lines += character == '\n' ? "\r\n" : std::string(1, character);
    }
    return lines;
}

TEST_F(ExportTest, TextStandsInColumns) {
    StoreSample();
    find.separator = '/';
    EXPECT_EQ(Exported(ExportText, "out.txt"),
              WithLineEnds(
                  R"(                1,234    2001-03-15 12:34   /pub/a.txt
---xr--r--              5    2001-03-15 12:34   /pub/semi;colon "q"
     D          <DIR>    2001-03-15 12:34   /pub/dir
l---------         <LINK>                       /pub/arrow
      18,446,744,073,709,551,615                       /<b>&
                    1                       lost
)"));
    EXPECT_EQ(find.textFile, folder / "out.txt");
    EXPECT_STREQ(find.csvFile, "");
}

TEST_F(ExportTest, CsvQuotesWhatHoldsASemicolon) {
    StoreSample();
    EXPECT_EQ(Exported(ExportCsv, "out.csv"), WithLineEnds(R"(Attributes;Size;Date;Name
;1,234;2001-03-15 12:34;/pub\a.txt
---xr--r--;5;2001-03-15 12:34;"/pub\semi;colon "q""
D;<DIR>;2001-03-15 12:34;/pub\dir
l---------;<LINK>;;/pub\arrow
;18,446,744,073,709,551,615;;/<b>&
;1;;lost
)"));
}

TEST_F(ExportTest, HtmlIsATableWithLinks) {
    StoreSample();
    StoreText(HitAtRow(&find, 0)->type, typeNameSize, "Known");
    StoreText(HitAtRow(&find, 2)->type, typeNameSize, "Folder");
    EXPECT_EQ(Exported(ExportHtml, "out.htm"), WithLineEnds(R"(<HTML>
<BODY>
<TABLE BORDER=1>
<TR><TH>Name</TH><TH>Size</TH><TH>Date</TH><TH>Attributes</TH><TH>Type</TH><TH>Folder</TH></TR>
<TR><TD><A HREF="/pub\a.txt">a.txt</A></TD><TD ALIGN=RIGHT>1,234</TD><TD>2001-03-15 12:34</TD><TD>-</TD><TD>Known</TD><TD>/pub</TD></TR>
<TR><TD>semi;colon "q"</TD><TD ALIGN=RIGHT>5</TD><TD>2001-03-15 12:34</TD><TD>---xr--r--</TD><TD>File</TD><TD>/pub</TD></TR>
<TR><TD><A HREF="/pub\dir">dir</A></TD><TD ALIGN=RIGHT></TD><TD>2001-03-15 12:34</TD><TD>D</TD><TD>Folder</TD><TD>/pub</TD></TR>
<TR><TD>arrow</TD><TD ALIGN=RIGHT></TD><TD></TD><TD>l---------</TD><TD>LINK</TD><TD>/pub</TD></TR>
<TR><TD><A HREF="/\<b>&"><b>&</A></TD><TD ALIGN=RIGHT>18,446,744,073,709,551,615</TD><TD></TD><TD>-</TD><TD>File</TD><TD>/</TD></TR>
<TR><TD>lost</TD><TD ALIGN=RIGHT>1</TD><TD></TD><TD>-</TD><TD>File</TD><TD></TD></TR>
</TABLE>
</BODY>
</HTML>
)"));
    EXPECT_STREQ(HitAtRow(&find, 3)->type, "<LINK>") << "kept for the list";
}

TEST_F(ExportTest, NothingIsCut) {
    const std::string directory = "/" + std::string(findPathSize - 2, 'd');
    const std::string name(findNameSize - 1, 'n');
    Store(directory, {{name}});
    UpdateRecordTable(&find);
    find.separator = '/';
    const std::string path = directory + "/" + name + "\r\n";
    EXPECT_THAT(Exported(ExportText, "out.txt"), testing::EndsWith("   " + path));
    EXPECT_THAT(Exported(ExportCsv, "out.csv"), testing::EndsWith(";" + path));
    EXPECT_THAT(Exported(ExportHtml, "out.htm"), testing::HasSubstr(">" + name + "</A>"));
}

TEST_F(ExportTest, ADiskThatFillsUpEndsTheRows) {
    Store("/", {{"a"}, {"b"}, {"c"}});
    UpdateRecordTable(&find);
    services.Replace(ShellService::writeTextLine, WriteSomeLines);
    struct Case {
        void (*write)(FindWindow*);
        int room;  // lines that can be written
        std::size_t tried;
    };
    // A list of HTML is ended all the same.
    for (const Case& example :
         {Case{ExportText, 1, 2}, Case{ExportCsv, 0, 1}, Case{ExportCsv, 2, 3},
          Case{ExportHtml, 0, 3}, Case{ExportHtml, 3, 5}}) {
        linesLeft = example.room;
        triedLines.clear();
        Exported(example.write, std::to_string(example.room) + std::to_string(example.tried));
        EXPECT_EQ(triedLines.size(), example.tried);
        EXPECT_EQ(triedLines.back().find("</HTML>") != std::string::npos,
                  example.write == ExportHtml);
    }
}

TEST_F(ExportTest, WithoutAFinishedRunNobodyIsAsked) {
    Store("/", {{"a"}});
    ExportText(&find);  // on this thread: a dialog would hold it for ever
    EXPECT_TRUE(folder.Read("out.txt") == "(none)");
    UpdateRecordTable(&find);
    Export(ExportText, [](const OpenDialog& dialog) { dialog.Press(IDCANCEL); });
    // A run that begins behind the dialog takes the hits away.
    Export(ExportText, [this](const OpenDialog& dialog) {
        ResetStore(&find);
        dialog.SetField(edt1, (folder / "out.txt").string());
        dialog.Press(IDOK);
    });
    EXPECT_EQ(folder.Read("out.txt"), "(none)");
}

}  // namespace
