#pragma once
// The thread behind a scripted server: plays the steps, and notes what went over the wire.

#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "loopback/socket.h"
#include "support/wire_script.h"

class WirePlayer {
  public:
    WirePlayer();
    ~WirePlayer();

    std::uint16_t Port() const { return port_; }
    void Limit(loopback::Milliseconds limit) { limit_ = limit; }
    void Register(std::string name, std::string bytes);

    void Start(const std::vector<std::string>& lines);
    bool AwaitMark(std::string_view name);
    void Signal(std::string_view name);

    /// Joins the thread; with `atOnce` without waiting for the rest of the script.
    void Join(bool atOnce);

    std::string Complaint() const;
    std::vector<std::string> Saw() const;
    std::string Transcript() const;

  private:
    using Deadline = loopback::Clock::time_point;

    // Thrown by a step that cannot be played, and caught at the end of the thread.
    struct Diverted {
        std::string reason;
    };

    void Load(const std::vector<std::string>& lines);
    void CheckNames(const WireStep& step) const;
    void Run();
    void Play(const WireStep& step);
    void PlayControl(const WireStep& step);
    void PlayData(const WireStep& step);
    void WatchAfterTheEnd();
    void CloseAll();

    Deadline FromNow() const { return loopback::Clock::now() + limit_; }
    void Note(std::string line);
    void Complain(std::string reason);

    void AcceptControl();
    void CloseControl(bool withReset);
    std::string WithDataAddress(std::string text);
    void Say(std::string_view bytes);
    void Flood(const std::string& line);
    bool ReceiveControl(Deadline deadline, const loopback::StopSignal& stop);
    std::string ReadLine();
    void ExpectLine(const WireStep& step);
    void ExpectClose();
    void ExpectSilence(double seconds);
    void Hang();
    void NoteRemainder();
    void AwaitSignal(const std::string& name);

    void AcceptData();
    void ConnectData();
    void SendData(std::string_view bytes);
    void FillData(std::size_t count);
    void FloodData();
    bool ReceiveData(std::string* received, std::size_t most);
    void ExpectDataText(const std::string& text);
    void ExpectData(const std::string& wanted);
    void ExpectDataClose();

    loopback::Listener listener_;
    std::uint16_t port_;
    loopback::Milliseconds limit_{20'000};
    std::map<std::string, std::string> buffers_;
    std::vector<WireStep> steps_;
    std::thread thread_;

    // Of the player's thread.
    loopback::Descriptor control_;
    std::string incoming_;  // received on the control connection and not yet taken as a line
    loopback::Listener passive_;
    loopback::Descriptor data_;
    std::size_t dataSent_ = 0;  // bytes of the pattern, on this data connection
    std::uint32_t activeAddress_ = 0;
    std::uint16_t activePort_ = 0;

    loopback::StopSignal cancel_;  // ends every wait
    loopback::StopSignal finish_;  // ends `hang` and the watch after the last step

    mutable std::mutex lock_;  // guards all below
    std::condition_variable changed_;
    std::vector<std::string> transcript_;
    std::vector<std::string> saw_;
    std::set<std::string, std::less<>> marks_;
    std::set<std::string, std::less<>> signals_;
    std::string complaint_;
    bool ended_ = false;
    bool cancelled_ = false;
};
