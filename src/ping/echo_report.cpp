#include "ping/echo_report.h"

#include <cstring>

#include "control/sockets.h"
#include "host/services.h"
#include "ping/echo_packet.h"

namespace quennet {

namespace {

constexpr u32 timedOutText = 6003;

}  // namespace

void PrintEchoReply(WindowNumber console, const u8* data, int length, const sockaddr_in& from) {
    constexpr int icmpHeaderSize = 8;
    const int headerSize = (data[0] & 0x0F) * 4;
    const char* sender = inet_ntoa(from.sin_addr);
    if (length < headerSize + icmpHeaderSize) {
        CoreConsolePrint()(console, "Too few bytes from %s", sender);
    }
    EchoMessage message;
    std::memcpy(&message, data + headerSize, sizeof message);
    if (message.type != echoReplyType) {
        CoreConsolePrint()(console, "Non-echo type %d recvd", message.type);
        return;
    }
    if (message.identifier != EchoIdentifier()) {
        PrintForeignPacket(console);
        return;
    }
    const auto milliseconds = static_cast<int>(GetTickCount() - message.timestamp);
    CoreConsolePrint()(console, "#%d, %d bytes from: %s, time: %d ms", message.sequence, length,
                       sender, milliseconds);
}

void PrintDllReply(WindowNumber console, const ICMP_ECHO_REPLY& reply, u32 sequence) {
    in_addr sender{};
    sender.s_addr = reply.Address;
    CoreConsolePrint()(console, "#%u from: %s, time: %d ms", sequence, inet_ntoa(sender),
                       static_cast<int>(reply.RoundTripTime));
}

void PrintForeignPacket(WindowNumber console) {
    CoreConsolePrintText(console, "Someone else's packet!");
}

void PrintTimeOut(WindowNumber console) {
    ReportTextId(console, timedOutText);
}

}  // namespace quennet
