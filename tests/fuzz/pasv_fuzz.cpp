// The reply to PASV: what is read of it, and where the data connection goes.
//
// The first byte of the input picks who asks: 'n' for the six numbers, 'c' for a connection. The
// second says how the text comes (see ServerText).

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "control/server_family.h"
#include "fuzz/expect.h"
#include "fuzz/fed_session.h"
#include "transfer/data_connection.h"

using namespace quennet;

namespace {

struct PlainNumbers {
    int number[6];
    bool areThere;

    explicit PlainNumbers(const char* reply) {
        reply += std::min<std::size_t>(3, std::strlen(reply));
        reply += std::strcspn(reply, "0123456789");
        areThere = std::sscanf(reply, "%d,%d,%d,%d,%d,%d", &number[0], &number[1], &number[2],
                               &number[3], &number[4], &number[5]) == 6;
    }

    u16 Port() const {
        return static_cast<u16>(static_cast<u32>(number[4]) * 256 + static_cast<u32>(number[5]));
    }
};

void ReadNumbers(const FedSession& session) {
    constexpr u16 portBefore = 99;
    const u8 before[6] = {9, 8, 7, 6, 5, 4};
    u8 numbers[6];
    std::copy(before, before + 6, numbers);
    u16 port = portBefore;
    const int result = SendPasvCommand(session, numbers, &port);
    Expect(result == session->firstCode / 100);
    const PlainNumbers plain(session->replyBuffer);
    if (result == 2 && plain.areThere) {
        Expect(std::equal(numbers, numbers + 6, plain.number,
                          [](u8 low, int number) { return low == static_cast<u8>(number); }));
        Expect(port == plain.Port());
    } else {
        Expect(std::equal(before, before + 6, numbers) && port == portBefore);
    }
}

void Connect(const FedSession& session) {
    const SocketNumber data = OpenPassiveData(session);
    const PlainNumbers plain(session->replyBuffer);
    const bool mayConnect = session->firstCode / 100 == 2 && plain.areThere && plain.Port() != 0;
    Expect((data != noSocket) == mayConnect);
    Expect(PortOfDataConnection() == (mayConnect ? plain.Port() : 0));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2 || (data[0] != 'n' && data[0] != 'c')) {
        return -1;
    }
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const FedSession session(ServerText::FromInput(text), ServerFamily::unknown);
    if (data[0] == 'n') {
        ReadNumbers(session);
    } else {
        Connect(session);
    }
    session.ExpectCommands({"PASV"});
    session.ExpectInOrder();
    return 0;
}
