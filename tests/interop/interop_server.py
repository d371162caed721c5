"""Runs one real FTP server in the foreground over one folder on 127.0.0.1.

  interop_server.py [--port PORT] [--foreign] [--rate BYTES] SERVERS KIND ROOT

SERVERS is the folder that fetch_servers.sh has filled, KIND one of vsftpd, pure-ftpd, proftpd and
pyftpdlib. With --foreign a client may name another host for a data connection; the rate is that of
each data connection, in bytes a second, at least 1024.

Prints what a client needs, a line each: "port NUMBER", "user NAME", "password TEXT", "anonymous
yes" or "no", "log PATH", and "ready" at the end; or "why TEXT" when it can't be had here. Whatever the server has started ends with this
program, and this program ends with the one that started it.

Signals: SIGTERM, SIGINT and SIGHUP stop the server as a crash would; SIGUSR1 halts it and all its
sessions, so that it falls silent; SIGUSR2 lets them go on. A line, "halted" or "resumed", says that
it is done.

Exit status: 0 stopped by a signal, 1 the server failed, 2 usage, 77 it can't be had here.
"""

import argparse
import contextlib
import ctypes
import grp
import os
import pathlib
import pwd
import random
import signal
import socket
import subprocess
import sys
import tempfile
import time

UNAVAILABLE = 77
PYTHON = "/usr/bin/python3"
PYTHON_MODULES = "usr/lib/python3/dist-packages"

# Passive ports lie below the range that the system takes for outgoing connections.
PASSIVE = (20000, 29999)

# The password has a blank and characters that mean something in a URL or a format.
USER = "tester"
PASSWORD = "50% of a:secret"
PASSWORD_HASH = "$5$interopsalt$Cm8dsCJmNPem5qpYcnz0nWNHWOwWyLYXBkw0S8O0QP1"

SIGNALS = {signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGUSR1, signal.SIGUSR2,
           signal.SIGCHLD}
SET_DEATH_SIGNAL, SET_SUBREAPER = 1, 36
prctl = ctypes.CDLL(None).prctl

is_root = os.geteuid() == 0
# The unprivileged account that sessions run as: one of the system that has a home folder, which
# vsftpd insists on.
worker = pwd.getpwnam("daemon") if is_root else pwd.getpwuid(os.geteuid())
worker_ids = f"{worker.pw_uid}:{worker.pw_gid}"


def write_private(path, text):
    path.write_text(text)
    path.chmod(0o600)


def yes_no(value):
    return "YES" if value else "NO"


# Each of these writes the settings into the state folder and returns the command line that runs
# the server in the foreground.

def prepare_vsftpd(request, program):
    settings = request.state / "vsftpd.conf"
    empty = request.state / "empty"
    empty.mkdir(exist_ok=True)
    foreign = yes_no(request.foreign)
    write_private(settings, f"""\
listen=YES
listen_ipv6=NO
background=NO
listen_address=127.0.0.1
listen_port={request.port}
anonymous_enable=YES
no_anon_password=NO
write_enable=YES
anon_upload_enable=YES
anon_mkdir_write_enable=YES
anon_other_write_enable=YES
anon_world_readable_only=NO
anon_umask=022
local_umask=022
allow_writeable_chroot=YES
chroot_local_user=YES
connect_from_port_20=NO
pasv_enable=YES
port_enable=YES
pasv_min_port={PASSIVE[0]}
pasv_max_port={PASSIVE[1]}
pasv_promiscuous={foreign}
port_promiscuous={foreign}
max_clients=0
max_per_ip=0
local_max_rate={request.rate}
anon_max_rate={request.rate}
xferlog_enable=YES
xferlog_std_format=NO
vsftpd_log_file={request.log}
force_dot_files=YES
delay_failed_login=0
anon_root={request.root}
local_root={request.root}
ftp_username={worker.pw_name}
nopriv_user={worker.pw_name}
secure_chroot_dir={empty}
local_enable={yes_no(is_root)}
run_as_launching_user={yes_no(not is_root)}
# Containers often forbid what these three need.
seccomp_sandbox=NO
isolate=NO
isolate_network=NO
# This PAM service lets root in as any account of the system, without a look at the password.
pam_service_name=su
""")
    return [program, settings]


