#pragma once
// The system's MIME database as far as names of files go: which type a name has, what a type is
// called, which kind of picture stands for it. Format: shared-mime-info, version 2.2.
//
// Other people write these files; what is too large or not as it should be is left out.

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quennet::base {

class MimeTypes {
  public:
    /// `folders` hold the database's files ("/usr/share/mime"); the first one counts most.
    explicit MimeTypes(std::vector<std::string> folders);

    /// The one of the system, read at the first call. From any thread, as all of this.
    static const MimeTypes& OfSystem();

    /// The type of a file of that name without a path ("text/plain"), empty when the name tells
    /// nothing.
    std::string TypeOf(std::string_view name) const;
    /// What a type is called ("plain text document"), empty when nobody says so.
    std::string CommentOf(const std::string& type) const;
    /// The name of its generic icon ("text-x-generic").
    std::string IconOf(const std::string& type) const;

  private:
    struct Glob {
        int weight = 0;
        std::string pattern;
        std::string type;

        bool IsBetterThan(const Glob* other) const;
    };
    using GlobsByText = std::unordered_map<std::string, Glob>;

    void ReadGlobs(const std::string& folder);
    void ReadIcons(const std::string& folder);
    void AddGlob(Glob glob, bool caseCounts);

    std::vector<std::string> folders_;
    // By whether the case of letters counts: what is behind the '*', if that is all there is to a
    // pattern; whole names; the few others.
    GlobsByText suffixes_[2];
    GlobsByText names_[2];
    std::vector<Glob> others_[2];
    std::unordered_map<std::string, std::string> icons_;
    mutable std::mutex mutex_;
    mutable std::unordered_map<std::string, std::string> comments_;
};

}  // namespace quennet::base
