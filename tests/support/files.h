// Whole files, the configuration folder, what the code under test prints, and waiting for it.
#ifndef SUPPORT_FILES_H
#define SUPPORT_FILES_H

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

namespace support {

inline std::string configPath(const std::string& name) {
    return "/etc/quenvel/config/system/" + name;
}

inline void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << bytes << std::flush;
    ASSERT_TRUE(file) << path;
}

// Every byte of the file; fails the test if there is none.
inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    std::ostringstream bytes;
    if (file.peek() != std::ifstream::traits_type::eof()) bytes << file.rdbuf();
    return bytes.str();
}

// Everything that `action` prints on standard output, or on standard error, by whatever means.
template <typename Action>
std::string printedBy(Action action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}
template <typename Action>
std::string printedOnStderrBy(Action action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

constexpr std::chrono::seconds BOUND{20};  // also for a busy machine

// Polls `condition` every millisecond; false if it does not hold within `bound`.
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds bound = BOUND) {
    const auto end = std::chrono::steady_clock::now() + bound;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace support

#endif
