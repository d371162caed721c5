#pragma once
// The module as a host sees it: messages, a holder for the connection, and what the host hears.

#include "control/session.h"
#include "host/message.h"
#include "support/session_test.h"

class ModuleTest : public ::testing::Test {
  protected:
    ~ModuleTest() override;

    void StartHost(const hostkit::HostOptions& options);
    hostkit::Host& Host() { return thread_->Host(); }

    /// Sends message 24, to be called on the loop's thread.
    void SendConnect();
    /// Sends message 25 and waits until the holder is empty.
    void Disconnect();

    quennet::FtpHandle* Handle();
    quennet::Session* SessionOfHandle();
    std::string WireHost() const { return "127.0.0.1:" + std::to_string(wire.port()); }

    Wire wire;
    Notices notices;
    quennet::HostWord holder = 0;
    quennet::u32 socketUses = 0;
    quennet::ConnectParams params = {};

  private:
    NoticePanel panel_{notices};
    std::unique_ptr<HostThread> thread_;
    std::unique_ptr<hostkit::Console> console_;
    quennet::u8 panelId_ = 0;
};
