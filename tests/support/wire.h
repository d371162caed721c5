#pragma once
// A scripted FTP server for one test. The script reads like the wire, from top to bottom:
//
//     Wire wire;
//     wire.Start(R"(
//         <- 220 ready
//         -> USER anna
//         <- 331 password please
//         -> PASS *
//         <- 230 welcome
//     )");
//     ... run the client against 127.0.0.1, wire.port() ...
//     wire.Finish();
//
// One step stands on each line. Blanks in front of it do not count; empty lines and lines that
// begin with '#' are passed over. The control connection is accepted before the first step.
//
//     <- TEXT             says the line, with CR LF behind it
//     << TEXT             says the bytes as they stand, without a line end
//     send NAME           says a buffer that was registered with Data
//     flood TEXT          says the line again and again until the client closes
//     -> TEXT             expects exactly this command line, with CR LF behind it. A '*' at the
//                         end stands for any rest: "-> PORT *". PORT commands are remembered.
//     expect close        expects that the client closes or resets the control connection
//     silent SECONDS      expects that nothing arrives during this time
//     pause SECONDS       waits
//     hang                answers nothing, whatever arrives, until the client closes or Finish is
//                         called, for a minute at most
//     close               closes the control connection in order
//     reset               resets the control connection
//     accept              waits for the next control connection, for reconnects
//     refuse              stops listening: further connections are refused
//     mark NAME           lets AwaitMark(NAME) return in the test
//     await NAME          waits until the test calls Signal(NAME)
//     data accept         accepts the connection to the address that {pasv} named
//     data connect        connects to the address of the last PORT command
//     data <- TEXT        sends the bytes, without a line end
//     data fill COUNT     sends the next COUNT bytes of Pattern
//     data flood          sends the bytes of Pattern until the client closes
//     data send NAME      sends a buffer that was registered with Data
//     data -> TEXT        expects exactly these bytes
//     data expect NAME    reads to the end and compares with a registered buffer
//     data expect close   reads to the end, or a reset, whatever comes
//     data close          closes the data connection in order
//     data reset          resets the data connection
//
// TEXT begins one blank behind the arrow. It knows \r, \n, \t, \0, \\ and \xNN; in what is said,
// "{pasv}" opens a data socket and stands for its six numbers, "127,0,0,1,P,P". NAMEs are words of
// the test's own choice.
//
// Each wait ends after the time limit, so that a wrong script never hangs. When the wire goes
// another way, all its sockets close at once. After the last step the control connection stays open
// until Finish; a further command or connection is a failure.

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class WirePlayer;

class Wire {
  public:
    /// Listens on a free port of 127.0.0.1.
    Wire();
    /// Reports what went another way like Finish, if the test has not called that; but does not
    /// wait for the rest of the script.
    ~Wire();
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    std::uint16_t port() const;

    /// Longest wait of a single step. 20 seconds unless set. To be called before Start.
    void Limit(std::chrono::milliseconds limit);

    /// Registers a buffer for "send", "data send" and "data expect". To be called before Start.
    void Data(std::string name, std::string bytes);

    /// Plays the script on a thread of its own. To be called once. A step that is not of the list
    /// above is a failure, before anything is played.
    void Start(std::string_view script);

    /// The same with one step in each string, for generated input of any length: a step may hold
    /// any byte.
    void Start(std::vector<std::string> steps);

    /// Waits until the script has reached "mark NAME". False when it ended before, or after the
    /// time limit.
    bool AwaitMark(std::string_view name);

    /// Lets "await NAME" go on.
    void Signal(std::string_view name);

    /// Waits for the end of the script, and fails the test, with the wire so far, when it was not
    /// played to its end. Closes all sockets. The failure names the line that called.
    void Finish(const char* file = __builtin_FILE(), int line = __builtin_LINE());

    /// Like Finish, but hands back the complaint instead of failing the test; empty when all went
    /// as written.
    std::string Outcome();

    /// The command lines received so far, without line ends, expected or not.
    std::vector<std::string> Saw() const;

    /// The wire so far, one line a step, long texts shortened.
    std::string Transcript() const;

    /// `count` bytes from `offset` on of the one pattern that "data fill" sends; it repeats after
    /// 4 GiB, and no two blocks of it are alike.
    static std::string Pattern(std::size_t count, std::size_t offset = 0);

  private:
    std::unique_ptr<WirePlayer> player_;
    bool reported_ = false;
};
