// A program run beside the test, its standard output read line by line.
#ifndef SUPPORT_CHILD_PROCESS_H
#define SUPPORT_CHILD_PROCESS_H

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/files.h"

namespace support {

using Words = std::vector<std::string>;

// The words that start a program built with the tests: where it was built for another machine, the
// emulator's come first.
inline Words targetCommand(const Words& command) {
    std::istringstream emulator(TEST_EMULATOR);
    Words words;
    for (std::string word; emulator >> word;)
        words.push_back(word);
    words.insert(words.end(), command.begin(), command.end());
    return words;
}

// Replaces this process by the command; ends with status 127 if it cannot be started.
[[noreturn]] inline void execute(Words command) {
    std::vector<char*> arguments;
    for (std::string& word : command)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    std::perror(arguments[0]);
    _exit(127);
}

// What became of a process, from waitpid(): its exit status, or minus the signal that ended it.
inline int statusFrom(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}
// Waits for the process to end.
inline int statusOf(pid_t process) {
    int status = 0;
    waitpid(process, &status, 0);
    return statusFrom(status);
}

// Owns the process and the reading end of its output. The destructor kills it.
class CChildProcess {
  public:
    // Starts a program built with the tests, without the `closed` descriptors.
    explicit CChildProcess(const Words& command, const std::vector<int>& closed = {}) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        mPid = fork();
        if (mPid == 0) {
            dup2(ends[1], STDOUT_FILENO);
            for (const int descriptor : closed)
                ::close(descriptor);
            execute(targetCommand(command));
        }
        ::close(ends[1]);
        mOutput = ends[0];
        fcntl(mOutput, F_SETFL, O_NONBLOCK);
    }

    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;
    ~CChildProcess() {
        kill(SIGKILL);
        wait();
        ::close(mOutput);
    }

    pid_t pid() const { return mPid; }

    // The next line without its end; nothing at the end of the output or after `bound`.
    std::optional<std::string> readLine(std::chrono::milliseconds bound = BOUND) {
        std::size_t length = std::string::npos;
        waitUntil(
            [&] {
                char buffer[4096];
                const ssize_t count = ::read(mOutput, buffer, sizeof buffer);
                if (count > 0) mstrPending.append(buffer, static_cast<std::size_t>(count));
                length = mstrPending.find('\n');
                return length != std::string::npos || count == 0;
            },
            bound);
        if (length == std::string::npos) return {};
        const std::string line = mstrPending.substr(0, length);
        mstrPending.erase(0, length + 1);
        return line;
    }

    // Nobody reads the output any more.
    void closeOutput() {
        ::close(mOutput);
        mOutput = -1;
    }

    // Does nothing once the process has been waited for.
    void kill(int signal) {
        if (!mStatus) ::kill(mPid, signal);
    }

    // The exit status, minus the signal that ended it, or nothing if it still runs after `bound`.
    std::optional<int> wait(std::chrono::milliseconds bound = BOUND) {
        const auto hasEnded = [this] {
            int status = 0;
            if (!mStatus && waitpid(mPid, &status, WNOHANG) == mPid) mStatus = statusFrom(status);
            return mStatus.has_value();
        };
        waitUntil(hasEnded, bound);
        return mStatus;
    }

  private:
    pid_t mPid = -1;
    int mOutput = -1;
    std::string mstrPending;
    std::optional<int> mStatus;
};

}  // namespace support

#endif
