#include "hostkit/console.h"

#include <algorithm>
#include <utility>

#include "hostkit/services.h"
#include "hostkit/window.h"

namespace hostkit {

Console::Console(Host& host, Sink sink) : host_(host) {
    window_ =
        host_.Loop().Invoke([] { return MakeWindow("hostkit console", DefWindowProcA, nullptr); });
    host_.GetServices().AddConsole(Number(), std::move(sink));
}

Console::~Console() {
    host_.GetServices().RemoveConsole(Number());
    SendMessageA(window_, WM_CLOSE, 0, 0);  // its own thread destroys it, and nothing is thrown
}

std::string HarmlessLine(const std::string& line) {
    std::string harmless;
    harmless.reserve(line.size());
    for (std::size_t i = 0; i < line.size(); ++i) {
        const auto byte = static_cast<unsigned char>(line[i]);
        const auto next = static_cast<unsigned char>(i + 1 < line.size() ? line[i + 1] : 0);
        if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {
            harmless += '?';
            ++i;
        } else if (byte == '\t') {
            harmless += ' ';
        } else {
            harmless += byte < 0x20 || byte == 0x7F ? '?' : line[i];
        }
    }
    return harmless;
}

bool IsReply(std::string_view line) {
    constexpr std::size_t codeLength = 3;
    constexpr std::string_view remark = " bytes received in ";
    constexpr std::string_view remarkEnd = " KB/s)";
    const std::size_t digits = std::min(line.find_first_not_of("0123456789"), line.size());
    const bool isRemark = line.substr(digits).starts_with(remark) && line.ends_with(remarkEnd);
    return digits == codeLength && !isRemark;
}

}  // namespace hostkit
