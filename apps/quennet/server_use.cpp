#include "server_use.h"

#include "existing_question.h"
#include "failure.h"
#include "module_host.h"

namespace cli {

void RunConnected(const Options& options, Watch& watch, Status& status, const Url& url,
                  const std::function<void(Client& client)>& command) {
    RunWithModule(HostOptionsFor(options, url, status), [&](hostkit::Host& host) {
        Client client(host, watch, status, options);
        client.Connect(url);
        command(client);
    });
}

void EnterOrFail(Client& client, const std::string& directory) {
    if (const auto refusal = client.Enter(directory)) {
        throw Failure(ExitStatus::failed, directory + ": " + *refusal);
    }
}

bool MayWriteUnlisted(Client& client, const Options& options, Status& status, const Watch& watch,
                      const std::string& name) {
    if (options.existing == ExistingFile::overwrite) {
        return true;
    }
    const hostkit::Presence presence = client.PresenceOf(name);
    if (presence == hostkit::Presence::unknown) {
        throw Failure(ExitStatus::failed, "the server does not tell whether it has " + name +
                                              "; --overwrite writes it all the same");
    }
    return presence == hostkit::Presence::missing ||
           MayReplaceThere(options, status, watch, name + " is on the server", "",
                           {"", name, 0, 0, false});
}

Url WithoutEndSlashes(Url url) {
    while (url.path.size() > 1 && url.path.ends_with('/')) {
        url.path.pop_back();
    }
    return url;
}

std::string NameOrFail(const Url& url) {
    const std::string name = url.FileName();
    if (name.empty() || name == "." || name == "..") {
        throw Failure(ExitStatus::usage, "the URL names nothing that could be changed");
    }
    return name;
}

void RunOnName(const Options& options, Watch& watch, Status& status,
               const std::function<void(Client& client, const std::string& name)>& command) {
    const Url url = WithoutEndSlashes(ParseUrl(options.url));
    const std::string name = NameOrFail(url);
    RunConnected(options, watch, status, url, [&](Client& client) {
        EnterOrFail(client, url.Directory());
        command(client, name);
    });
}

}  // namespace cli
