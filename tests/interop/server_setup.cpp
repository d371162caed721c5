#include "interop/server_setup.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace quennet::interop {

namespace {

namespace fs = std::filesystem;

// Passive ports lie below the range that the system takes for outgoing connections.
constexpr const char* passiveFirst = "20000";
constexpr const char* passiveLast = "29999";

// The password has a blank and characters that mean something in a URL or a format.
constexpr const char* testUser = "tester";
constexpr const char* testPassword = "50% of a:secret";
constexpr const char* testPasswordHash =
    "$5$interopsalt$Cm8dsCJmNPem5qpYcnz0nWNHWOwWyLYXBkw0S8O0QP1";

constexpr std::uint64_t kibibyte = 1024;

constexpr const char* systemPython = "/usr/bin/python3";

enum class Needs { nothing, root, more };

// pure-ftpd serves anonymous clients only where the system has an account named ftp.
struct KindRow {
    ServerKind kind;
    std::string_view name;
    std::string_view program;  // within the folder of the servers; empty for Python
    Needs toRun;
    Needs toServeAnonymous;
};

constexpr KindRow kindRows[] = {
    {ServerKind::vsftpd, "vsftpd", "vsftpd/usr/sbin/vsftpd", Needs::nothing, Needs::nothing},
    {ServerKind::pureFtpd, "pure-ftpd", "pure-ftpd/usr/sbin/pure-ftpd", Needs::root, Needs::more},
    {ServerKind::proFtpd, "proftpd", "proftpd/usr/sbin/proftpd", Needs::nothing, Needs::root},
    {ServerKind::pyftpdlib, "pyftpdlib", "", Needs::nothing, Needs::nothing},
};

const KindRow& RowOf(ServerKind kind) {
    return *std::find_if(std::begin(kindRows), std::end(kindRows),
                         [kind](const KindRow& row) { return row.kind == kind; });
}

bool RunByRoot() {
    return geteuid() == 0;
}

bool Met(Needs needs) {
    return needs == Needs::nothing || (needs == Needs::root && RunByRoot());
}

// The unprivileged account that sessions run as: one of the system that has a home folder, which
// vsftpd insists on.
struct Worker {
    std::string user;
    std::string group;
    std::string ids;  // "uid:gid"
};

Worker WorkerAccount() {
    const passwd* account = RunByRoot() ? getpwnam("daemon") : getpwuid(geteuid());
    if (account == nullptr) {
        return {};
    }
    const group* accountGroup = getgrgid(account->pw_gid);
    return {account->pw_name, accountGroup != nullptr ? accountGroup->gr_name : "nogroup",
            std::to_string(account->pw_uid) + ":" + std::to_string(account->pw_gid)};
}

void WriteFile(const fs::path& path, const std::string& text) {
    std::ofstream(path) << text;
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
}

std::string YesNo(bool value) {
    return value ? "YES" : "NO";
}

std::vector<std::string> PrepareVsftpd(const ServeRequest& request, const fs::path& program) {
    const fs::path settings = request.state / "vsftpd.conf";
    const fs::path empty = request.state / "empty";
    const std::string worker = WorkerAccount().user;
    const bool root = RunByRoot();
    fs::create_directory(empty);

    std::string text =
        "listen=YES\nlisten_ipv6=NO\nbackground=NO\nlisten_address=127.0.0.1\n"
        "anonymous_enable=YES\nno_anon_password=NO\nwrite_enable=YES\nanon_upload_enable=YES\n"
        "anon_mkdir_write_enable=YES\nanon_other_write_enable=YES\nanon_world_readable_only=NO\n"
        "anon_umask=022\nlocal_umask=022\nallow_writeable_chroot=YES\nchroot_local_user=YES\n"
        "connect_from_port_20=NO\npasv_enable=YES\nport_enable=YES\nmax_clients=0\nmax_per_ip=0\n"
        "xferlog_enable=YES\nxferlog_std_format=NO\nforce_dot_files=YES\ndelay_failed_login=0\n"
        // Containers often forbid what these three need.
        "seccomp_sandbox=NO\nisolate=NO\nisolate_network=NO\n"
        // The PAM service lets root in as any account of the system, without a look at the
        // password.
        "pam_service_name=su\n";
    text += "listen_port=" + std::to_string(request.port) + "\n";
    text += std::string("pasv_min_port=") + passiveFirst + "\n";
    text += std::string("pasv_max_port=") + passiveLast + "\n";
    text += "anon_root=" + request.root.string() + "\nlocal_root=" + request.root.string() + "\n";
    text += "ftp_username=" + worker + "\nnopriv_user=" + worker + "\n";
    text += "secure_chroot_dir=" + empty.string() + "\n";
    text += "vsftpd_log_file=" + LogOf(request).string() + "\n";
    text += "local_enable=" + YesNo(root) + "\nrun_as_launching_user=" + YesNo(!root) + "\n";
    text += "pasv_promiscuous=" + YesNo(request.foreignAddresses) + "\n";
    text += "port_promiscuous=" + YesNo(request.foreignAddresses) + "\n";
    const std::string rate = std::to_string(request.bytesPerSecond);
    text += "local_max_rate=" + rate + "\nanon_max_rate=" + rate + "\n";
    WriteFile(settings, text);
    return {program, settings};
}

std::vector<std::string> PreparePureFtpd(const ServeRequest& request, const fs::path& program) {
    const fs::path accounts = request.state / "accounts";
    const fs::path database = request.state / "accounts.pdb";
    WriteFile(accounts, std::string(testUser) + ":" + testPasswordHash + ":" + WorkerAccount().ids +
                            "::" + request.root.string() + "/./::::::::::::\n");
    const fs::path accountTool = program.parent_path().parent_path() / "bin" / "pure-pw";
    const std::string port = std::to_string(request.port);
    std::vector<std::string> arguments = {
        // The tool turns the accounts into the database; then the server takes the shell's place.
        "/bin/sh", "-c", "\"$1\" mkdb \"$2\" -f \"$3\" && shift 3 && exec \"$@\"", "sh",
        accountTool, database, accounts, program, "--ipv4only", "--bind=127.0.0.1," + port,
        "--noanonymous", "--dontresolve", "--login=puredb:" + database.string(), "--minuid=1",
        "--displaydotfiles", "--allowdotfiles", "--tls=0", "--maxclientsnumber=100",
        "--maxclientsperip=100",
        // A listing ends at the first of these numbers, 2,000 unless told.
        "--limitrecursion=1000000:10",
        std::string("--passiveportrange=") + passiveFirst + ":" + passiveLast,
        "--syslogfacility=none", "--altlog=clf:" + LogOf(request).string(),
        "--pidfile=" + (request.state / "pid").string()};
    if (request.foreignAddresses) {
        arguments.push_back("--allowuserfxp");
    }
    if (request.bytesPerSecond != 0) {
        const std::string rate = std::to_string(request.bytesPerSecond / kibibyte);
        arguments.push_back("--userbandwidth=" + rate + ":" + rate);
    }
    return arguments;
}

std::vector<std::string> PrepareProFtpd(const ServeRequest& request, const fs::path& program) {
    const fs::path settings = request.state / "proftpd.conf";
    const fs::path accounts = request.state / "accounts";
    const Worker worker = WorkerAccount();
    const std::string root = request.root.string();
    WriteFile(accounts, std::string(testUser) + ":" + testPasswordHash + ":" + worker.ids +
                            "::" + root + ":/bin/sh\n");

    std::string text =
        "ServerName interop\nServerType standalone\nDefaultAddress 127.0.0.1\n"
        "SocketBindTight on\nUseIPv6 off\nUseReverseDNS off\nWtmpLog off\nTransferLog none\n"
        "AuthPAM off\nAuthOrder mod_auth_file.c mod_auth_unix.c\nRequireValidShell "
        "off\nDelayEngine off\n"
        "MaxInstances 100\nAllowOverwrite on\nAllowStoreRestart on\nTimesGMT on\nUmask 022 022\n"
        "ControlsEngine off\nListOptions -a\n";
    text += "Port " + std::to_string(request.port) + "\n";
    text += "User " + worker.user + "\nGroup " + worker.group + "\n";
    text += "PidFile " + (request.state / "pid").string() + "\n";
    text += "ScoreboardFile " + (request.state / "scoreboard").string() + "\n";
    text += "SystemLog " + LogOf(request).string() + "\n";
    text += "AuthUserFile " + accounts.string() + "\n";
    text += std::string("PassivePorts ") + passiveFirst + " " + passiveLast + "\n";
    text += std::string("AllowForeignAddress ") + (request.foreignAddresses ? "on" : "off") + "\n";
    if (request.bytesPerSecond != 0) {
        text +=
            "TransferRate RETR,STOR " + std::to_string(request.bytesPerSecond / kibibyte) + "\n";
    }
    if (!RunByRoot()) {
        // Whoever is not root can't shut a session into the folder.
        WriteFile(settings, text);
        return {program, "--nodaemon", "--quiet", "--config", settings};
    }
    text += "DefaultRoot " + root + "\n";
    text += "<Anonymous " + root + ">\n";
    text += "  User " + worker.user + "\n  Group " + worker.group + "\n";
    text += "  UserAlias anonymous " + worker.user + "\n  AnonRequirePassword off\n";
    text += "</Anonymous>\n";
    WriteFile(settings, text);
    return {program, "--nodaemon", "--quiet", "--config", settings};
}

std::vector<std::string> PreparePyftpdlib(const ServeRequest& request) {
    return {systemPython,
            request.scripts / "pyftpd_server.py",
            std::to_string(request.port),
            request.root,
            testUser,
            testPassword,
            LogOf(request),
            std::string(passiveFirst) + "-" + passiveLast,
            request.foreignAddresses ? "1" : "0",
            std::to_string(request.bytesPerSecond)};
}

}  // namespace

