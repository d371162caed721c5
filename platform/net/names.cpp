// Names of hosts and protocols. Each thread has its own results.

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <vector>

#include "base/per_thread.h"
#include "net/errors.h"
#include "net/waiting.h"

using namespace quennet::net;

namespace {

/// One answer of the name service and the memory that its pointers lead to.
template <typename Record>
struct Answer {
    Record record{};
    std::vector<char> texts = std::vector<char>(1024);
};

const quennet::PerThread<Answer<hostent>> answersByAddress;
const quennet::PerThread<Answer<hostent>> answersByName;
const quennet::PerThread<Answer<protoent>> protocolAnswers;

constexpr std::size_t longestTexts = 1024 * 1024;

/// Repeats a lookup with more and more memory, as long as it asks for it.
template <typename Record, typename Lookup>
Record* Ask(Answer<Record>* answer, Lookup lookup) {
    for (;;) {
        Record* result = nullptr;
        const int error =
            lookup(&answer->record, answer->texts.data(), answer->texts.size(), &result);
        if (error != ERANGE || answer->texts.size() >= longestTexts) {
            return result;
        }
        answer->texts.resize(answer->texts.size() * 4);
    }
}

/// One of the protocols that need no data base: there may be none, and without memory the one of
/// the system ends the process. Null for another name.
protoent* CommonProtocol(const char* name) {
    static char* noAliases[] = {nullptr};
    static char ip[] = "ip";
    static char icmp[] = "icmp";
    static char tcp[] = "tcp";
    static char udp[] = "udp";
    static protoent protocols[] = {{ip, noAliases, IPPROTO_IP},
                                   {icmp, noAliases, IPPROTO_ICMP},
                                   {tcp, noAliases, IPPROTO_TCP},
                                   {udp, noAliases, IPPROTO_UDP}};
    const auto found = std::ranges::find_if(
        protocols, [&](const protoent& each) { return std::strcmp(each.p_name, name) == 0; });
    return found != std::end(protocols) ? found : nullptr;
}

int ResolverError(int hostError) {
    switch (hostError) {
        case HOST_NOT_FOUND:
            return WSAHOST_NOT_FOUND;
        case TRY_AGAIN:
            return WSATRY_AGAIN;
        case NO_DATA:
            return WSANO_DATA;
        default:
            return WSANO_RECOVERY;
    }
}

}  // namespace

hostent* quennet_gethostbyaddr(const char* address, int size, int family) try {
    if (!Started()) {
        return nullptr;
    }
    if (address == nullptr || size != sizeof(in_addr) || family != AF_INET) {
        Fail(WSAEFAULT);
        return nullptr;
    }
    PushUnsentOfThread();
    int hostError = HOST_NOT_FOUND;
    hostent* const found = Ask(&answersByAddress.Get(), [&](hostent* record, char* texts,
                                                            std::size_t room, hostent** result) {
        return gethostbyaddr_r(address, sizeof(in_addr), AF_INET, record, texts, room, result,
                               &hostError);
    });
    if (found != nullptr) {
        return found;
    }
    in_addr plain{};
    std::memcpy(&plain, address, sizeof plain);
    return quennet_gethostbyname(quennet_inet_ntoa(plain));
} catch (const std::bad_alloc&) {
    Fail(WSAENOBUFS);
    return nullptr;
}

hostent* quennet_gethostbyname(const char* name) try {
    if (!Started()) {
        return nullptr;
    }
    if (name == nullptr) {
        Fail(WSAEFAULT);
        return nullptr;
    }
    PushUnsentOfThread();
    int hostError = HOST_NOT_FOUND;
    hostent* const found = Ask(&answersByName.Get(), [&](hostent* record, char* texts,
                                                         std::size_t size, hostent** result) {
        return gethostbyname2_r(name, AF_INET, record, texts, size, result, &hostError);
    });
    if (found == nullptr) {
        Fail(ResolverError(hostError));
    }
    return found;
} catch (const std::bad_alloc&) {
    Fail(WSAENOBUFS);
    return nullptr;
}

protoent* quennet_getprotobyname(const char* name) try {
    if (!Started()) {
        return nullptr;
    }
    if (name == nullptr) {
        Fail(WSAEFAULT);
        return nullptr;
    }
    if (protoent* const common = CommonProtocol(name)) {
        return common;
    }
    protoent* const found = Ask(&protocolAnswers.Get(), [&](protoent* record, char* texts,
                                                            std::size_t size, protoent** result) {
        return getprotobyname_r(name, record, texts, size, result);
    });
    if (found == nullptr) {
        Fail(WSANO_DATA);
    }
    return found;
} catch (const std::bad_alloc&) {
    Fail(WSAENOBUFS);
    return nullptr;
}

char* quennet_inet_ntoa(in_addr address) {
    static thread_local char text[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &address, text, sizeof text);
    return text;
}
