// A settings file of any bytes, as the document that holds it, and one change of each kind to it.
//
// The input is four names and texts with a '|' behind each, section, key, value and the body for a
// section, then the file. A file that is empty but for one such head changes an empty document.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/expect.h"
#include "hostkit/ini_document.h"

using hostkit::IniDocument;

namespace {

struct Input {
    std::string section;
    std::string key;
    std::string value;
    std::string body;
    std::string file;

    explicit Input(std::string_view text) {
        for (std::string* part : {&section, &key, &value, &body}) {
            const std::size_t end = std::min(text.find('|'), text.size());
            *part = text.substr(0, end);
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        file = text;
    }
};

/// The lines without their ends, which a change may mend at the end of the file.
std::vector<std::string> LinesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        while (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        lines.emplace_back(line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

/// True when at most `out` lines in one place have made way for at most `in` others, and all else
/// stands as it stood.
bool DiffersAtOnePlace(std::string_view before, std::string_view after, std::ptrdiff_t out,
                       std::ptrdiff_t in) {
    const std::vector<std::string> old = LinesOf(before);
    const std::vector<std::string> now = LinesOf(after);
    const auto front = std::mismatch(old.begin(), old.end(), now.begin(), now.end());
    const auto back = std::mismatch(old.rbegin(), std::make_reverse_iterator(front.first),
                                    now.rbegin(), std::make_reverse_iterator(front.second));
    return back.first.base() - front.first <= out && back.second.base() - front.second <= in;
}

/// The document says the same as one that is made of its text.
void ExpectSameWhenReadAgain(const IniDocument& document, const std::string& section) {
    const IniDocument again(document.Text());
    Expect(again.Text() == document.Text());
    Expect(again.Section(section) == document.Section(section));
    Expect(again.Keys(section) == document.Keys(section));
    for (const std::string& key : document.Keys(section)) {
        Expect(document.Value(section, key).has_value());
        Expect(again.Value(section, key) == document.Value(section, key));
    }
}

void SetOne(const IniDocument& before, const Input& input) {
    IniDocument document = before;
    const bool done = document.SetValue(input.section, input.key, input.value);
    ExpectSameWhenReadAgain(document, input.section);
    if (!done) {
        Expect(document.Text() == before.Text());
        return;
    }
    Expect(document.Value(input.section, input.key) == input.value);
    Expect(DiffersAtOnePlace(before.Text(), document.Text(), 1, 2));
    const std::string text = document.Text();
    Expect(document.SetValue(input.section, input.key, input.value) && document.Text() == text);
}

void RemoveOne(const IniDocument& before, const Input& input) {
    IniDocument document = before;
    const bool was = document.Value(input.section, input.key).has_value();
    Expect(document.RemoveValue(input.section, input.key));
    if (!was) {
        Expect(document.Text() == before.Text());
        return;
    }
    ExpectSameWhenReadAgain(document, input.section);
    Expect(document.Text() != before.Text());
    Expect(DiffersAtOnePlace(before.Text(), document.Text(), 1, 0));
}

void ReplaceBody(const IniDocument& before, const Input& input) {
    IniDocument document = before;
    if (!document.ReplaceSection(input.section, input.body)) {
        Expect(document.Text() == before.Text());
        return;
    }
    ExpectSameWhenReadAgain(document, input.section);
    // A snapshot that is put back brings back the section.
    const std::string snapshot = document.Section(input.section);
    IniDocument other;
    Expect(other.ReplaceSection(input.section, snapshot));
    Expect(other.Section(input.section) == snapshot);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Input input(std::string_view(reinterpret_cast<const char*>(data), size));
    const IniDocument document(input.file);
    Expect(document.Text() == input.file);
    SetOne(document, input);
    RemoveOne(document, input);
    ReplaceBody(document, input);
    return 0;
}
