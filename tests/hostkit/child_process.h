#pragma once
// A part of a test that runs in a process of its own.

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

class ChildProcess {
  public:
    /// Runs `work` in a copy of this process, which then ends with the result as exit status.
    explicit ChildProcess(const std::function<int()>& work) : number_(fork()) {
        if (number_ == 0) {
            _exit(work());
        }
    }
    ~ChildProcess() {
        if (number_ > 0) {
            Kill();
        }
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Ends it in whatever it does.
    void Kill() {
        kill(number_, SIGKILL);
        Wait();
    }

    /// Its exit status, -1 when it was killed.
    int Wait() {
        int status = 0;
        waitpid(number_, &status, 0);
        number_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    pid_t number_;
};
