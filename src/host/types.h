#pragma once
// Number types of the module, and the words that it exchanges with its host.

#include <windows.h>

#include <cstddef>
#include <cstdint>

namespace quennet {

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;
using i8 = std::int8_t;
using i16 = std::int16_t;
using i32 = std::int32_t;
using i64 = std::int64_t;

/// A word of the host that may hold a pointer, a function, an instance or a number: 32 bits on
/// the module's home platform, as wide as a pointer everywhere.
using HostWord = std::uintptr_t;

/// A window handle as records hold it: a 32-bit number on every platform, 0 for none.
using WindowNumber = u32;

inline HWND WindowFromNumber(WindowNumber number) {
    return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(number));
}

inline WindowNumber NumberFromWindow(HWND window) {
    return static_cast<WindowNumber>(reinterpret_cast<std::uintptr_t>(window));
}

template <typename T>
T* PointerFromWord(HostWord word) {
    return reinterpret_cast<T*>(word);
}

template <typename T>
HostWord WordFromPointer(T* pointer) {
    return reinterpret_cast<HostWord>(pointer);
}

/// Byte offset of a field that stands behind `pointers` pointer words: its offset in the 32-bit
/// layout plus what those words are wider here.
constexpr std::size_t WidenedOffset(std::size_t offset32, std::size_t pointers) {
    return offset32 + pointers * (sizeof(HostWord) - 4);
}

}  // namespace quennet
