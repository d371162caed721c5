#include "hostkit/window.h"

#include <stdexcept>
#include <string>

namespace hostkit {

HWND MakeWindow(const char* className, WNDPROC procedure, void* owner) {
    const HINSTANCE program = GetModuleHandleA(nullptr);
    WNDCLASSEXA entry = {};
    entry.cbSize = sizeof(entry);
    if (GetClassInfoExA(program, className, &entry) == FALSE) {
        entry.lpfnWndProc = procedure;
        entry.hInstance = program;
        entry.lpszClassName = className;
        RegisterClassExA(&entry);
    }
    const HWND window =
        CreateWindowExA(0, className, "", 0, 0, 0, 0, 0, nullptr, nullptr, program, nullptr);
    if (window == nullptr) {
        throw std::runtime_error(std::string("cannot make a window of class ") + className);
    }
    SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(owner));
    return window;
}

}  // namespace hostkit
