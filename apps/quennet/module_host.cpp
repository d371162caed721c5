#include "module_host.h"

#include <windows.h>

#include <filesystem>
#include <utility>

#include "failure.h"

namespace cli {

namespace {

namespace fs = std::filesystem;

constexpr char libraryName[] = "libQuennet.so";
constexpr const char* folders[] = {".", "../lib", "../lib/quennet"};  // seen from the program

/// The module's function, wrapped, and the instance that its dialogs belong to.
void Attach(hostkit::Host& host, quennet::ModuleFunction (*wrap)(quennet::ModuleFunction)) {
    const std::string path = ModulePath();
    const HMODULE library = LoadLibraryA(path.c_str());
    const FARPROC address = library != nullptr ? GetProcAddress(library, "f") : nullptr;
    if (address == nullptr) {
        throw Failure(ExitStatus::failed, "the module " + path + " cannot be loaded");
    }
    const auto function =
        reinterpret_cast<quennet::ModuleFunction>(reinterpret_cast<void*>(address));
    host.Attach(wrap(function), library);
}

}  // namespace

std::string ModulePath() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    for (const char* folder : folders) {
        const fs::path library = program.parent_path() / folder / libraryName;
        if (!error && fs::exists(library, error)) {
            return library.lexically_normal().string();
        }
    }
    return libraryName;
}

void RunWithModule(hostkit::HostOptions options, const std::function<void(hostkit::Host&)>& job,
                   quennet::ModuleFunction (*wrap)(quennet::ModuleFunction)) {
    hostkit::MessageLoop loop;
    hostkit::Host host(loop, std::move(options));
    if (wrap != nullptr) {
        Attach(host, wrap);
    } else {
        host.LoadModule(ModulePath());
    }
    hostkit::RunJob(loop, [&] { job(host); });
}

}  // namespace cli
