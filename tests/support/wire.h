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
//     -> TEXT             expects exactly this command line, with CR LF behind it. A '*' at the
//                         end stands for any rest: "-> PORT *". PORT commands are remembered.
//     expect close        expects that the client closes or resets the control connection
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
//     data send NAME      sends a buffer that was registered with Data
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

#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "loopback/socket.h"

class Wire {
  public:
    /// Listens on a free port of 127.0.0.1.
    Wire() = default;
    /// Reports what went another way like Finish, if the test has not called that; but does not
    /// wait for the rest of the script.
    ~Wire();
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    std::uint16_t port() const { return port_; }

    /// Longest wait of a single step. 20 seconds unless set. To be called before Start.
    void Limit(std::chrono::milliseconds limit) { limit_ = limit; }

    /// Registers a buffer for "data send" and "data expect". To be called before Start.
    void Data(std::string name, std::string bytes) { buffers_[std::move(name)] = std::move(bytes); }

    /// Plays the script on a thread of its own. To be called once. A step that is not of the list
    /// above is a failure, before anything is played.
    void Start(std::string_view script);

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

    /// `count` bytes from `offset` on of a pattern that repeats after 4 GiB, and of which no two
    /// blocks are alike.
    static std::string Pattern(std::size_t count, std::size_t offset = 0);

  private:
    struct Step {
        void (Wire::*play)(const Step& step);
        std::string text;  // bytes or name, escapes resolved
        double seconds = 0;
        bool anyRest = false;  // the expected line ended in '*'
        std::string source;    // the step as the script has it
    };
    struct Verb;
    static const Verb verbs[];

    // Thrown by a step that cannot be played, and caught at the end of the thread.
    struct Diverted {
        std::string reason;
    };

    static Step ParseStep(std::string_view line);
    static std::string ShowBytes(std::string_view bytes);

    void Run();
    void WatchAfterTheEnd();
    void Join(bool atOnce);
    void CloseAll();
    loopback::Clock::time_point FromNow() const { return loopback::Clock::now() + limit_; }
    void Note(std::string line);
    void End(std::string complaint);

    void Say(const Step& step);
    void SayRaw(const Step& step);
    void ExpectLine(const Step& step);
    void ExpectClose(const Step& step);
    void Pause(const Step& step);
    void Hang(const Step& step);
    void CloseControl(const Step& step);
    void ResetControl(const Step& step);
    void AcceptControl(const Step& step);
    void Refuse(const Step& step);
    void Mark(const Step& step);
    void AwaitSignal(const Step& step);
    void SayBytes(std::string bytes);
    void NoteRemainder();
    std::string ReadLine();
    bool ReceiveControl(loopback::Clock::time_point deadline, const loopback::StopSignal& stop);

    void AcceptData(const Step& step);
    void ConnectData(const Step& step);
    void SayData(const Step& step);
    void SendData(const Step& step);
    void ExpectData(const Step& step);
    void ExpectDataClose(const Step& step);
    void CloseData(const Step& step);
    void ResetData(const Step& step);
    void SendDataBytes(std::string_view bytes);
    const std::string& Buffer(const Step& step) const;

    loopback::Listener listener_ = loopback::Listen(0);
    const std::uint16_t port_ = listener_.port;
    std::chrono::milliseconds limit_{20'000};
    std::map<std::string, std::string> buffers_;
    std::vector<Step> steps_;
    std::thread thread_;
    bool reported_ = false;

    // Of the player's thread.
    loopback::Descriptor control_;
    std::string incoming_;  // received on the control connection and not yet taken as a line
    loopback::Listener passive_;
    loopback::Descriptor data_;
    std::uint32_t activeAddress_ = 0;
    std::uint16_t activePort_ = 0;

    loopback::StopSignal cancel_;  // ends every wait
    loopback::StopSignal finish_;  // ends `hang` and the watch after the last step

    mutable std::mutex lock_;  // guards all below
    std::condition_variable changed_;
    std::string transcript_;
    std::vector<std::string> saw_;
    std::set<std::string, std::less<>> marks_;
    std::set<std::string, std::less<>> signals_;
    std::string complaint_;
    bool ended_ = false;
    bool cancelled_ = false;
};
