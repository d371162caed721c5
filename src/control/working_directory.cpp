#include "control/working_directory.h"

#include <cstring>

#include "control/command.h"
#include "control/exchange.h"
#include "host/services.h"

namespace quennet {

namespace {

constexpr int done = 2;
constexpr int refused = 5;

void CutSeparator(char* path) {
    const std::size_t length = std::strlen(path);
    if (length >= 2 && (path[length - 1] == '/' || path[length - 1] == '\\')) {
        path[length - 1] = 0;
    }
}

/// The text between the first two quotes, null without them.
char* FirstQuoted(char* reply) {
    char* opening = std::strchr(reply, '"');
    char* closing = opening != nullptr ? std::strchr(opening + 1, '"') : nullptr;
    if (closing == nullptr) {
        return nullptr;
    }
    *closing = 0;
    return opening + 1;
}

/// The text in quotes, where two of them in a row stand for one; null without an end.
char* WholeQuoted(char* reply) {
    char* opening = std::strchr(reply, '"');
    if (opening == nullptr) {
        return nullptr;
    }
    char* out = opening + 1;
    for (const char* in = out; *in != 0; ++in) {
        if (*in == '"' && *++in != '"') {
            *out = 0;
            return opening + 1;
        }
        *out++ = *in;
    }
    return nullptr;
}

int AskWorkingDir(Session* session, char** result, char* (*find)(char* reply)) {
    if (result == nullptr) {
        return -1;
    }
    *result = nullptr;
    const Exchange exchange(session);
    if (exchange.IsRefused()) {
        return 0;
    }
    const int replyClass = SendCommandAlt(session, "PWD", "XPWD");
    if (replyClass != done) {
        return replyClass;
    }
    *result = find(session->replyBuffer);
    if (*result != nullptr) {
        CutSeparator(*result);
    }
    return replyClass;
}

/// Copies what GetWorkingDir found into a field: `done`, or workingDirRefused with the reason on
/// the console.
int StoreDirectory(Session* session, const char* directory, char* field) {
    if (directory == nullptr) {
        CoreConsolePrintText(session->console, "The reply names no directory.");
        return workingDirRefused;
    }
    return StoreText(field, pathSize, directory) ? done : RefuseDirectory(session);
}

/// Changes the server's directory and asks for its name, with the results of GetWorkingDir.
int ChangeAndAsk(Session* session, const char* path, char** directory) {
    int replyClass = ChangeDir(session, path);
    if (replyClass != done) {
        return replyClass;
    }
    const u32 login = session->logins;
    replyClass = GetWorkingDir(session, directory);
    if (replyClass != done || session->logins == login) {
        return replyClass;
    }
    // A repair has led back: the reply names the directory of before.
    replyClass = ChangeDir(session, path);
    return replyClass == done ? GetWorkingDir(session, directory) : replyClass;
}

/// The directory in which the server is to stand.
const char* StandingDir(const Session* session) {
    return session->visitedDir[0] != 0 ? session->visitedDir : session->site.directory;
}

enum class Naming { isNeeded, isOptional };

/// Changes the server's directory and puts its name into `directory`. One whose name can't be had
/// is left again where the name is needed.
int EnterDirectory(Session* session, const char* path, Naming naming, char* directory) {
    char* named = nullptr;
    const int replyClass = ChangeAndAsk(session, path, &named);
    if (replyClass != done) {
        return replyClass;
    }
    const int result = StoreDirectory(session, named, directory);
    if (result == done || naming == Naming::isOptional) {
        return done;
    }
    if (StandingDir(session)[0] != 0) {
        ChangeDir(session, StandingDir(session));
    }
    return result;
}

}  // namespace

int ChangeDir(Session* session, const char* path) {
    const Exchange exchange(session);
    if (exchange.IsRefused()) {
        return 0;
    }
    const bool goesUp = std::strcmp(path, "..") == 0;
    const int replyClass = goesUp && SendCommandText(session, "CDUP") != refused
                               ? session->firstCode / 100
                               : SendCommandAltArg(session, "CWD", "XCWD", path);
    if (replyClass == done) {
        session->displaced = 0;
    }
    return replyClass;
}

bool RestoreDirectory(Session* session) {
    if (session->visitedDir[0] != 0 && session->site.directory[0] != 0) {
        ChangeDir(session, session->site.directory);
    }
    session->displaced = StandingDir(session)[0] != 0 ? 1 : 0;
    return ReturnToDirectory(session);
}

bool ReturnToDirectory(Session* session) {
    if (session->displaced == 0 || ChangeDir(session, StandingDir(session)) == done) {
        return true;
    }
    CoreConsolePrintText(session->console, "The directory could not be entered again.");
    return false;
}

int GetWorkingDir(Session* session, char** result) {
    return AskWorkingDir(session, result, FirstQuoted);
}

int GetWholeWorkingDir(Session* session, char** result) {
    return AskWorkingDir(session, result, WholeQuoted);
}

int RefuseDirectory(Session* session) {
    CoreConsolePrintText(session->console, "Directory name too long, refused.");
    return workingDirRefused;
}

void SetSessionDir(Session* session, const char* directory) {
    const ListLock lock;
    StoreText(session->site.directory, pathSize, directory);
    session->visitedDir[0] = 0;
    session->currentCacheIndex = 0;
}

void CopySessionDir(const Session* session, char* field) {
    const ListLock lock;
    StoreText(field, pathSize, session->site.directory);
}

int StoreWorkingDir(Session* session, char* field) {
    const Exchange exchange(session);  // up to the look at its reply
    char* directory = nullptr;
    const int replyClass = GetWorkingDir(session, &directory);
    return replyClass == done ? StoreDirectory(session, directory, field) : replyClass;
}

int VisitDirectory(Session* session, const char* path, char* field) {
    const Exchange exchange(session);
    char directory[pathSize] = "";
    StoreText(directory, pathSize, path);  // for a server that does not name it
    const Naming naming = field != nullptr ? Naming::isNeeded : Naming::isOptional;
    const int result = EnterDirectory(session, path, naming, directory);
    if (result != done) {
        return result;
    }
    const bool isSessions = std::strcmp(directory, session->site.directory) == 0;
    StoreText(session->visitedDir, pathSize, isSessions ? "" : directory);
    if (field != nullptr) {
        StoreText(field, pathSize, directory);
    }
    return done;
}

bool ChangeSessionDir(Session* session, const char* path) {
    const Exchange exchange(session);
    char directory[pathSize];
    if (EnterDirectory(session, path, Naming::isNeeded, directory) != done) {
        return false;
    }
    SetSessionDir(session, directory);
    return true;
}

}  // namespace quennet
