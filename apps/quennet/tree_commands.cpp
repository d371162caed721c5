// Commands on whole trees, and on permissions.

#include <unistd.h>

#include <filesystem>

#include "client.h"
#include "commands.h"
#include "failure.h"
#include "hostkit/remote_tree.h"
#include "hostkit/services.h"
#include "listing_output.h"
#include "local_target.h"
#include "permission_mode.h"
#include "server_use.h"
#include "terminal_display.h"
#include "tree_report.h"

namespace cli {

namespace {

namespace fs = std::filesystem;
using hostkit::Connection;
using hostkit::u32;

/// Where a downloaded directory goes: into the working directory or the folder that is named, and
/// under the name that the user gave when that is no folder yet.
std::string FolderFor(const std::optional<std::string>& output, const std::string& name) {
    if (output == "-" || output == "") {
        throw Failure(ExitStatus::usage, "a directory goes into a folder: -o FOLDER");
    }
    const std::string holder = output.value_or(".");
    std::error_code ignored;
    const bool isHolder = holder.ends_with('/') || fs::is_directory(holder, ignored);
    if (!isHolder || name.empty()) {
        return holder;
    }
    if (!hostkit::IsSafeName(name)) {
        throw Failure(ExitStatus::usage, "no folder can have the name \"" + name + "\"");
    }
    return output ? hostkit::JoinPath(holder, name) : name;
}

/// The folder on disk that goes up, and the name that it gets.
std::string NameFor(const std::string& folder, const Url& url) {
    std::error_code error;
    if (!fs::is_directory(folder, error)) {
        throw Failure(ExitStatus::failed,
                      folder + (error ? ": " + error.message() : " is no folder"));
    }
    const std::string name =
        url.FileName().empty() ? fs::canonical(folder, error).filename().string() : url.FileName();
    if (!hostkit::IsSafeName(name)) {
        throw Failure(ExitStatus::usage, "no directory can have the name \"" + name + "\"");
    }
    return name;
}

hostkit::PermissionChange ModeOrFail(const Options& options) {
    const auto change = ParsePermissionMode(options.argument);
    if (!change) {
        throw Failure(ExitStatus::usage, "\"" + options.argument +
                                             "\" is no number from 000 to 777, and no change "
                                             "such as u+x,go-w");
    }
    return *change;
}

/// The word of an entry in the directory entered last.
hostkit::u16 AttributesOf(Client& client, const std::string& name) {
    const hostkit::Listing entries = client.List(true);
    for (const hostkit::ListingEntry& entry : entries) {
        if (NameOf(entry) == name) {
            return entry.attributes;
        }
    }
    throw Failure(ExitStatus::failed, name + ": there is no such entry");
}

/// Has the person at the terminal fill in the dialog.
hostkit::PermissionChange AskForChange(Client& client, const std::string& name, bool recursive) {
    const hostkit::u16 attributes = AttributesOf(client, name);
    quennet::TransferRecord record = {};
    record.clearMask = attributes;
    record.setMask = 1;
    record.status = recursive ? 1 : 0;
    bool accepted = false;
    {
        const TerminalDisplay display;
        client.Work(Watch::Kind::untimed, [&](Connection& connection) {
            accepted = connection.AskPermissions(nullptr, record);
        });
    }
    client.CheckVerdict();
    if (!accepted) {
        throw Failure(ExitStatus::failed, "cancelled");
    }
    hostkit::PermissionChange change;
    change.set = static_cast<hostkit::u16>(record.setMask);
    change.clear = static_cast<hostkit::u16>(record.clearMask);
    change.recursive = recursive || (record.flags & quennet::recordFlagSubfolders) != 0;
    if ((record.flags & quennet::recordFlagFilter) != 0) {
        change.filter = hostkit::Host::Current()->GetServices().DefaultFilter();
    }
    return change;
}

}  // namespace

void RunGetTree(const Options& options, Watch& watch, Status& status) {
    const Url url = WithoutEndSlashes(ParseUrl(options.url));
    const std::string target = FolderFor(options.output, url.FileName());
    const fs::path holder = fs::path(target).parent_path();
    std::error_code ignored;
    if (!holder.empty() && !fs::is_directory(holder, ignored)) {
        throw Failure(ExitStatus::failed, holder.string() + " is no folder");
    }
    RunConnected(options, watch, status, url, [&](Client& client) {
        EnterOrFail(client, url.path);
        TreeReport report(client, options, watch, status, target);
        report.Run([&](Connection& connection) {
            return hostkit::DownloadTree(connection, connection.Directory(), target,
                                         report.Operation());
        });
    });
}

void RunPutTree(const Options& options, Watch& watch, Status& status) {
    const Url url = ParseUrl(options.url);
    const std::string& folder = options.argument;
    const std::string name = NameFor(folder, url);
    RunConnected(options, watch, status, url, [&](Client& client) {
        EnterOrFail(client, url.Directory());
        TreeReport report(client, options, watch, status, name);
        report.Run([&](Connection& connection) {
            return hostkit::UploadTree(connection, folder, name, report.Operation());
        });
    });
}

void RunRemoveTree(const Options& options, Watch& watch, Status& status) {
    RunOnName(options, watch, status, [&](Client& client, const std::string& name) {
        TreeReport report(client, options, watch, status, name);
        report.Run([&](Connection& connection) {
            return hostkit::RemoveTree(connection, name, report.Operation());
        });
    });
}

void RunChangePermissions(const Options& options, Watch& watch, Status& status) {
    const bool asks = options.argument.empty();
    hostkit::PermissionChange change;
    if (!asks) {
        change = ModeOrFail(options);
        change.recursive = options.recursive;
    } else if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0) {
        throw Failure(ExitStatus::usage, "chmod wants permissions, or a terminal for its dialog");
    }
    RunOnName(options, watch, status, [&](Client& client, const std::string& name) {
        if (asks) {
            change = AskForChange(client, name, options.recursive);
        }
        TreeReport report(client, options, watch, status, name);
        report.Run([&](Connection& connection) {
            return hostkit::ChangeTreePermissions(connection, name, change, report.Operation());
        });
    });
}

}  // namespace cli
