// Shared libraries. A module handle is a load address, as code inside the library finds its own
// one by dladdr; the table keeps what the dynamic linker wants back.

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <mutex>
#include <vector>

#include "winbase.h"

namespace {

struct LoadedLibrary {
    HMODULE module;
    void* handle;
    unsigned uses;
};

std::mutex tableLock;

/// Never destroyed: libraries are freed until the very end of the process.
std::vector<LoadedLibrary>& Table() {
    static auto& table = *new std::vector<LoadedLibrary>;
    return table;
}

std::vector<LoadedLibrary>::iterator FindLoaded(HMODULE module) {
    return std::find_if(Table().begin(), Table().end(),
                        [&](const LoadedLibrary& loaded) { return loaded.module == module; });
}

HMODULE ModuleOfAddress(const void* address) {
    Dl_info info{};
    if (dladdr(address, &info) == 0) {
        return nullptr;
    }
    return static_cast<HMODULE>(info.dli_fbase);
}

HMODULE ModuleOfHandle(void* handle) {
    link_map* map = nullptr;
    if (dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0) {
        return nullptr;
    }
    return ModuleOfAddress(map->l_ld);
}

/// Libraries of the platform that this one stands in for.
constexpr LPCSTR ownLibraries[] = {"ICMP.DLL"};

bool IsOwnLibrary(LPCSTR name) {
    return std::ranges::any_of(ownLibraries, [&](LPCSTR own) { return lstrcmpiA(own, name) == 0; });
}

/// A handle that the caller closes, for the library that this function is part of.
void* ReopenOwnLibrary() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(ReopenOwnLibrary), &info) == 0) {
        return nullptr;
    }
    return dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
}

/// A handle that the caller closes, for a module loaded by whatever means.
void* ReopenModule(HMODULE module) {
    if (module == GetModuleHandleA(nullptr)) {
        return dlopen(nullptr, RTLD_LAZY);
    }
    Dl_info info{};
    if (module == nullptr || dladdr(module, &info) == 0 || info.dli_fbase != module) {
        return nullptr;
    }
    return dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
}

}  // namespace

HMODULE WINAPI LoadLibraryA(LPCSTR name) {
    if (name == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    void* const handle =
        IsOwnLibrary(name) ? ReopenOwnLibrary() : dlopen(name, RTLD_NOW | RTLD_LOCAL);
    const HMODULE module = handle != nullptr ? ModuleOfHandle(handle) : nullptr;
    if (module == nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    const std::lock_guard guard(tableLock);
    const auto known = FindLoaded(module);
    if (known != Table().end()) {
        ++known->uses;
    } else {
        Table().push_back({module, handle, 1});
    }
    return module;
}

BOOL WINAPI FreeLibrary(HMODULE library) {
    void* handle = nullptr;
    {
        const std::lock_guard guard(tableLock);
        const auto known = FindLoaded(library);
        if (known == Table().end()) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        handle = known->handle;
        if (--known->uses == 0) {
            Table().erase(known);
        }
    }
    // Outside the lock: the library's own end runs here.
    dlclose(handle);
    return TRUE;
}

FARPROC WINAPI GetProcAddress(HMODULE library, LPCSTR name) {
    void* const handle = ReopenModule(library);
    if (handle == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    void* const address = dlsym(handle, name);
    dlclose(handle);
    // dlsym also looks into what the library depends on.
    if (address == nullptr || ModuleOfAddress(address) != library) {
        SetLastError(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    return reinterpret_cast<FARPROC>(address);
}

HMODULE WINAPI GetModuleHandleA(LPCSTR name) {
    if (name != nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    static const HMODULE program = [] {
        void* const handle = dlopen(nullptr, RTLD_LAZY);
        const HMODULE module = ModuleOfHandle(handle);
        dlclose(handle);
        return module;
    }();
    return program;
}