std::string_view ServerName(ServerKind kind) {
    return RowOf(kind).name;
}

std::optional<ServerKind> ServerKindFromName(std::string_view name) {
    for (const KindRow& row : kindRows) {
        if (row.name == name) {
            return row.kind;
        }
    }
    return std::nullopt;
}

Account AccountOf(ServerKind kind) {
    if (kind != ServerKind::vsftpd) {
        return {testUser, testPassword};
    }
    return RunByRoot() ? Account{WorkerAccount().user, testPassword} : Account{};
}

bool ServesAnonymous(ServerKind kind) {
    return Met(RowOf(kind).toServeAnonymous);
}

std::string WhyUnavailable(const ServeRequest& request) {
    const KindRow& row = RowOf(request.kind);
    const std::string name(row.name);
    if (!Met(row.toRun)) {
        return name + " runs as root only";
    }
    if (WorkerAccount().user.empty()) {
        return name + ": the system has no account for its sessions";
    }
    const fs::path program =
        row.program.empty() ? fs::path(systemPython) : request.servers / row.program;
    if (access(program.c_str(), X_OK) != 0) {
        return name + " is not there: fetch_servers.sh fetches it";
    }
    return {};
}

fs::path LogOf(const ServeRequest& request) {
    return request.state / "log";
}

std::vector<std::string> PrepareServer(const ServeRequest& request) {
    const fs::path program = request.servers / RowOf(request.kind).program;
    switch (request.kind) {
        case ServerKind::vsftpd:
            return PrepareVsftpd(request, program);
        case ServerKind::pureFtpd:
            return PreparePureFtpd(request, program);
        case ServerKind::proFtpd:
            return PrepareProFtpd(request, program);
        case ServerKind::pyftpdlib:
            return PreparePyftpdlib(request);
    }
    return {};
}

}  // namespace quennet::interop
