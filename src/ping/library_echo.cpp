#include "ping/library_echo.h"

#include <cstring>

#include "control/sockets.h"
#include "host/services.h"
#include "ping/echo_report.h"

namespace quennet {

namespace {

constexpr char libraryName[] = "ICMP.DLL";
constexpr u32 libraryFailedText = 6001;
constexpr u8 timeToLive = 255;
constexpr u32 limitMilliseconds = 1000;
constexpr u32 pauseMilliseconds = 1000;

static_assert(sizeof(ICMP_ECHO_REPLY) == 28 || sizeof(void*) != 4);

bool IsForbidden() {
    const auto* word =
        PointerFromWord<const u32>(hostTables.core->words[static_cast<u32>(CoreService::pingWord)]);
    return *word != 0;
}

template <typename Function>
bool Find(HMODULE library, const char* name, Function* function) {
    *function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    return *function != nullptr;
}

}  // namespace

LibraryEcho::~LibraryEcho() {
    if (file_ != INVALID_HANDLE_VALUE) {
        closeHandle_(file_);
    }
    if (library_ != nullptr) {
        FreeLibrary(library_);
    }
}

bool LibraryEcho::Open(const char* target) {
    if (!IsForbidden() && Load() && Resolve(target)) {
        file_ = createFile_();
    }
    if (file_ == INVALID_HANDLE_VALUE) {
        ReportTextId(console_, libraryFailedText);
        return false;
    }
    return true;
}

bool LibraryEcho::Load() {
    library_ = LoadLibraryA(libraryName);
    return library_ != nullptr && Find(library_, "IcmpCreateFile", &createFile_) &&
           Find(library_, "IcmpCloseHandle", &closeHandle_) &&
           Find(library_, "IcmpSendEcho", &sendEcho_);
}

bool LibraryEcho::Resolve(const char* target) {
    const u32 address = inet_addr(target);
    const hostent* host =
        address != INADDR_NONE
            ? gethostbyaddr(reinterpret_cast<const char*>(&address), sizeof address, AF_INET)
            : gethostbyname(target);
    if (host == nullptr || host->h_addr_list[0] == nullptr) {
        return false;
    }
    std::memcpy(&destination_, host->h_addr_list[0], sizeof destination_);
    return true;
}

bool LibraryEcho::RunCycle(PingState* state) {
    IP_OPTION_INFORMATION options{};
    options.Ttl = timeToLive;
    ICMP_ECHO_REPLY reply{};
    const u32 answers = sendEcho_(file_, destination_, nullptr, 0, &options, &reply, sizeof reply,
                                  limitMilliseconds);
    if (reply.Status != IP_SUCCESS) {
        PrintForeignPacket(console_);
    } else if (answers == 0) {
        PrintTimeOut(console_);  // nothing was written that could be shown
    } else {
        PrintDllReply(console_, reply, sequence_);
    }
    ++sequence_;
    if (!state->stopRequests.IsSet()) {
        Sleep(pauseMilliseconds);
    }
    return true;
}

}  // namespace quennet
