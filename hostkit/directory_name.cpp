#include "hostkit/directory_name.h"

namespace hostkit {

namespace {

constexpr char quote = '"';

struct Quoted {
    std::string text;
    std::string_view rest;  // behind the closing quote
};

/// The text up to the quote that ends it; nothing without one.
std::optional<Quoted> ReadQuoted(std::string_view text) {
    Quoted quoted;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == quote && (at + 1 == text.size() || text[++at] != quote)) {
            quoted.rest = text.substr(text[at] == quote ? at + 1 : at);
            return quoted;
        }
        quoted.text += text[at];
    }
    return std::nullopt;
}

bool HoldsQuote(const std::string& text) {
    return text.find(quote) != text.npos;
}

}  // namespace

std::optional<std::string> DirectoryIn(std::string_view reply, const std::string& step) {
    const std::size_t opening = reply.find(quote);
    if (opening == reply.npos) {
        return std::nullopt;
    }
    const std::string_view text = reply.substr(opening + 1);
    auto quoted = ReadQuoted(text);
    const bool isStep = HoldsQuote(step) && text.starts_with(step + quote);
    if (isStep && (!quoted || quoted->text != step)) {
        return step;
    }
    const bool endsWell = quoted && (quoted->rest.empty() || quoted->rest[0] == ' ');
    if (!quoted || (!endsWell && HoldsQuote(step))) {
        return std::nullopt;
    }
    std::string& directory = quoted->text;
    if (directory.size() > 1 && (directory.ends_with('/') || directory.ends_with('\\'))) {
        directory.pop_back();
    }
    return directory;
}

}  // namespace hostkit
