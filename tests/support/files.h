// Whole files, the configuration folder, and what the code under test prints.
#ifndef SUPPORT_FILES_H
#define SUPPORT_FILES_H

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

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

}  // namespace support

#endif
