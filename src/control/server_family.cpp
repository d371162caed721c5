#include "control/server_family.h"

#include <cstring>

#include "control/session.h"

namespace quennet {

namespace {

struct ServerFamilyText {
    const char* text;
    ServerFamily family;
};

constexpr ServerFamilyText exosText = {"(EXOS", ServerFamily::exos};

// The first text found in the reply to SYST decides.
constexpr ServerFamilyText serverFamilyTexts[] = {
    {"MVS", ServerFamily::mvsDatasets},
    {"OS/2", ServerFamily::os2},
    exosText,
    {"UNIX", ServerFamily::unixLike},
    {"MultiNet", ServerFamily::multiNet},
    {"VMS", ServerFamily::vms},
    {"Windows_NT", ServerFamily::windowsNt},
    {"WINDOWS NT Type: L8", ServerFamily::windowsNtType},
    {"PC Type: L8", ServerFamily::pc},
};

bool NoteFamily(Session* session, const ServerFamilyText& family) {
    if (std::strstr(session->replyBuffer, family.text) == nullptr) {
        return false;
    }
    session->serverType.Store(static_cast<u32>(family.family));
    return true;
}

}  // namespace

void NoteServerBanner(Session* session) {
    if (!session->serverType.IsSet()) {
        NoteFamily(session, exosText);
    }
}

void ClassifySystem(Session* session) {
    for (const ServerFamilyText& family : serverFamilyTexts) {
        if (NoteFamily(session, family)) {
            return;
        }
    }
}

}  // namespace quennet
