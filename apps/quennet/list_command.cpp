#include "client.h"
#include "commands.h"
#include "failure.h"
#include "listing_output.h"
#include "module_host.h"

namespace cli {

namespace {

using hostkit::ListingEntry;

/// Lists the directory that holds the URL's last component, and prints that entry alone. False when
/// there is none.
bool PrintOneFile(Client& client, const Url& url, const Options& options) {
    const std::string name = url.FileName();
    if (name.empty() || client.Enter(url.Directory())) {
        return false;
    }
    const auto entries = client.TryList(name.starts_with('.'));
    return entries && PrintEntries(*entries, options, [&](const ListingEntry& entry) {
               return NameOf(entry) == name;
           });
}

void List(Client& client, const Url& url, const Options& options) {
    client.Connect(url);
    const auto refusal = client.Enter(url.path);
    if (!refusal) {
        PrintEntries(client.List(), options, IsShown);
    } else if (!PrintOneFile(client, url, options)) {
        throw Failure(ExitStatus::failed, url.path + ": " + *refusal);
    }
}

}  // namespace

void RunList(const Options& options, Watch& watch, Status& status) {
    const Url url = ParseUrl(options.url);
    RunWithModule(HostOptionsFor(options, url, status), [&](hostkit::Host& host) {
        Client client(host, watch, status, options);
        List(client, url, options);
    });
}

}  // namespace cli
