#pragma once
// One client of the server: its login, its directory, and the commands.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "control.h"
#include "shared.h"
#include "transfer.h"

namespace loopback {

class Client {
  public:
    Client(Shared* shared, const StopSignal* stop, Descriptor socket, int number);

    /// Serves the connection until it ends.
    void Run();

    /// Says why the connection is not served, and closes it.
    void TurnAway();

  private:
    struct Command;
    static const Command commands[];
    static const Command* FindCommand(std::string_view verb);

    bool Welcome();
    void Obey(const std::string& line);
    bool ObeyFaults();
    void Dispatch(const std::string& verb, const std::string& argument);

    void User(const std::string& argument);
    void Pass(const std::string& argument);
    void Acct(const std::string& argument);
    void Quit(const std::string& argument);
    void Noop(const std::string& argument);
    void Syst(const std::string& argument);
    void Type(const std::string& argument);
    void Mode(const std::string& argument);
    void Stru(const std::string& argument);
    void Pwd(const std::string& argument);
    void Cwd(const std::string& argument);
    void Cdup(const std::string& argument);
    void Pasv(const std::string& argument);
    void Port(const std::string& argument);
    void Rest(const std::string& argument);
    void List(const std::string& argument);
    void Nlst(const std::string& argument);
    void Retr(const std::string& argument);
    void Stor(const std::string& argument);
    void Appe(const std::string& argument);
    void Abor(const std::string& argument);
    void Size(const std::string& argument);
    void Dele(const std::string& argument);
    void Rnfr(const std::string& argument);
    void Rnto(const std::string& argument);
    void Mkd(const std::string& argument);
    void Rmd(const std::string& argument);
    void Site(const std::string& argument);

    std::string Path(std::string_view name) const { return AbsolutePath(directory_, name); }
    bool MayLogIn(const std::string& password) const;
    void LogIn();
    void ReplyTo(int error, std::string_view done, std::string_view path);
    void SendText(const std::string& text);
    void ListWith(const std::string& argument, bool namesAlone);
    void Store(const std::string& argument, WriteMode mode);
    bool PreparedForData();
    void ReplyToTransfer(TransferEnd end);

    Shared* shared_;
    const StopSignal* stop_;
    ControlChannel control_;
    DataChannel data_;
    std::vector<Fault> faults_;  // for the command being obeyed

    std::string user_;
    bool passwordGiven_ = false;  // and an account still wanted
    bool loggedIn_ = false;
    int failedLogins_ = 0;
    bool quit_ = false;
    std::string directory_ = "/";
    std::string renameFrom_;
    std::uint64_t restartOffset_ = 0;
};

}  // namespace loopback
