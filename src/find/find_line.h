#pragma once
// One line of an export, as long as it needs to be.

#include "host/grow_buffer.h"

namespace quennet {

/// A text in the host's memory. What was added without memory for it shows in IsWhole.
class FindLine {
  public:
    FindLine() = default;
    ~FindLine();
    FindLine(const FindLine&) = delete;
    FindLine& operator=(const FindLine&) = delete;

    void Clear();
    void Add(const char* text);
    /// Right-aligned in `width` characters; a longer text pushes what follows to the right.
    void AddRight(const char* text, u32 width);
    /// A separator, unless the text is empty or ends with one of either kind.
    void AddSeparator(char separator);
    /// A field of a list whose fields are parted by ';': in double quotes if it holds one.
    void AddField(const char* text);

    bool IsWhole() const { return whole_; }
    const char* Text() const;

  private:
    void AddBytes(const char* bytes, u32 count);

    GrowBuffer buffer_ = {};  // ends with the terminator once there is anything
    bool whole_ = true;
};

}  // namespace quennet
