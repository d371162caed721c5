#pragma once
// The module as a host sees it: messages, a holder, and a connection dialog that fills itself in.

#include "control/session.h"
#include "host/message.h"
#include "support/session_test.h"

class ModuleTest : public ::testing::Test {
  protected:
    ModuleTest();
    ~ModuleTest() override;

    /// What the dialog gets before it is closed with `button` (99 accepts, 2 cancels).
    struct Entry {
        std::string name = "site";
        std::string host = {};
        std::string user = "anna";
        std::string password = "secret";
        std::string directory = {};
        int button = 99;
    };

    /// Sends message 24 on the loop's thread.
    void Connect(const Entry& entry);

    /// Sends message 25 and waits until the holder is empty.
    void Disconnect();

    /// Waits until the host has heard so much.
    bool Await(const std::string& notice);

    quennet::FtpHandle* Handle();
    quennet::Session* SessionOfHandle();
    hostkit::Host& Host() { return thread_->Host(); }
    std::string WireHost() const { return "127.0.0.1:" + std::to_string(wire.port()); }

    Wire wire;
    Notices notices;
    quennet::HostWord holder = 0;
    quennet::u32 socketUses = 0;

  private:
    void FillIn(HWND dialog) const;

    NoticePanel panel_{notices};
    Entry entry_;
    std::unique_ptr<HostThread> thread_;
    std::unique_ptr<hostkit::Console> console_;
    quennet::u8 panelId_ = 0;
};
