#include "ping/scripted_platform.h"

#include <winsock.h>

#include <icmpapi.h>
#include <windows.h>

#include <algorithm>
#include <cstring>

#include "ping/echo_packet.h"

ScriptedPlatform platform;

namespace {

constexpr SOCKET rawSocket = 7;
constexpr DWORD startTicks = 1000;
std::atomic<DWORD> ticks = startTicks;  // windows take the time as well
std::size_t turnsBegun = 0;

const HANDLE file = reinterpret_cast<HANDLE>(uintptr_t{8});
const HMODULE library = reinterpret_cast<HMODULE>(uintptr_t{12});

/// The turn that begins; behind the last one a plain answer.
Turn NextTurn() {
    const Turn turn = turnsBegun < platform.turns.size() ? platform.turns[turnsBegun] : Turn{};
    ++turnsBegun;
    if (platform.state != nullptr && turnsBegun == platform.turns.size()) {
        platform.state->stopRequests.Store(1);
    }
    return turn;
}

Turn turn;

int FailWith(int error) {
    WSASetLastError(error);
    return SOCKET_ERROR;
}

hostent* RecordOf(bool isKnown) {
    static in_addr address{htonl(0x0A000001)};
    static char* addresses[] = {reinterpret_cast<char*>(&address), nullptr};
    static hostent record{nullptr, nullptr, AF_INET, sizeof address, addresses};
    return isKnown ? &record : (WSASetLastError(WSAHOST_NOT_FOUND), nullptr);
}

HANDLE WINAPI CreateFileOfScript() {
    platform.opened += platform.hasFile ? 1 : 0;
    return platform.hasFile ? file : INVALID_HANDLE_VALUE;
}

BOOL WINAPI CloseFileOfScript(HANDLE) {
    ++platform.closed;
    return TRUE;
}

DWORD WINAPI SendEchoOfScript(HANDLE, IPAddr destination, LPVOID data, WORD size,
                              PIP_OPTION_INFORMATION options, LPVOID buffer, DWORD replySize,
                              DWORD milliseconds) {
    turn = NextTurn();
    auto* reply = static_cast<ICMP_ECHO_REPLY*>(buffer);
    char text[80];
    std::snprintf(text, sizeof text, "%d %d ttl %d tos %d %d %u ms, status %u", data == nullptr,
                  size, options->Ttl, options->Tos, replySize == sizeof *reply, milliseconds,
                  reply->Status);
    platform.requests.push_back(text);
    if (turn.answers != 0) {
        reply->Address = destination;
        reply->Status = turn.status;
        reply->RoundTripTime = turn.milliseconds;
    }
    return turn.answers;
}

}  // namespace

extern "C" {

SOCKET quennet_socket(int, int, int) {
    platform.opened += platform.hasRawSocket ? 1 : 0;
    turnsBegun = 0;
    ticks = startTicks;
    return platform.hasRawSocket ? rawSocket : INVALID_SOCKET;
}

int WINAPI closesocket(SOCKET) {
    ++platform.closed;
    return 0;
}

int quennet_setsockopt(SOCKET, int, int option, const char*, int) {
    return option == platform.refusedOption ? FailWith(WSAENOPROTOOPT) : 0;
}

int quennet_sendto(SOCKET, const char* data, int length, int, const sockaddr*, int) {
    platform.requests.emplace_back(data, static_cast<std::size_t>(length));
    turn = NextTurn();
    return turn.sendError != 0 ? FailWith(turn.sendError) : turn.sent;
}

int quennet_recvfrom(SOCKET, char* buffer, int, int, sockaddr* from, int*) {
    if (platform.whileWaiting) {
        platform.whileWaiting();
    }
    if (turn.receiveError != 0) {
        return FailWith(turn.receiveError);
    }
    quennet::EchoMessage message;
    std::memcpy(&message, platform.requests.back().data(), sizeof message);
    message.type = static_cast<quennet::u8>(turn.type);
    message.identifier = static_cast<quennet::u16>(message.identifier + turn.otherProcess);
    char datagram[72] = {static_cast<char>(0x40 | turn.headerSize / 4)};
    std::memcpy(datagram + turn.headerSize, &message, sizeof message);
    const int whole = turn.headerSize + static_cast<int>(sizeof message);
    const int length = turn.length != 0 ? turn.length : whole;
    std::memcpy(buffer, datagram, static_cast<std::size_t>(length));
    reinterpret_cast<sockaddr_in*>(from)->sin_addr.s_addr = htonl(0x0A000001);
    ticks += turn.milliseconds;
    return length;
}

hostent* quennet_gethostbyname(const char* name) {
    return RecordOf(std::string(name) == "named");
}

hostent* quennet_gethostbyaddr(const char* address, int, int) {
    const in_addr known{htonl(0x0A000001)};
    return RecordOf(std::memcmp(address, &known, sizeof known) == 0);
}

DWORD WINAPI GetTickCount() {
    return ticks;
}

void WINAPI Sleep(DWORD milliseconds) {
    platform.pauses += milliseconds == 1000 ? 1 : 0;
}

HMODULE WINAPI LoadLibraryA(LPCSTR name) {
    turnsBegun = 0;
    const bool isThere = platform.hasLibrary && std::string(name) == "ICMP.DLL";
    platform.opened += isThere ? 1 : 0;
    return isThere ? library : nullptr;
}

BOOL WINAPI FreeLibrary(HMODULE) {
    ++platform.closed;
    return TRUE;
}

FARPROC WINAPI GetProcAddress(HMODULE, LPCSTR name) {
    struct Row {
        const char* name;
        void* address;
    };
    const Row rows[] = {{"IcmpCreateFile", reinterpret_cast<void*>(CreateFileOfScript)},
                        {"IcmpCloseHandle", reinterpret_cast<void*>(CloseFileOfScript)},
                        {"IcmpSendEcho", reinterpret_cast<void*>(SendEchoOfScript)}};
    const auto* row =
        std::ranges::find_if(rows, [&](const Row& each) { return std::string(each.name) == name; });
    const bool isThere = row != std::end(rows) && platform.missingFunction != name;
    return isThere ? reinterpret_cast<FARPROC>(row->address) : nullptr;
}
}
