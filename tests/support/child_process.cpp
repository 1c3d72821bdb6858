#include "support/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>
#include <stdexcept>

#include "support/wait_until.h"

namespace support {

using std::chrono::milliseconds;

std::vector<std::string> targetCommand(const std::vector<std::string>& command) {
    std::istringstream emulator(TEST_EMULATOR);
    std::vector<std::string> words;
    for (std::string word; emulator >> word;)
        words.push_back(word);
    words.insert(words.end(), command.begin(), command.end());
    return words;
}

std::vector<char*> argumentVector(std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    return arguments;
}

CChildProcess::CChildProcess(const std::vector<std::string>& command,
                             const std::vector<int>& closed) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    std::vector<std::string> words = targetCommand(command);
    const std::vector<char*> arguments = argumentVector(words);
    mPid = fork();
    if (mPid == 0) {
        dup2(ends[1], STDOUT_FILENO);
        for (const int descriptor : closed)
            ::close(descriptor);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    ::close(ends[1]);
    mOutput = ends[0];
    fcntl(mOutput, F_SETFL, O_NONBLOCK);
}

CChildProcess::~CChildProcess() {
    kill(SIGKILL);
    wait();
    closeOutput();
}

void CChildProcess::closeOutput() {
    ::close(mOutput);
    mOutput = -1;
}

std::optional<std::string> CChildProcess::readLine(milliseconds bound) {
    std::size_t length = std::string::npos;
    const auto hasLineOrEnd = [&] {
        char buffer[4096];
        const ssize_t count = ::read(mOutput, buffer, sizeof buffer);
        if (count > 0) mstrPending.append(buffer, static_cast<std::size_t>(count));
        length = mstrPending.find('\n');
        return length != std::string::npos || count == 0;
    };
    waitUntil(hasLineOrEnd, bound);
    if (length == std::string::npos) return {};
    const std::string line = mstrPending.substr(0, length);
    mstrPending.erase(0, length + 1);
    return line;
}

void CChildProcess::kill(int signal) {
    if (!mStatus) ::kill(mPid, signal);
}

std::optional<int> CChildProcess::wait(milliseconds bound) {
    waitUntil(
        [this] {
            int status = 0;
            if (!mStatus && waitpid(mPid, &status, WNOHANG) == mPid) {
                mStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
            }
            return mStatus.has_value();
        },
        bound);
    return mStatus;
}

}  // namespace support
