#include "find_omissions.h"

#include <algorithm>
#include <string_view>

#include "failure.h"
#include "hostkit/console.h"

namespace cli {

namespace {

constexpr std::string_view listCommand = "LIST";
constexpr std::string_view enteredCommand = "PWD";  // once for each directory
constexpr std::string_view commands[] = {"CWD ", enteredCommand, "PASV", "PORT ", listCommand};
constexpr std::string_view repair = "Connecting to ";
constexpr std::string_view dataCommands[] = {"PASV", "PORT "};
constexpr std::string_view listingTooLong = "The listing is longer than 1 GiB.";
constexpr std::string_view pathTooLong = "Directory name too long, refused.";
constexpr char noReply[] = "no reply";

std::string Directories(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " directory" : " directories");
}

}  // namespace

void Omissions::TakeLine(const std::string& line) {
    const auto begins = [&](std::string_view command) { return line.starts_with(command); };
    if (line == pathTooLong) {
        ++tooLong_;
    } else if (line == listingTooLong) {
        NoteUnlisted(line);
    } else if (begins(repair)) {
        // The command is sent again, and the directory may be listed once more.
        EndListing(false, "the connection was lost");
        isUnlisted_ = isUnlisted_ || awaitsListing_;
        awaitsListing_ = false;
        isOpen_ = false;
    } else if (std::ranges::any_of(commands, begins)) {
        TakeCommand(line);
    } else if (hostkit::IsReply(line)) {
        TakeReply(line);
    }
    cause_.Take(line);
}

void Omissions::TakeCommand(const std::string& line) {
    EndListing(false, noReply);
    const bool wantsData = std::ranges::any_of(
        dataCommands, [&](std::string_view command) { return line.starts_with(command); });
    if (awaitsListing_ && !wantsData && !line.starts_with(listCommand)) {
        NoteUnlisted(cause_.Text());
    }
    awaitsListing_ = wantsData;
    if (line.starts_with(enteredCommand)) {
        unlisted_ += isUnlisted_ ? 1 : 0;
        isUnlisted_ = false;
        cause_.Begin();
    }
    anyUnanswered_ = anyUnanswered_ || isOpen_;
    isOpen_ = true;
    isListing_ = line.starts_with(listCommand);
}

void Omissions::TakeReply(const std::string& line) {
    isOpen_ = false;
    if (line[0] != '1') {
        EndListing(line[0] == '2', line);
    }
}

void Omissions::EndListing(bool listed, const std::string& words) {
    if (isListing_) {
        isUnlisted_ = !listed;
        words_ = listed || !words_.empty() ? words_ : words;
        isListing_ = false;
    }
}

void Omissions::NoteUnlisted(const std::string& words) {
    isUnlisted_ = true;
    words_ = words_.empty() ? words : words_;
}

std::string Omissions::TooLong() const {
    return tooLong_ == 0 ? "" : Directories(tooLong_) + " left out: a path of more than 519 bytes";
}

void Omissions::Check() const {
    const std::size_t count = unlisted_ + (isUnlisted_ || isListing_ || awaitsListing_ ? 1 : 0);
    const std::string cause = awaitsListing_ ? cause_.Text() : "";
    const std::string words = !words_.empty() ? words_ : !cause.empty() ? cause : noReply;
    std::string text = TooLong();
    if (count > 0) {
        text += text.empty() ? "" : ", ";
        text += Directories(count) + " could not be listed: " + words;
    }
    if (!text.empty()) {
        throw Failure(ExitStatus::failed, text);
    }
}

}  // namespace cli
