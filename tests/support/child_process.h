// A program run beside the test, its standard output read line by line.
#ifndef SUPPORT_CHILD_PROCESS_H
#define SUPPORT_CHILD_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace support {

// The words to start a program built with the tests: the emulator's go first when it was built
// for another machine.
std::vector<std::string> targetCommand(const std::vector<std::string>& command);

// `words` as exec takes them; they must outlive the result.
std::vector<char*> argumentVector(std::vector<std::string>& words);

// Owns the process and the reading end of its output; the destructor kills it. A program that
// cannot be started ends with status 127.
class CChildProcess {
  public:
    static constexpr std::chrono::milliseconds BOUND{20000};

    // A program built with the tests and its arguments, started without the `closed` descriptors.
    explicit CChildProcess(const std::vector<std::string>& command,
                           const std::vector<int>& closed = {});
    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;
    ~CChildProcess();

    pid_t pid() const { return mPid; }

    // The next line without its end; nothing at the end of the output or after `bound`.
    std::optional<std::string> readLine(std::chrono::milliseconds bound = BOUND);

    // Nobody reads the output any more.
    void closeOutput();

    // Nothing to do once the process has been waited for.
    void kill(int signal);

    // The exit status, minus the signal that ended it, or nothing if it still runs after `bound`.
    std::optional<int> wait(std::chrono::milliseconds bound = BOUND);

  private:
    pid_t mPid = -1;
    int mOutput = -1;
    std::string mstrPending;
    std::optional<int> mStatus;
};

}  // namespace support

#endif
