#pragma once
// Memory and bounded text as the module asks for them.

#include <cstddef>

#include "host/grow_buffer.h"
#include "hostkit/types.h"

namespace hostkit {

/// Adds `text` behind the text in `target`, cut so that all of it with its terminator stays within
/// `size` bytes. A target that has no terminator within `size` is left alone.
void AppendBounded(char* target, const char* text, std::size_t size);

/// Adds `size` bytes to a growing buffer: base, used bytes and count change. The host word holds
/// the capacity. Growth is by half, so that a large block, which the C library moves by its pages,
/// never costs more than it holds. False without memory; the record is then as it was.
bool AppendToBuffer(quennet::GrowBuffer& record, const void* data, u32 size);

/// How often a buffer has grown, on all threads: the number moves while a listing arrives.
u32 BufferAppendCount();

}  // namespace hostkit
