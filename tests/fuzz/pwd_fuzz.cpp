// The server's words for its directory.
//
// The first byte of the input picks who asks: 'w' where the directory stands in the reply, 'q' the
// same with doubled quotes for those in its name, 'd' where it goes into a field. The second says
// how the text comes (see ServerText).

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

#include "control/server_family.h"
#include "control/working_directory.h"
#include "fuzz/expect.h"
#include "fuzz/fed_session.h"

using namespace quennet;

namespace {

std::string WithoutSeparator(std::string directory) {
    if (directory.size() > 1 && (directory.back() == '/' || directory.back() == '\\')) {
        directory.pop_back();
    }
    return directory;
}

using Directory = std::optional<std::string>;

/// The text between the first two quotes of a line.
Directory PlainDirectory(const std::string& line) {
    const std::size_t begin = line.find('"') + 1;
    const std::size_t end = line.find('"', begin);
    if (begin == 0 || end == line.npos) {
        return std::nullopt;
    }
    return WithoutSeparator(line.substr(begin, end - begin));
}

/// The same where two quotes in a row stand for one.
Directory PlainWholeDirectory(const std::string& line) {
    std::string directory;
    for (std::size_t at = line.find('"'); at < line.size() && ++at < line.size();) {
        if (line[at] == '"' && line.compare(at, 2, "\"\"") != 0) {
            return WithoutSeparator(directory);
        }
        at += line[at] == '"' ? 1 : 0;
        directory += line[at];
    }
    return std::nullopt;
}

void FindDirectory(const FedSession& session, int (*ask)(Session* session, char** result),
                   Directory (*readPlainly)(const std::string& line)) {
    char* directory = nullptr;
    const int result = ask(session, &directory);
    Expect(result >= 0 && result == session->firstCode / 100);
    Expect(directory == nullptr ||
           (result == 2 && directory == std::strchr(session->replyBuffer, '"') + 1));
    // A reply that ended early has no last line.
    if (result == 2 && session->replyBuffer[0] != 0) {
        Expect(readPlainly(session.Lines().back()) ==
               (directory != nullptr ? Directory(directory) : std::nullopt));
    }
}

void StoreDirectory(const FedSession& session) {
    const std::string before = "as it was";
    char field[pathSize];
    std::strcpy(field, before.c_str());
    const int result = StoreWorkingDir(session, field);
    Expect(std::memchr(field, 0, sizeof field) != nullptr);
    if (result == 2) {
        Expect(field == PlainDirectory(session.Lines().back()));
    } else {
        Expect(field == before);
        Expect(result == session->firstCode / 100 || session->firstCode / 100 == 2);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2 || data[0] == 0 || std::strchr("wqd", data[0]) == nullptr) {
        return -1;
    }
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const FedSession session(ServerText::FromInput(text), ServerFamily::unixLike);
    if (data[0] == 'd') {
        StoreDirectory(session);
    } else if (data[0] == 'w') {
        FindDirectory(session, GetWorkingDir, PlainDirectory);
    } else {
        FindDirectory(session, GetWholeWorkingDir, PlainWholeDirectory);
    }
    session.ExpectCommands({"PWD", "XPWD"});
    session.ExpectInOrder();
    return 0;
}
