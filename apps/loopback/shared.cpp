#include "shared.h"

namespace loopback {

void LineLog::Add(int client, bool fromClient, std::string_view text) {
    constexpr std::size_t mostLines = 20'000;
    std::lock_guard guard(lock_);
    lines_.push_back({client, fromClient, std::string(text)});
    if (lines_.size() > mostLines) {
        lines_.pop_front();
    }
}

std::vector<LogLine> LineLog::Lines() const {
    std::lock_guard guard(lock_);
    return {lines_.begin(), lines_.end()};
}

void LineLog::Clear() {
    std::lock_guard guard(lock_);
    lines_.clear();
}

Manner::Manner(const Options& options) : system_(options.system), format_(options.format) {
    for (const auto& [directory, format] : options.formats) {
        formats_[AbsolutePath("/", directory)] = format;
    }
}

std::string Manner::System() const {
    std::lock_guard guard(lock_);
    return system_.empty() ? std::string(SystemText(format_)) : system_;
}

void Manner::SetSystem(std::string text) {
    std::lock_guard guard(lock_);
    system_ = std::move(text);
}

ListFormat Manner::FormatOf(const std::string& directory) const {
    std::lock_guard guard(lock_);
    auto found = formats_.find(directory);
    return found == formats_.end() ? format_ : found->second;
}

void Manner::SetFormat(const std::string& directory, ListFormat format) {
    std::lock_guard guard(lock_);
    formats_[AbsolutePath("/", directory)] = format;
}

}  // namespace loopback
