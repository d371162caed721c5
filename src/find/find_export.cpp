#include "find/find_export.h"

#include <commdlg.h>

#include <cstring>

#include "find/find_line.h"
#include "find/find_lookup.h"
#include "find/find_store.h"
#include "host/services.h"

namespace quennet {

namespace {

constexpr u32 nameTitle = 0xFA2;
constexpr u32 sizeTitle = 0xFA3;
constexpr u32 dateTitle = 0xFA4;
constexpr u32 attributeTitle = 0xFA5;
constexpr u32 typeTitle = 0xFA1;
constexpr u32 folderTitle = 0xFBD;

constexpr u32 cellSize = 32;
constexpr u32 titleSize = 512;

/// What all formats say of a hit.
struct Cells {
    char size[cellSize] = "";
    char date[cellSize] = "";
    char attributes[cellSize] = "";
    const char* directory = nullptr;  // null when it is not known

    Cells(const FindWindow* find, const FindRecord& record) {
        ShellFormatDate(date, record.date, record.time, cellSize);
        ShellFormatAttributes(attributes, record.attributes);
        const FindDirRecord* folder = DirectoryByNumber(find, record.directoryNumber);
        directory = folder != nullptr ? folder->path : nullptr;
    }
};

/// The file that is being written, and the line that goes there next.
class Output {
  public:
    Output(FindWindow* find, ShellFile file) : window_(find->window), file_(file) {}

    bool Write(const char* text) { return ShellWriteTextLine(window_, file_, text); }
    bool WriteLine() { return line.IsWhole() && Write(line.Text()); }

    FindLine line;

