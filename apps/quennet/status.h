#pragma once
// Standard error: finished lines, and one line at the bottom that changes.

#include <atomic>
#include <mutex>
#include <string>
#include <string_view>

namespace cli {

/// Operations may be called on any thread. All text is made harmless for a terminal. A line waits
/// for whoever reads standard error, the changing one is left out when that would be a wait.
class Status {
  public:
    Status();
    ~Status();
    Status(const Status&) = delete;
    Status& operator=(const Status&) = delete;

    bool IsTerminal() const { return isTerminal_; }
    /// Columns of the terminal, 80 when it does not tell.
    unsigned Width() const;

    /// Writes a line, above the changing one.
    void Line(std::string_view text);

    /// Shows the changing line, or changes it; on a terminal only. It must fit the width.
    void SetBottom(std::string_view text);
    void RemoveBottom();

    /// Shows a question, without a line end.
    void Ask(std::string_view question);

    /// The program is to end: from now on nothing waits, and what nobody takes is lost.
    void Hurry() { hurried_ = true; }

    /// Writes the last line of a program that is to end at once, whatever other threads do.
    void LastLine(std::string_view text);

    /// Lines wait until the object goes: the terminal belongs to a display.
    class Hold {
      public:
        explicit Hold(Status& status) : status_(status) { status_.CountHold(1); }
        ~Hold() { status_.CountHold(-1); }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

      private:
        Status& status_;
    };

  private:
    void CountHold(int more);
    void Write(const std::string& bytes);
    void WriteLine(std::string_view text);
    bool CanWrite(int milliseconds) const;

    const bool isTerminal_;
    const int descriptor_;  // standard error, or its terminal opened anew so that no write blocks
    std::atomic<bool> hurried_ = false;
    std::mutex mutex_;
    std::string bottom_;
    int holds_ = 0;
    std::string heldBytes_;
};

}  // namespace cli