def prepare_pure_ftpd(request, program):
    accounts = request.state / "accounts"
    database = request.state / "accounts.pdb"
    write_private(accounts, f"{USER}:{PASSWORD_HASH}:{worker_ids}::{request.root}/./::::::::::::\n")
    tool = program.parent.parent / "bin" / "pure-pw"
    subprocess.run([tool, "mkdb", database, "-f", accounts], env=request.environment, check=True)
    arguments = [
        program, "--ipv4only", f"--bind=127.0.0.1,{request.port}", "--noanonymous", "--dontresolve",
        f"--login=puredb:{database}", "--minuid=1", "--displaydotfiles", "--allowdotfiles",
        "--tls=0", "--maxclientsnumber=100", "--maxclientsperip=100",
        # A listing ends at the first of these numbers, 2,000 unless told.
        "--limitrecursion=1000000:10", f"--passiveportrange={PASSIVE[0]}:{PASSIVE[1]}",
        "--syslogfacility=none", f"--altlog=clf:{request.log}", f"--pidfile={request.state}/pid"]
    if request.foreign:
        arguments.append("--allowuserfxp")
    if request.rate:
        arguments.append(f"--userbandwidth={request.rate // 1024}:{request.rate // 1024}")
    return arguments


def prepare_proftpd(request, program):
    settings = request.state / "proftpd.conf"
    accounts = request.state / "accounts"
    write_private(accounts, f"{USER}:{PASSWORD_HASH}:{worker_ids}::{request.root}:/bin/sh\n")
    text = f"""\
ServerName interop
ServerType standalone
DefaultAddress 127.0.0.1
Port {request.port}
SocketBindTight on
UseIPv6 off
UseReverseDNS off
WtmpLog off
TransferLog none
AuthPAM off
AuthOrder mod_auth_file.c mod_auth_unix.c
AuthUserFile {accounts}
RequireValidShell off
DelayEngine off
MaxInstances 100
AllowOverwrite on
AllowStoreRestart on
TimesGMT on
Umask 022 022
ControlsEngine off
ListOptions -a
User {worker.pw_name}
Group {grp.getgrgid(worker.pw_gid).gr_name}
PidFile {request.state}/pid
ScoreboardFile {request.state}/scoreboard
SystemLog {request.log}
PassivePorts {PASSIVE[0]} {PASSIVE[1]}
AllowForeignAddress {"on" if request.foreign else "off"}
"""
    if request.rate:
        text += f"TransferRate RETR,STOR {request.rate // 1024}\n"
    if is_root:  # whoever is not can't shut a session into the folder
        text += f"""\
DefaultRoot {request.root}
<Anonymous {request.root}>
  User {worker.pw_name}
  Group {grp.getgrgid(worker.pw_gid).gr_name}
  UserAlias anonymous {worker.pw_name}
  AnonRequirePassword off
</Anonymous>
"""
    write_private(settings, text)
    return [program, "--nodaemon", "--quiet", "--config", settings]


def prepare_pyftpdlib(request, program):
    script = pathlib.Path(__file__).with_name("pyftpd_server.py")
    return [PYTHON, script, request.port, request.root, USER, PASSWORD, request.log,
            f"{PASSIVE[0]}-{PASSIVE[1]}", int(request.foreign), request.rate]


# By kind: its program in its folder, and whether it serves anonymous clients too. pure-ftpd does only
# where the system has an account named ftp.
KINDS = {
    "vsftpd": (prepare_vsftpd, "usr/sbin/vsftpd", True),
    "pure-ftpd": (prepare_pure_ftpd, "usr/sbin/pure-ftpd", False),
    "proftpd": (prepare_proftpd, "usr/sbin/proftpd", is_root),
    "pyftpdlib": (prepare_pyftpdlib, PYTHON_MODULES, True),
}


def account_of(kind):
    """vsftpd knows accounts of the system only: run as root it takes one of them, with any
    password; run by someone else it has none."""
    if kind != "vsftpd":
        return USER, PASSWORD
    return (worker.pw_name, PASSWORD) if is_root else ("", "")


def free_port():
    """Below the ports of outgoing connections and of passive data connections, so that nothing
    takes the port between this look at it and the server's start; two tests may, hence the
    caller's tries."""
    while True:
        port = random.randrange(10000, 20000)
        with socket.socket() as probe, contextlib.suppress(OSError):
            probe.bind(("127.0.0.1", port))
            return port


def descendants():
    """All that the server started are descendants of this process, however it detached them: this
    program is their reaper."""
    parents = {}
    for entry in filter(str.isdigit, os.listdir("/proc")):
        with contextlib.suppress(OSError), open(f"/proc/{entry}/stat", "rb") as stat:
            parents[int(entry)] = int(stat.read().rpartition(b")")[2].split()[1])

    def descends(process):
        while process and process != os.getpid():
            process = parents.get(process, 0)
        return process != 0

    return [process for process in parents if descends(parents[process])]


