#pragma once
// Standard error: finished lines, and one line at the bottom that changes.

#include <mutex>
#include <string>
#include <string_view>

namespace cli {

/// Operations may be called on any thread. All text is made harmless for a terminal.
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

    /// Lines wait until the object goes: the terminal belongs to a display.
    class Hold {
      public:
        explicit Hold(Status& status) : status_(status) { status_.SetHeld(true); }
        ~Hold() { status_.SetHeld(false); }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

      private:
        Status& status_;
    };

  private:
    void SetHeld(bool held);
    void Write(const std::string& bytes);

    const bool isTerminal_;
    std::mutex mutex_;
    std::string bottom_;
    bool held_ = false;
    std::string heldBytes_;
};

}  // namespace cli
