#pragma once
// Local paths that the module's records have no room for.

#include <string>

namespace hostkit {

/// A local path for one message. The files that the calling thread works on meanwhile under its
/// name, in the module's records, are that path's.
class LongPath {
  public:
    explicit LongPath(const std::string& path);
    ~LongPath();
    LongPath(const LongPath&) = delete;
    LongPath& operator=(const LongPath&) = delete;

    /// What stands for the path: the path itself where it fits.
    std::string Name() const;

    /// The path that a name of the module stands for.
    static std::string Of(const char* name);

  private:
    const std::string& path_;
};

}  // namespace hostkit
