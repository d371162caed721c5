// What a server says on the control channel, then the end of the connection.
//
// The first byte of the input picks who reads it: 'r' replies, 'l' single lines, 's' replies that
// are owed, 'w' and 'd' the reply to PWD, 'p' the reply to PASV; in capitals, from a server whose
// lines end with CR. The second byte is a digit: in how many pieces the text comes once more.

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "control/reply.h"
#include "control/server_family.h"
#include "control/sockets.h"
#include "control/working_directory.h"
#include "fuzz/expect.h"
#include "fuzz/reply_server.h"
#include "host/services.h"
#include "hostkit/services.h"
#include "transfer/data_connection.h"

using namespace quennet;

namespace {

std::vector<std::string> printed;

extern "C" void PrintLine(WindowNumber, const char* format, ...) {
    char line[2 * replyBufferSize];
    va_list values;
    va_start(values, format);
    std::vsnprintf(line, sizeof line, format, values);
    va_end(values);
    printed.emplace_back(line);
}

struct TestHost {
    CoreServices core = {};
    ShellServices shell = {};
    u32 socketUses = 0;

    TestHost() {
        hostkit::FillMemoryServices(core, shell);
        hostkit::Put<CoreConsolePrintFunction>(core, CoreService::consolePrint, PrintLine);
        hostTables.core = &core;
        hostTables.shell = &shell;
        Expect(AcquireWinsock(0, &socketUses) == 0);
    }
};

/// The text as its lines, in the form in which each stands in `replyBuffer`.
std::vector<std::string> LinesOf(std::string text) {
    constexpr std::size_t longestLine = 4000;
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min({text.find('\n'), text.size() - 1, longestLine - 1}) + 1;
        std::string line(text.substr(0, end).c_str());
        while (line.size() > 2 && std::strchr("\r\n ", line.back()) != nullptr) {
            line.pop_back();
        }
        lines.push_back(line);
        text.erase(0, end);
    }
    return lines;
}

constexpr char transferType = 'A';
constexpr u16 portOfSite = 21;

void ExpectInOrder(const Session* session) {
    Expect(session->replyDepth == 0 && !session->busy.IsSet());
    Expect(session->firstCode == 0 || (session->firstCode >= 100 && session->firstCode <= 599));
    Expect(std::memchr(session->replyBuffer, 0, replyBufferSize) != nullptr);
    Expect(session->transferType == transferType && session->port == portOfSite);
}

void ReadReplies(Session* session, const std::string& text) {
    for (int result = 1; result > 0;) {
        result = ReadReply(session);
        Expect(result == session->firstCode / 100);
        ExpectInOrder(session);
    }
    // All lines up to some point, in their order, and all of each.
    std::vector<std::string> lines = LinesOf(text);
    std::erase(lines, "");
    Expect(printed.size() <= lines.size());
    Expect(std::equal(printed.begin(), printed.end(), lines.begin()));
}

void ReadSingleLines(Session* session, const std::string& text) {
    for (const std::string& line : LinesOf(text)) {
        Expect(ReadReplyLine(session) == std::atoi(line.substr(0, 3).c_str()));
        Expect(session->replyBuffer == line);
        ExpectInOrder(session);
    }
    Expect(ReadReplyLine(session) == 0 && session->replyBuffer[0] == 0);
}

void ReadOwedReplies(Session* session, const std::string&) {
    session->owedReplies = 2;
    session->doubtfulReplies = 1;
    SettleOwedReplies(session);
    Expect(session->owedReplies == 0 && session->doubtfulReplies == 0);
    ExpectInOrder(session);
}

void ReadDirectory(Session* session, const std::string&) {
    char* directory = nullptr;
    const int replyClass = GetWorkingDir(session, &directory);
    Expect(replyClass >= 0 && replyClass <= 5);
    ExpectInOrder(session);
    if (directory != nullptr) {
        Expect(replyClass == 2 && directory > session->replyBuffer &&
               directory + std::strlen(directory) < session->replyBuffer + replyBufferSize &&
               std::strchr(directory, '"') == nullptr);
    }
}

void StoreDirectory(Session* session, const std::string&) {
    char field[pathSize] = "as it was";
    const int replyClass = StoreWorkingDir(session, field);
    Expect(std::memchr(field, 0, sizeof field) != nullptr);
    Expect(replyClass == 2 || std::strcmp(field, "as it was") == 0);
    ExpectInOrder(session);
}

void ReadDataAddress(Session* session, const std::string&) {
    u8 numbers[6] = {9, 9, 9, 9, 9, 9};
    u16 port = 99;
    const int replyClass = SendPasvCommand(session, numbers, &port);
    ExpectInOrder(session);
    const char* text = session->replyBuffer;
    text += std::min<std::size_t>(3, std::strlen(text));
    text += std::strcspn(text, "0123456789");
    int read[6];
    if (replyClass == 2 && std::sscanf(text, "%d,%d,%d,%d,%d,%d", &read[0], &read[1], &read[2],
                                       &read[3], &read[4], &read[5]) == 6) {
        Expect(std::equal(read, read + 6, numbers,
                          [](int left, u8 right) { return static_cast<u8>(left) == right; }));
        Expect(port ==
               static_cast<u16>(static_cast<u32>(read[4]) * 256 + static_cast<u32>(read[5])));
    } else {
        Expect(port == 99 && std::count(numbers, numbers + 6, 9) == 6);
    }
}

struct Reader {
    char letter;
    void (*read)(Session* session, const std::string& text);
};
constexpr Reader readers[] = {
    {'r', ReadReplies},   {'l', ReadSingleLines}, {'s', ReadOwedReplies},
    {'w', ReadDirectory}, {'d', StoreDirectory},  {'p', ReadDataAddress},
};

SocketNumber ConnectTo(u16 port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(0x7F000001);
    address.sin_port = htons(port);
    const auto number = static_cast<SocketNumber>(socket(AF_INET, SOCK_STREAM, 6));
    Expect(connect(number, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
    return number;
}

void RunReader(const Reader& reader, bool endsWithReturn, const std::string& text,
               std::size_t pieces) {
    static ReplyServer server;
    alignas(8) static char memory[sessionOffset + sizeof(Session)];
    std::memset(memory, 0, sizeof memory);
    auto* session = reinterpret_cast<Session*>(memory + sessionOffset);
    session->serverType.Store(
        static_cast<u32>(endsWithReturn ? ServerFamily::exos : ServerFamily::unknown));
    session->transferType = transferType;
    session->port = portOfSite;
    // A lost connection is not repaired: the command goes out once more on the one that stands.
    session->reconnecting.Store(1);
    session->controlSocket = ConnectTo(server.port());
    server.Serve(text, pieces);
    printed.clear();
    reader.read(session, text);
    Expect(CloseSocketGracefully(session, session->controlSocket, 2) == noSocket);
    server.Close();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static TestHost host;
    if (size < 2) {
        return 0;
    }
    const char letter = static_cast<char>(data[0] | 0x20);
    const auto* reader = std::ranges::find(readers, letter, &Reader::letter);
    if (reader == std::end(readers)) {
        return -1;
    }
    const std::string text(reinterpret_cast<const char*>(data) + 2, size - 2);
    const bool endsWithReturn = letter != static_cast<char>(data[0]);
    RunReader(*reader, endsWithReturn, text, 1);
    const std::vector<std::string> printedAtOnce = printed;
    if (const std::size_t pieces = data[1] % 8; pieces > 1) {
        RunReader(*reader, endsWithReturn, text, pieces);
        Expect(letter == 's' || printed == printedAtOnce);
    }
    return 0;
}
