#include <cstring>
#include <thread>

#include "platform/net/peer.h"

namespace {

using NamesTest = NetTest;

TEST_F(NamesTest, EachThreadHasItsOwnAnswers) {
    const hostent* const host = gethostbyname("127.0.0.9");
    ASSERT_NE(host, nullptr);
    in_addr address{};
    address.s_addr = htonl(0x01020304);
    const char* const text = inet_ntoa(address);
    std::thread([] {
        in_addr other{};
        EXPECT_STREQ(inet_ntoa(other), "0.0.0.0");
        EXPECT_NE(gethostbyname("127.0.0.8"), nullptr);
    }).join();
    EXPECT_STREQ(text, "1.2.3.4");
    ASSERT_EQ(host->h_length, 4);
    EXPECT_EQ(std::memcmp(host->h_addr_list[0], "\x7f\0\0\x09", 4), 0);
}

TEST_F(NamesTest, UnknownNamesHaveAResolverError) {
    EXPECT_EQ(gethostbyname("no-such-host.invalid"), nullptr);
    EXPECT_GE(WSAGetLastError(), WSAHOST_NOT_FOUND);
    EXPECT_LE(WSAGetLastError(), WSANO_DATA);
    EXPECT_EQ(getprotobyname("no such protocol"), nullptr);
    EXPECT_EQ(WSAGetLastError(), WSANO_DATA);
}

}  // namespace
