// The language of the scripted server: its steps, the texts in them, and how bytes are shown.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "support/wire.h"

namespace {

enum class Operand { none, text, pattern, name, seconds };

}  // namespace

struct Wire::Verb {
    std::string_view word;
    void (Wire::*play)(const Step& step);
    Operand operand;
};

// The first row whose word begins the line decides, so a longer word stands before its beginning.
const Wire::Verb Wire::verbs[] = {
    {"<-", &Wire::Say, Operand::text},
    {"<<", &Wire::SayRaw, Operand::text},
    {"->", &Wire::ExpectLine, Operand::pattern},
    {"expect close", &Wire::ExpectClose, Operand::none},
    {"pause", &Wire::Pause, Operand::seconds},
    {"hang", &Wire::Hang, Operand::none},
    {"close", &Wire::CloseControl, Operand::none},
    {"reset", &Wire::ResetControl, Operand::none},
    {"accept", &Wire::AcceptControl, Operand::none},
    {"refuse", &Wire::Refuse, Operand::none},
    {"mark", &Wire::Mark, Operand::name},
    {"await", &Wire::AwaitSignal, Operand::name},
    {"data accept", &Wire::AcceptData, Operand::none},
    {"data connect", &Wire::ConnectData, Operand::none},
    {"data <-", &Wire::SayData, Operand::text},
    {"data send", &Wire::SendData, Operand::name},
    {"data expect close", &Wire::ExpectDataClose, Operand::none},
    {"data expect", &Wire::ExpectData, Operand::name},
    {"data close", &Wire::CloseData, Operand::none},
    {"data reset", &Wire::ResetData, Operand::none},
};

namespace {

std::string_view Trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r"), text.size()));
    return text.substr(0, text.find_last_not_of(" \t\r") + 1);
}

// False when an escape is none of those that wire.h lists.
bool ResolveEscapes(std::string_view text, std::string* result) {
    constexpr std::string_view letters = "rnt0\\";
    constexpr std::string_view values{"\r\n\t\0\\", 5};
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (text[place] != '\\') {
            *result += text[place];
            continue;
        }
        const std::string escape(text.substr(++place, 3));
        unsigned value = 0;
        if (const std::size_t known = letters.find(escape[0]); known != letters.npos) {
            *result += values[known];
        } else if (std::sscanf(escape.c_str(), "x%2x", &value) == 1 && escape.size() == 3) {
            *result += static_cast<char>(value);
            place += 2;
        } else {
            return false;
        }
    }
    return true;
}

}  // namespace

void Wire::Start(std::string_view script) {
    std::istringstream lines{std::string(script)};
    try {
        for (std::string line; std::getline(lines, line);) {
            line.erase(0, line.find_first_not_of(" \t"));
            if (!line.empty() && line[0] != '#') {
                steps_.push_back(ParseStep(line));
            }
        }
    } catch (const Diverted& diverted) {
        End("The script cannot be played: " + diverted.reason);
        CloseAll();
        return;
    }
    thread_ = std::thread([this] { Run(); });
}

Wire::Step Wire::ParseStep(std::string_view line) {
    const auto verb = std::find_if(std::begin(verbs), std::end(verbs), [&](const Verb& row) {
        return line.starts_with(row.word) &&
               (line.size() == row.word.size() || line[row.word.size()] == ' ');
    });
    if (verb == std::end(verbs)) {
        throw Diverted{"no such step: " + ShowBytes(line)};
    }
    Step step{verb->play, {}, 0, false, std::string(line)};
    std::string_view rest = line.substr(verb->word.size());
    const std::string word(Trimmed(rest));
    bool isWhole = !word.empty();
    char* end = nullptr;
    switch (verb->operand) {
        case Operand::none:
            isWhole = word.empty();
            break;
        case Operand::seconds:
            step.seconds = std::strtod(word.c_str(), &end);
            isWhole = isWhole && *end == '\0';
            break;
        case Operand::name:
            step.text = word;
            break;
        default:
            rest.remove_prefix(rest.empty() ? 0 : 1);
            step.anyRest = verb->operand == Operand::pattern && rest.ends_with('*');
            rest.remove_suffix(step.anyRest);
            isWhole = ResolveEscapes(rest, &step.text);
    }
    if (!isWhole) {
        throw Diverted{"what stands behind the step is wrong: " + ShowBytes(line)};
    }
    return step;
}

std::string Wire::ShowBytes(std::string_view bytes) {
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
