#pragma once
// Standard output, with its failures.

#include <string>
#include <string_view>

namespace cli {

/// Collects text and writes it. Throws Failure when it can't be written, one without a text when
/// the reader has had enough.
class StandardOutput {
  public:
    void Write(std::string_view text);
    /// Writes the rest. To be called at the end: the destructor writes nothing.
    void Flush();

  private:
    std::string pending_;
};

}  // namespace cli