def signal_descendants(number):
    for process in descendants():
        with contextlib.suppress(ProcessLookupError):
            os.kill(process, number)


def reap():
    """The children that have ended. ChildProcessError when there are none at all."""
    ended = []
    while (process := os.waitpid(-1, os.WNOHANG)[0]) > 0:
        ended.append(process)
    return ended


def end_descendants():
    with contextlib.suppress(ChildProcessError):
        while True:
            signal_descendants(signal.SIGKILL)
            reap()
            time.sleep(0.002)


def environment_of(folder):
    """For a server that is unpacked there. Dates in listings are to be the same on every machine,
    and names UTF-8."""
    libraries = [*folder.glob("lib/*-linux-gnu"), *folder.glob("usr/lib/*-linux-gnu")]
    return {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8", "TZ": "UTC",
            "LD_LIBRARY_PATH": ":".join(map(str, libraries)),
            "PYTHONPATH": str(folder / PYTHON_MODULES)}


def start_process(arguments, environment):
    def prepare():
        prctl(SET_DEATH_SIGNAL, signal.SIGKILL)
        signal.pthread_sigmask(signal.SIG_SETMASK, [])

    return subprocess.Popen([str(argument) for argument in arguments], env=environment,
                            stdin=subprocess.DEVNULL, stdout=sys.stderr, preexec_fn=prepare)


def greets(port):
    with contextlib.suppress(OSError):
        with socket.create_connection(("127.0.0.1", port), timeout=2) as client:
            return client.recv(3) == b"220"
    return False


def start_server(request, prepare, program):
    """Starts the server; with a port of 0 on a free one, which then stands in the request."""
    any_port = request.port == 0
    for _ in range(5 if any_port else 1):
        if any_port:
            request.port = free_port()
        server = start_process(prepare(request, program), request.environment)
        end = time.monotonic() + 10
        while time.monotonic() < end and server.poll() is None:
            if greets(request.port):
                return server
            time.sleep(0.005)
        end_descendants()
    return None


def supervise(server):
    """Waits for the signals until one of them, or the server's own end, is the end."""
    while True:
        number = signal.sigwait(SIGNALS)
        if number == signal.SIGUSR1:
            signal_descendants(signal.SIGSTOP)
            print("halted", flush=True)
        elif number == signal.SIGUSR2:
            signal_descendants(signal.SIGCONT)
            print("resumed", flush=True)
        elif number != signal.SIGCHLD:
            return 0
        elif server.pid in reap():
            print("the server ended by itself", file=sys.stderr)
            return 1


def why_not(request, program):
    """Why the server can't be had here, or nothing. What fetch_servers.sh found stands beside its
    folder, but root may have filled it."""
    if request.kind == "pure-ftpd" and not is_root:
        return "pure-ftpd can't be had here: it runs as root only"
    with contextlib.suppress(FileNotFoundError):
        return (request.servers / f"{request.kind}.why").read_text().strip()
    return "" if program.exists() else f"{request.kind} is not there: fetch_servers.sh fetches it"


def serve(request):
    prepare, program, anonymous = KINDS[request.kind]
    folder = request.servers / request.kind
    program = folder / program
    reason = why_not(request, program)
    if reason:
        print("why", reason)
        return UNAVAILABLE
    request.environment = environment_of(folder)
    signal.pthread_sigmask(signal.SIG_BLOCK, SIGNALS)
    prctl(SET_SUBREAPER, 1)
    prctl(SET_DEATH_SIGNAL, signal.SIGTERM)
    with tempfile.TemporaryDirectory(prefix="quennet-") as state:
        request.state = pathlib.Path(state)
        request.log = request.state / "log"  # of pure-ftpd: its transfers alone
        server = start_server(request, prepare, program)
        if server is None:
            print(request.kind, "does not start", file=sys.stderr)
            if request.log.exists():
                print(request.log.read_text(errors="replace"), file=sys.stderr)
            return 1
        user, password = account_of(request.kind)
        print(f"port {request.port}\nuser {user}\npassword {password}\n"
              f"anonymous {yes_no(anonymous).lower()}\nlog {request.log}\nready", flush=True)
        status = supervise(server)
        end_descendants()
        return status


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--foreign", action="store_true")
    parser.add_argument("--rate", type=int, default=0)
    parser.add_argument("servers", type=pathlib.Path)
    parser.add_argument("kind", choices=KINDS)
    parser.add_argument("root", type=lambda text: pathlib.Path(text).resolve(strict=True))
    return serve(parser.parse_args())


sys.exit(main())
