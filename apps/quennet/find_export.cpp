#include "find_export.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>

#include "failure.h"

namespace cli {

namespace {

namespace fs = std::filesystem;
using hostkit::ExportFormat;

struct ExportRow {
    std::optional<std::string> Options::*file;
    ExportFormat format;
    const char* extension;
    std::size_t otherLines;  // beside the one of each entry
};
constexpr ExportRow exportRows[] = {
    {&Options::textFile, ExportFormat::text, ".txt", 0},
    {&Options::csvFile, ExportFormat::csv, ".csv", 1},
    {&Options::htmlFile, ExportFormat::html, ".htm", 7},
};

constexpr std::size_t longestPath = 250;

[[noreturn]] void Refuse(const std::string& file, const std::string& why) {
    throw Failure(ExitStatus::failed, file + ": " + why);
}

/// A file beside the target that nobody else has. It is removed with the object, unless it has
/// taken the target's place.
class NewFile {
  public:
    NewFile(const std::string& file, const char* extension) : file_(file) {
        std::error_code error;
        target_ = fs::weakly_canonical(fs::absolute(file, error), error);
        const fs::file_status status = fs::status(target_, error);
        if (fs::exists(status) && !fs::is_regular_file(status)) {
            Refuse(file, "this is no regular file");
        }
        path_ = (target_.parent_path() / ".quennet-XXXXXX").string() + extension;
        if (path_.size() > longestPath || path_.find_first_of("*?") != path_.npos) {
            path_.clear();
            Refuse(file, "no list can be written in this folder, for its name");
        }
        const int descriptor = mkstemps(path_.data(), static_cast<int>(std::strlen(extension)));
        if (descriptor < 0) {
            path_.clear();
            Refuse(file, std::strerror(errno));
        }
        fchmod(descriptor, ModeFor(status));
        close(descriptor);
    }
    ~NewFile() {
        if (!path_.empty()) {
            unlink(path_.c_str());
        }
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    const std::string& Path() const { return path_; }

    void TakePlace() {
        std::error_code error;
        fs::rename(path_, target_, error);
        if (error) {
            Refuse(file_, error.message());
        }
        path_.clear();
    }

  private:
    /// As the file that is there, else as any new file.
    static mode_t ModeFor(const fs::file_status& status) {
        if (fs::exists(status)) {
            return static_cast<mode_t>(status.permissions()) & 0777;
        }
        const mode_t mask = umask(0);
        umask(mask);
        return 0666 & ~mask;
    }

    const std::string file_;
    fs::path target_;
    std::string path_;
};

std::size_t LinesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::size_t lines = 0;
    for (std::string line; std::getline(file, line) && !file.eof();) {
        ++lines;
    }
    return lines;
}

std::string EscapedForHtml(const std::string& text) {
    std::string escaped;
    for (const char byte : text) {
        escaped += byte == '<'   ? "&lt;"
                   : byte == '>' ? "&gt;"
                   : byte == '&' ? "&amp;"
                   : byte == '"' ? "&quot;"
                                 : std::string(1, byte);
    }
    return escaped;
}

/// A hit's row of the HTML table without what stands between its first and its last cell.
struct RowEnds {
    std::string first;
    std::string last;
};

RowEnds EndsOf(const std::string& folder, const std::string& name, bool isLink) {
    const std::string link =
        isLink ? "<A HREF=\"" + folder + "\\" + name + "\">" + name + "</A>" : name;
    return {"<TR><TD>" + link + "</TD><TD ALIGN=RIGHT>", "<TD>" + folder + "</TD></TR>"};
}

/// Names are the server's and stand in the rows as they are; a browser is to show them, not to obey
/// them. False when a row is not that of its hit.
bool EscapeRow(std::string& row, const std::string& folder, const std::string& name) {
    for (const bool isLink : {true, false}) {
        const RowEnds ends = EndsOf(folder, name, isLink);
        const RowEnds safe = EndsOf(EscapedForHtml(folder), EscapedForHtml(name), isLink);
        if (row.starts_with(ends.first) && row.ends_with(ends.last)) {
            row.replace(row.size() - ends.last.size(), ends.last.size(), safe.last);
            row.replace(0, ends.first.size(), safe.first);
            return true;
        }
    }
    return false;
}

bool EscapeTable(const std::string& path, hostkit::Search& search) {
    constexpr std::string_view lineEnd = "\r\n";
    constexpr int linesAbove = 4;
    std::ifstream file(path, std::ios::binary);
    std::string table;
    std::string line;
    for (int i = 0; i < linesAbove && std::getline(file, line); ++i) {
        table += line + "\n";
    }
    bool isWhole = true;
    search.ForEachHit([&](const std::string& folder, const std::string& name) {
        std::getline(file, line);
        isWhole = isWhole && line.ends_with('\r');
        line.resize(line.size() - std::min<std::size_t>(1, line.size()));
        isWhole = isWhole && EscapeRow(line, folder, name);
        table.append(line).append(lineEnd);
    });
    table.append(std::istreambuf_iterator<char>(file), {});
    file.close();
    std::ofstream safe(path, std::ios::binary);
    safe << table;
    safe.close();
    return isWhole && safe.good();
}

void ForEachExport(const Options& options,
                   const std::function<void(const ExportRow&, const std::string&)>& take) {
    for (const ExportRow& row : exportRows) {
        if (const auto& file = options.*row.file) {
            take(row, *file);
        }
    }
}

}  // namespace

void CheckExports(const Options& options) {
    ForEachExport(options, [](const ExportRow& row, const std::string& file) {
        const NewFile check(file, row.extension);
    });
}

void WriteExports(const Options& options, hostkit::Search& search) {
    ForEachExport(options, [&](const ExportRow& row, const std::string& file) {
        if (search.Count() == 0) {
            Refuse(file, "nothing was found, so nothing is written");
        }
        NewFile newFile(file, row.extension);
        // A disk that is full ends the list early, without a word.
        if (!search.Export(row.format, newFile.Path()) ||
            LinesOf(newFile.Path()) != search.Count() + row.otherLines) {
            Refuse(file, "the list could not be written");
        }
        if (row.format == ExportFormat::html && !EscapeTable(newFile.Path(), search)) {
            Refuse(file, "the list could not be written");
        }
        newFile.TakePlace();
    });
}

}  // namespace cli
