#pragma once
// The text of a settings file, held so that what nobody changes is written back byte for byte.
//
// A file is a run of lines. «[name]» begins a section; the lines up to the next one are its body.
// In a body «key = value» is an entry, all else (comments, blanks, garbage) is kept as it stands.
// Names of sections and keys are compared without regard to case and to blanks around them. Lines
// end in LF or CR LF, each as it came; new lines take the form of the file's first line.
//
// A value that would not survive as it is (line ends in it, blanks around it, a quote in front)
// stands between quotes, with \\ \" \r \n for those characters.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace hostkit {

class IniDocument {
  public:
    IniDocument() = default;
    explicit IniDocument(std::string_view text);

    std::string Text() const;

    /// Value of a key, unquoted; of several sections or keys of one name the first counts.
    std::optional<std::string> Value(std::string_view section, std::string_view key) const;

    /// Changes or adds an entry, and its section when there is none. False for names that cannot be
    /// stored (empty, with line ends, a key with '=' or a leading '[', ';', '#' or byte order mark)
    /// and for a value with a NUL.
    bool SetValue(std::string_view section, std::string_view key, std::string_view value);

    /// Takes an entry out; true also when there was none.
    bool RemoveValue(std::string_view section, std::string_view key);

    /// The body of a section as it stands, without lines that hold a NUL; empty without a section.
    std::string Section(std::string_view section) const;

    /// Replaces the body of a section by lines such as `Section` gives. A section is added when it
    /// is missing and the text is not empty. False for a name that cannot be stored and for a text
    /// with a line that would begin another section.
    bool ReplaceSection(std::string_view section, std::string_view text);

    /// Keys of a section in their order, as they are written.
    std::vector<std::string> Keys(std::string_view section) const;

  private:
    using Index = std::unordered_map<std::string, std::size_t>;  // by folded name

    struct Body {
        std::string header;              // with its line end; empty for what precedes all sections
        std::vector<std::string> lines;  // with their line ends
        Index keys;                      // in `lines`
        bool added = false;              // not there at first

        /// A section that was added, and emptied again, is not there.
        bool IsLeftOut() const { return added && lines.empty(); }
    };

    static void Append(Body& body, std::string line);
    static Index IndexOf(const std::vector<std::string>& lines);
    const Body* Find(std::string_view section) const;
    Body* Find(std::string_view section);
    Body& FindOrAdd(std::string_view section);
    void EndLastLine(std::string& text) const;
    void AddLine(std::string& text, std::string_view line) const;

    std::vector<Body> bodies_ = std::vector<Body>(1);
    Index sections_;  // in `bodies_`
    std::string lineEnd_ = "\n";
};

}  // namespace hostkit
