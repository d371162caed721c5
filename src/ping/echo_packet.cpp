#include "ping/echo_packet.h"

#include <cstring>

namespace quennet {

u16 EchoIdentifier() {
    return static_cast<u16>(GetCurrentProcessId());
}

void FillEchoRequest(u8* packet, u32 size) {
    constexpr u8 filler = 0x45;
    EchoMessage message{};
    message.type = echoRequestType;
    message.identifier = EchoIdentifier();
    std::memcpy(packet, &message, sizeof message);
    std::memset(packet + sizeof message, filler, size - sizeof message);
}

void StampEchoRequest(u8* packet, u16 sequence) {
    EchoMessage message;
    std::memcpy(&message, packet, sizeof message);
    message.checksum = 0;
    message.timestamp = GetTickCount();
    message.sequence = sequence;
    message.checksum = InternetChecksum(&message, sizeof message);
    std::memcpy(packet, &message, sizeof message);
}

u16 InternetChecksum(const void* data, u32 length) {
    const auto* bytes = static_cast<const u8*>(data);
    u32 sum = 0;
    for (; length > 1; length -= 2, bytes += 2) {
        u16 word = 0;
        std::memcpy(&word, bytes, sizeof word);
        sum += word;
    }
    if (length == 1) {
        sum += *bytes;
    }
    sum = (sum >> 16) + (sum & 0xFFFF);
    sum += sum >> 16;
    return static_cast<u16>(~sum);
}

}  // namespace quennet
