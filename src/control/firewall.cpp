#include "control/firewall.h"

#include <cstring>

#include "control/command.h"

namespace quennet {

namespace {

// One scheme's commands. In these texts $u is the user, $p the password, $h the server's host, $f
// and $q are user and password at the firewall. A null text where a command is called for is a
// failed login.
struct FirewallScheme {
    const char* listText;
    const char* firstUser;     // on a welcome of 220
    const char* answerTo331;   // on 331
    const char* commandAfter;  // on 230 or 202; without one the last command decides
};

constexpr FirewallScheme firewallSchemes[firewallTypes] = {
    {"", "USER $u", "PASS $p", nullptr},
    {"USER User@Host / Password", "USER $u@$h", "PASS $p", nullptr},
    {"Login / USER User@Host", "USER $f", nullptr, "USER $u@$h"},
    {"SITE Host", "USER $f", nullptr, "SITE $h"},
    {"OPEN Host", "USER $f", nullptr, "OPEN $h"},
    {"USER User@FirewallUser@Host / Pass@FirewallPass", "USER $u@$f@$h", "PASS $p@$q", nullptr},
    {"USER FirewallUser@Host / FirewallPass", "USER $f@$h", "PASS $q", "USER $f@$h"},
};

constexpr FirewallScheme unknownScheme = {"", nullptr, nullptr, nullptr};

// Four fields of the site and the letters between them.
constexpr std::size_t commandSize = 4 * sizeof(SiteRecord::host) + 16;

const char* SiteField(const SiteRecord& site, char letter) {
    switch (letter) {
        case 'u':
            return site.user;
        case 'p':
            return site.password;
        case 'h':
            return site.host;
        case 'f':
            return site.firewallUser;
        default:
            return site.firewallPassword;
    }
}

/// Sends one of a scheme's texts. Returns the class of the reply, 0 for a null text.
int SendSchemeCommand(Session* session, const char* text) {
    if (text == nullptr) {
        return 0;
    }
    char line[commandSize];
    std::size_t length = 0;
    for (; *text != 0 && length + 1 < commandSize; ++text) {
        if (*text != '$') {
            line[length++] = *text;
            continue;
        }
        const char* field = SiteField(session->site, *++text);
        const std::size_t fieldLength = std::strlen(field);
        if (length + fieldLength >= commandSize) {
            return 0;
        }
        std::memcpy(line + length, field, fieldLength);
        length += fieldLength;
    }
    line[length] = 0;
    return SendLoginLine(session, line);
}

}  // namespace

const char* FirewallTypeText(u32 type) {
    return type < firewallTypes ? firewallSchemes[type].listText : "";
}

int LoginThroughFirewall(Session* session) {
    constexpr int mostPasses = 16;
    const SiteRecord& site = session->site;
    const bool isKnown = site.firewallType < firewallTypes;
    const FirewallScheme& scheme = isKnown ? firewallSchemes[site.firewallType] : unknownScheme;
    int result = 2;
    for (int pass = 0; pass < mostPasses; ++pass) {
        switch (session->firstCode) {
            case 220:
                result = SendSchemeCommand(session, scheme.firstUser);
                break;
            case 331:
                result = SendSchemeCommand(session, scheme.answerTo331);
                break;
            case 332:
            case 532:
                result = site.firewallType == 0 ? SendSchemeCommand(session, "ACCT $u") : 0;
                break;
            case 230:
            case 202:
                return scheme.commandAfter != nullptr
                           ? SendSchemeCommand(session, scheme.commandAfter)
                           : result;
            default:
                return 0;
        }
        if (result <= 0) {
            return 0;
        }
    }
    return 0;
}

}  // namespace quennet
