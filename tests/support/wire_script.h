#pragma once
// The language of the scripted server: steps, the texts in them, and how bytes are shown.

#include <string>
#include <string_view>
#include <vector>

enum class WireVerb {
    say,
    sayRaw,
    send,
    flood,
    expectLine,
    expectClose,
    silent,
    pause,
    hang,
    close,
    reset,
    accept,
    refuse,
    mark,
    await,
    dataAccept,
    dataConnect,
    dataSay,
    dataFill,
    dataFlood,
    dataSend,
    dataExpectText,
    dataExpectClose,
    dataExpect,
    dataClose,
    dataReset,
};

struct WireStep {
    WireVerb verb;
    std::string text;      // bytes or name, escapes resolved
    double number = 0;     // seconds, or a count of bytes
    bool anyRest = false;  // the expected line ended in '*'
    std::string source;    // the step as the script has it
};

/// Splits a script into its lines. Comments and empty lines are left out.
std::vector<std::string> WireLines(std::string_view script);

/// Reads one step. Empty when done, else what is wrong with it.
std::string ParseWireStep(std::string_view line, WireStep* step);

/// Bytes as a person can read them: control characters as escapes, long texts shortened.
std::string ShowBytes(std::string_view bytes);
