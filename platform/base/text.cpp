// Text in the ANSI code page, which is Latin-1 here.

#include "winbase.h"

namespace {

unsigned char UpperOf(unsigned char character) {
    const bool letter = character >= 'a' && character <= 'z';
    const bool accented = character >= 0xE0 && character <= 0xFE && character != 0xF7;
    return letter || accented ? static_cast<unsigned char>(character - 0x20) : character;
}

}  // namespace

LPSTR WINAPI CharUpperA(LPSTR text) {
    const auto word = reinterpret_cast<uintptr_t>(text);
    if (word < 0x10000) {
        const uintptr_t upper = UpperOf(static_cast<unsigned char>(word));
        return reinterpret_cast<LPSTR>((word & ~uintptr_t{0xFF}) | upper);
    }
    for (char* place = text; *place != '\0'; ++place) {
        *place = static_cast<char>(UpperOf(static_cast<unsigned char>(*place)));
    }
    return text;
}

int WINAPI lstrcmpiA(LPCSTR left, LPCSTR right) {
    for (;; ++left, ++right) {
        const int leftUpper = UpperOf(static_cast<unsigned char>(*left));
        const int rightUpper = UpperOf(static_cast<unsigned char>(*right));
        if (leftUpper != rightUpper || leftUpper == 0) {
            return leftUpper - rightUpper;
        }
    }
}
