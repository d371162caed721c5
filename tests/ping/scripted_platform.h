#pragma once
// The platform's calls that the ping tool makes, played from a script. The program has them under
// their own names, so its module calls these.

#include <winsock.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "ping/ping_state.h"

/// What becomes of one request.
struct Turn {
    int sendError = 0;
    int sent = 12;
    int receiveError = 0;
    int type = 0;
    int otherProcess = 0;  // added to the identifier
    int headerSize = 20;   // of IP
    int length = 0;        // cuts the datagram; 0 is all
    DWORD milliseconds = 0;
    // Of the library.
    DWORD answers = 1;
    DWORD status = 0;
};

/// The host «named» has the address 10.0.0.1, and no other has a record.
struct ScriptedPlatform {
    bool hasRawSocket = true;
    int refusedOption = 0;
    bool hasLibrary = true;
    bool hasFile = true;
    std::string missingFunction;
    std::vector<Turn> turns;
    /// Behind the last turn this one is asked to stop.
    quennet::PingState* state = nullptr;
    /// Called while an answer is awaited.
    std::function<void()> whileWaiting;

    // What was called.
    std::atomic<int> opened = 0;  // sockets, files and libraries
    std::atomic<int> closed = 0;
    std::atomic<int> pauses = 0;
    std::vector<std::string> requests;  // as they were sent, or the library's arguments
};

extern ScriptedPlatform platform;
