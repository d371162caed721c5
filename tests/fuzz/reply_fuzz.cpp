// What a server says on the control channel, read as replies and held against a plain reading.
//
// The first byte of the input picks who reads: 'r' replies, 'l' single lines, 's' replies that are
// owed; in capitals, from a server whose lines end with CR. The second says how the text comes (see
// ServerText).

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "control/reply.h"
#include "control/server_family.h"
#include "fuzz/expect.h"
#include "fuzz/fed_session.h"

using namespace quennet;

namespace {

constexpr int closingCode = 421;

struct PlainLine {
    std::string text;  // as it stands in `replyBuffer`
    int code;
    bool hasHyphen;
    bool isCut;  // by a silence
};

/// Takes the first line off a text.
PlainLine TakePlainLine(std::string_view& text, TextEnd last) {
    constexpr std::size_t longestLine = 4000;
    const std::size_t end = std::min({text.find('\n'), text.size() - 1, longestLine - 1}) + 1;
    const std::string_view bytes = text.substr(0, end);
    text.remove_prefix(end);
    PlainLine line;
    line.text = std::string(bytes).c_str();
    while (line.text.size() > 2 && std::strchr("\r\n ", line.text.back()) != nullptr) {
        line.text.pop_back();
    }
    line.code = std::atoi(std::string(bytes.substr(0, 3)).c_str());
    line.hasHyphen = bytes.size() > 3 && bytes[3] == '-';
    line.isCut = last == TextEnd::silence && bytes.back() != '\n' && bytes.size() < longestLine;
    return line;
}

struct PlainReply {
    int result = 0;
    int code = 0;
    bool isAborted = false;
    std::vector<std::string> lines;
};

bool IsValid(int code) {
    return code >= 100 && code <= 599;
}

/// Takes the first reply off a text.
PlainReply TakePlainReply(std::string_view& text, TextEnd last) {
    PlainReply reply;
    for (bool isFirst = true, more = true; more; isFirst = false) {
        if (text.empty() && last != TextEnd::silence) {
            if (last == TextEnd::reset) {
                reply.lines.emplace_back("Connection reset");
                reply.result = isFirst ? -1 : 0;
            }
            break;
        }
        const PlainLine line =
            text.empty() ? PlainLine{"", 0, false, true} : TakePlainLine(text, last);
        if (!line.text.empty()) {
            reply.lines.push_back(line.text);
        }
        reply.isAborted = line.isCut;
        if ((isFirst || reply.code == 0) && IsValid(line.code)) {
            reply.code = line.code;
        }
        more = !line.isCut &&
               ((line.code >= 1 && line.code <= 99) || line.code > 599 || line.hasHyphen ||
                (!isFirst && reply.code > 0 && line.code != reply.code));
    }
    reply.code = reply.isAborted ? closingCode : reply.code;
    reply.result = reply.code > 0 ? reply.code / 100 : reply.result;
    return reply;
}

void ReadReplies(const FedSession& session, const ServerText& server) {
    std::string_view rest = server.text;
    std::vector<std::string> lines;
    u32 owed = 0;
    for (bool goesOn = true; goesOn;) {
        goesOn = !rest.empty();
        const PlainReply plain = TakePlainReply(rest, server.end);
        Expect(ReadReply(session) == plain.result && session->firstCode == plain.code);
        lines.insert(lines.end(), plain.lines.begin(), plain.lines.end());
        Expect(session.Taken() == server.text.size() - rest.size());
        owed += plain.isAborted ? 1 : 0;
        Expect(session->owedReplies == owed && session->doubtfulReplies == 0);
        session.ExpectInOrder();
    }
    Expect(session.Lines() == lines);
}

void ReadSingleLines(const FedSession& session, const ServerText& server) {
    for (std::string_view rest = server.text; !rest.empty();) {
        const PlainLine line = TakePlainLine(rest, server.end);
        Expect(ReadReplyLine(session) == (line.isCut ? closingCode : line.code));
        Expect(session->replyBuffer == line.text);
        Expect(session.Taken() == server.text.size() - rest.size());
        session.ExpectInOrder();
    }
    constexpr int results[] = {0, -1, closingCode};
    Expect(ReadReplyLine(session) == results[static_cast<unsigned>(server.end)] &&
           session->replyBuffer[0] == 0);
}

void ReadOwedReplies(const FedSession& session, const ServerText& server) {
    session->owedReplies = 2;
    session->doubtfulReplies = 1;
    const bool allCame = SettleOwedReplies(session);
    Expect(!allCame || session->owedReplies == 0);
    Expect(session->doubtfulReplies == 0);
    Expect(session->owedReplies <= (server.end == TextEnd::silence ? 1 : 0));
    session.ExpectInOrder();
}

struct Reader {
    char letter;
    void (*read)(const FedSession& session, const ServerText& server);
};
constexpr Reader readers[] = {{'r', ReadReplies}, {'l', ReadSingleLines}, {'s', ReadOwedReplies}};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto letter = static_cast<char>(size > 1 ? data[0] | 0x20 : 0);
    const auto* reader = std::ranges::find(readers, letter, &Reader::letter);
    if (reader == std::end(readers)) {
        return -1;
    }
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const ServerText server = ServerText::FromInput(text);
    const bool isCapital = (data[0] & 0x20) == 0;
    const FedSession session(server, isCapital ? ServerFamily::exos : ServerFamily::unknown);
    reader->read(session, server);
    Expect(session.Heard().empty());
    return 0;
}