  private:
    HWND window_;
    ShellFile file_;
};

/// Writes one record; false when that failed.
using RowWriter = bool (*)(FindWindow* find, FindRecord* record, Output* output);

void WriteRows(FindWindow* find, RowWriter write, Output* output) {
    const u32 rows = RowCount(find);
    for (u32 row = 0; row < rows; ++row) {
        output->line.Clear();
        if (!write(find, find->recordTable[row], output)) {
            return;
        }
    }
}

void SizeText(const FindRecord& record, char* text) {
    if (IsDirectory(record)) {
        CopyCut(text, cellSize, IsLink(record) ? "<LINK>" : "<DIR>");
    } else {
        ShellFormatNumber(&record.size, text);
    }
}

// --- Text ----------------------------------------------------------------------------------------

bool WriteTextRow(FindWindow* find, FindRecord* record, Output* output) {
    Cells cells(find, *record);
    SizeText(*record, cells.size);
    FindLine& line = output->line;
    line.AddRight(cells.attributes, 6);
    line.AddRight(cells.size, 15);
    line.AddRight(cells.date, 20);
    line.Add("   ");
    if (cells.directory != nullptr) {
        line.Add(cells.directory);
        line.AddSeparator(find->separator);
    }
    line.Add(record->name);
    return output->WriteLine();
}

void WriteText(FindWindow* find, Output* output) {
    WriteRows(find, WriteTextRow, output);
}

// --- CSV -----------------------------------------------------------------------------------------

bool WriteCsvRow(FindWindow* find, FindRecord* record, Output* output) {
    Cells cells(find, *record);
    SizeText(*record, cells.size);
    char path[findPathSize + 1 + findNameSize] = "";
    if (cells.directory != nullptr) {
        CopyCut(path, sizeof path, cells.directory);
        AppendSeparator(path, find->separator);
    }
    ShellAppendText(path, record->name, sizeof path);
    FindLine& line = output->line;
    line.AddField(cells.attributes);
    line.Add(";");
    line.AddField(cells.size);
    line.Add(";");
    line.AddField(cells.date);
    line.Add(";");
    line.AddField(path);
    return output->WriteLine();
}

void WriteCsv(FindWindow* find, Output* output) {
    FindLine& line = output->line;
    char title[titleSize] = "";
    CoreLoadText(attributeTitle, title, titleSize);
    line.Add(title);
    for (const u32 textId : {sizeTitle, dateTitle}) {
        CoreLoadText(textId, title, titleSize);
        line.Add(";");
        line.AddField(title);
    }
    CoreLoadText(nameTitle, title, titleSize);
    line.Add(";");
    line.Add(title);
    if (output->WriteLine()) {
        WriteRows(find, WriteCsvRow, output);
    }
}

// --- HTML ----------------------------------------------------------------------------------------

void AddCell(FindLine* line, const char* opening, const char* text) {
    line->Add(opening);
    line->Add(text);
    line->Add("</TD>");
}

void AddNameCell(FindLine* line, const FindRecord& record, const char* directory) {
    if (directory == nullptr || (record.attributes & attributePermissions) != 0) {
        AddCell(line, "<TD>", record.name);
        return;
    }
    const char* const parts[] = {"<TD><A HREF=\"", directory,  "\\", record.name, "\">",
                                 record.name,      "</A></TD>"};
    for (const char* part : parts) {
        line->Add(part);
    }
}

bool WriteHtmlRow(FindWindow* find, FindRecord* record, Output* output) {
    constexpr char cell[] = "<TD>";
    Cells cells(find, *record);
    if (!IsDirectory(*record)) {
        ShellFormatNumber(&record->size, cells.size);
    }
    if (record->type[0] == 0) {
        FillTypeName(record);
    }
    FindLine& line = output->line;
    line.Add("<TR>");
    AddNameCell(&line, *record, cells.directory);
    AddCell(&line, "<TD ALIGN=RIGHT>", cells.size);
    AddCell(&line, cell, cells.date);
    AddCell(&line, cell, cells.attributes[0] != 0 ? cells.attributes : "-");
    AddCell(&line, cell, std::strcmp(record->type, "<LINK>") == 0 ? "LINK" : record->type);
    AddCell(&line, cell, cells.directory != nullptr ? cells.directory : "");
    line.Add("</TR>");
    return output->WriteLine();
}

bool WriteHtmlTitles(Output* output) {
    FindLine& line = output->line;
    line.Add("<TR>");
    for (const u32 textId :
         {nameTitle, sizeTitle, dateTitle, attributeTitle, typeTitle, folderTitle}) {
        char title[titleSize] = "";
        CoreLoadText(textId, title, titleSize);
        line.Add("<TH>");
        line.Add(title);
        line.Add("</TH>");
    }
    line.Add("</TR>");
    return output->WriteLine();
}

void WriteHtml(FindWindow* find, Output* output) {
    output->Write("<HTML>\r\n<BODY>\r\n<TABLE BORDER=1>");
    if (WriteHtmlTitles(output)) {
        WriteRows(find, WriteHtmlRow, output);
    }
    output->Write("</TABLE>\r\n</BODY>\r\n</HTML>");
}

// --- What they share -----------------------------------------------------------------------------

struct ExportFormat {
    char (FindWindow::*path)[pathSize];  // what was chosen last
    const char* filter;                  // ends with an empty text
    const char* extension;
    void (*write)(FindWindow* find, Output* output);
};

constexpr ExportFormat textFormat = {&FindWindow::textFile, "Text List\0*.txt\0All Files\0*.*\0",
                                     "txt", WriteText};
constexpr ExportFormat csvFormat = {&FindWindow::csvFile, "Export List\0*.csv\0All Files\0*.*\0",
                                    "csv", WriteCsv};
constexpr ExportFormat htmlFormat = {&FindWindow::htmlFile, "HTML\0*.htm\0All Files\0*.*\0", "htm",
                                     WriteHtml};

/// Shows the wait cursor while it stands.
class WaitCursor {
  public:
    WaitCursor() : former_(SetCursor(LoadCursorA(nullptr, IDC_WAIT))) {}
    ~WaitCursor() { SetCursor(former_); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

  private:
    HCURSOR former_;
};

/// Whether a run has ended and no other has begun.
bool HasResult(const FindWindow* find) {
    const ListLock lock;
    return find->recordTable != nullptr;
}

void WriteFile(FindWindow* find, const ExportFormat& format, const char* path) {
    ShellFile file = 0;
    if (ShellCreateFile(find->window, path, &file) != 0) {
        return;
    }
    const WaitCursor cursor;
    const ListLock lock;
    if (find->recordTable != nullptr) {
        Output output(find, file);
        format.write(find, &output);
    }
    ShellCloseFile(file);
}

void Export(FindWindow* find, const ExportFormat& format) {
    char* path = find->*format.path;
    if (!HasResult(find) || !AskExportFile(find->window, path, format.filter, format.extension)) {
        return;
    }
    // The person took time: the window may be gone, or a new run on its way.
    if (find->window != nullptr && HasResult(find)) {
        WriteFile(find, format, path);
    }
}

}  // namespace

void ExportText(FindWindow* find) {
    Export(find, textFormat);
}

void ExportCsv(FindWindow* find) {
    Export(find, csvFormat);
}

void ExportHtml(FindWindow* find) {
    Export(find, htmlFormat);
}

void WriteFoundText(FindWindow* find, const char* path) {
    WriteFile(find, textFormat, path);
}

void WriteFoundCsv(FindWindow* find, const char* path) {
    WriteFile(find, csvFormat, path);
}

void WriteFoundHtml(FindWindow* find, const char* path) {
    WriteFile(find, htmlFormat, path);
}

bool AskExportFile(HWND window, char* path, const char* filter, const char* extension) {
    OPENFILENAMEA request;
    std::memset(&request, 0, sizeof request);
    request.lStructSize = OPENFILENAME_SIZE_VERSION_400A;
    request.hwndOwner = window;
    request.lpstrFilter = filter;
    request.lpstrFile = path;
    request.nMaxFile = pathSize - 1;
    request.Flags = OFN_OVERWRITEPROMPT | OFN_HIDEREADONLY;
    request.lpstrDefExt = extension;
    return GetSaveFileNameA(&request) != FALSE;
}

}  // namespace quennet
