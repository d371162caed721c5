// What comes in on a raw ICMP socket, as the ping tool prints it, held against a plain reading.
//
// The first four bytes of the input are the sender's address, the next is '=' where the identifier
// is to be made this process's own; the rest is the datagram.

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/expect.h"
#include "host/services.h"
#include "ping/echo_report.h"

using namespace quennet;

namespace {

constexpr DWORD process = 0x12345678;
constexpr DWORD now = 0x00010000;
constexpr WindowNumber consoleNumber = 5;
constexpr std::size_t addressSize = 4;

std::vector<std::string> lines;

extern "C" void TakeLine(WindowNumber console, const char* format, ...) {
    Expect(console == consoleNumber);
    char line[256];
    va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(line, sizeof line, format, values);
    va_end(values);
    Expect(length >= 0 && static_cast<std::size_t>(length) < sizeof line);
    lines.emplace_back(line);
}

u32 NumberAt(const u8* bytes, std::size_t size) {
    u32 number = 0;
    std::memcpy(&number, bytes, size);  // the machine's own order, the lowest first
    return number;
}

std::vector<std::string> PlainLines(const u8* datagram, int length, const std::string& sender) {
    std::vector<std::string> plain;
    const int headerSize = datagram[0] % 16 * 4;
    const u8* message = datagram + headerSize;
    if (length < headerSize + 8) {
        plain.push_back("Too few bytes from " + sender);
    }
    if (message[0] != 0) {
        plain.push_back("Non-echo type " + std::to_string(message[0]) + " recvd");
    } else if (NumberAt(message + 4, 2) != process % 0x10000) {
        plain.push_back("Someone else's packet!");
    } else {
        const auto time = static_cast<i32>(now - NumberAt(message + 8, 4));
        plain.push_back("#" + std::to_string(NumberAt(message + 6, 2)) + ", " +
                        std::to_string(length) + " bytes from: " + sender +
                        ", time: " + std::to_string(time) + " ms");
    }
    return plain;
}

struct ConsoleHost {
    CoreServices core = {};

    ConsoleHost() {
        core.words[static_cast<u32>(CoreService::consolePrint)] =
            reinterpret_cast<HostWord>(&TakeLine);
        hostTables.core = &core;
    }
};

}  // namespace

// --- The platform, without its clock --------------------------------------------------------

DWORD WINAPI GetTickCount() {
    return now;
}

DWORD WINAPI GetCurrentProcessId() {
    return process;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const ConsoleHost host;
    if (size < addressSize + 1) {
        return -1;
    }
    const u8* arrived = data + addressSize + 1;
    const std::size_t length = size - addressSize - 1;
    // What the receiving buffer holds at least is all that may be read.
    std::vector<u8> datagram(std::max<std::size_t>(length, reportedBytes));
    std::copy(arrived, arrived + length, datagram.begin());
    if (data[addressSize] == '=') {
        const u16 identifier = process % 0x10000;
        std::memcpy(&datagram[static_cast<std::size_t>(datagram[0]) % 16 * 4 + 4], &identifier, 2);
    }
    sockaddr_in from{};
    std::memcpy(&from.sin_addr, data, addressSize);
    const std::string sender = std::to_string(data[0]) + "." + std::to_string(data[1]) + "." +
                               std::to_string(data[2]) + "." + std::to_string(data[3]);
    lines.clear();
    PrintEchoReply(consoleNumber, datagram.data(), static_cast<int>(length), from);
    Expect(lines == PlainLines(datagram.data(), static_cast<int>(length), sender));
    return 0;
}
