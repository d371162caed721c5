#include "wire_script.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>

namespace {

enum class Operand { none, text, pattern, name, number };

struct VerbWord {
    std::string_view word;
    WireVerb verb;
    Operand operand;
};

// The first row whose word begins the line decides, so a longer word stands before its beginning.
constexpr VerbWord verbWords[] = {
    {"<-", WireVerb::say, Operand::text},
    {"<<", WireVerb::sayRaw, Operand::text},
    {"->", WireVerb::expectLine, Operand::pattern},
    {"send", WireVerb::send, Operand::name},
    {"flood", WireVerb::flood, Operand::text},
    {"expect close", WireVerb::expectClose, Operand::none},
    {"silent", WireVerb::silent, Operand::number},
    {"pause", WireVerb::pause, Operand::number},
    {"hang", WireVerb::hang, Operand::none},
    {"close", WireVerb::close, Operand::none},
    {"reset", WireVerb::reset, Operand::none},
    {"accept", WireVerb::accept, Operand::none},
    {"refuse", WireVerb::refuse, Operand::none},
    {"mark", WireVerb::mark, Operand::name},
    {"await", WireVerb::await, Operand::name},
    {"data accept", WireVerb::dataAccept, Operand::none},
    {"data connect", WireVerb::dataConnect, Operand::none},
    {"data <-", WireVerb::dataSay, Operand::text},
    {"data ->", WireVerb::dataExpectText, Operand::text},
    {"data fill", WireVerb::dataFill, Operand::number},
    {"data flood", WireVerb::dataFlood, Operand::none},
    {"data send", WireVerb::dataSend, Operand::name},
    {"data expect close", WireVerb::dataExpectClose, Operand::none},
    {"data expect", WireVerb::dataExpect, Operand::name},
    {"data close", WireVerb::dataClose, Operand::none},
    {"data reset", WireVerb::dataReset, Operand::none},
};

constexpr std::string_view blanks = " \t";

std::string_view Trimmed(std::string_view text) {
    std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

const VerbWord* FindVerb(std::string_view line) {
    for (const VerbWord& row : verbWords) {
        bool whole = line.size() == row.word.size() ||
                     (line.size() > row.word.size() && line[row.word.size()] == ' ');
        if (whole && line.starts_with(row.word)) {
            return &row;
        }
    }
    return nullptr;
}

// Resolves one escape, whose letter is the first character of `rest`; returns how many characters
// it takes, 0 for an unknown one.
std::size_t AppendEscape(std::string_view rest, std::string* result) {
    constexpr std::string_view letters = "rnt0\\";
    constexpr std::string_view values{"\r\n\t\0\\", 5};
    if (rest.empty()) {
        return 0;
    }
    std::size_t place = letters.find(rest.front());
    if (place != std::string_view::npos) {
        *result += values[place];
        return 1;
    }
    unsigned value = 0;
    if (rest.front() != 'x' || rest.size() < 3) {
        return 0;
    }
    auto [end, error] = std::from_chars(rest.data() + 1, rest.data() + 3, value, 16);
    if (error != std::errc() || end != rest.data() + 3) {
        return 0;
    }
    *result += static_cast<char>(value);
    return 3;
}

bool ResolveEscapes(std::string_view text, std::string* result) {
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (text[place] != '\\') {
            *result += text[place];
            continue;
        }
        std::size_t taken = AppendEscape(text.substr(place + 1), result);
        if (taken == 0) {
            return false;
        }
        place += taken;
    }
    return true;
}

std::string ReadNumber(std::string_view text, WireStep* step) {
    std::string number(Trimmed(text));
    char* end = nullptr;
    step->number = std::strtod(number.c_str(), &end);
    bool good = !number.empty() && *end == '\0' && step->number >= 0 && step->number < 1e12;
    return good ? "" : "a number is missing";
}

}  // namespace

std::vector<std::string> WireLines(std::string_view script) {
    std::vector<std::string> lines;
    while (!script.empty()) {
        std::size_t end = script.find('\n');
        std::string_view line = script.substr(0, end);
        script.remove_prefix(end == std::string_view::npos ? script.size() : end + 1);
        std::size_t first = line.find_first_not_of(blanks);
        if (first != std::string_view::npos && line[first] != '#') {
            lines.emplace_back(line.substr(first));
        }
    }
    return lines;
}

std::string ParseWireStep(std::string_view line, WireStep* step) {
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    const VerbWord* row = FindVerb(line);
    if (row == nullptr) {
        return "no such step";
    }
    step->verb = row->verb;
    step->source = line;
    std::string_view rest = line.substr(row->word.size());
    if (row->operand == Operand::none) {
        return Trimmed(rest).empty() ? "" : "this step takes nothing behind it";
    }
    if (row->operand == Operand::number) {
        return ReadNumber(rest, step);
    }
    if (row->operand == Operand::name) {
        step->text = Trimmed(rest);
        return step->text.empty() ? "a name is missing" : "";
    }
    rest.remove_prefix(rest.empty() ? 0 : 1);
    if (row->operand == Operand::pattern && rest.ends_with('*')) {
        step->anyRest = true;
        rest.remove_suffix(1);
    }
    return ResolveEscapes(rest, &step->text) ? "" : "unknown escape";
}

std::string ShowBytes(std::string_view bytes) {
    constexpr std::size_t longest = 200;
    std::string text;
    for (char letter : bytes.substr(0, longest)) {
        auto byte = static_cast<unsigned char>(letter);
        if (byte >= 0x20 && byte < 0x7F) {
            text += letter;
            continue;
        }
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02X", byte);
        text += letter == '\r' ? "\\r" : letter == '\n' ? "\\n" : escape;
    }
    if (bytes.size() > longest) {
        text += "... (" + std::to_string(bytes.size()) + " bytes)";
    }
    return text;
}
