// The entry of every test program. Tests use the daemon's real paths, so the program first starts
// itself again where those are empty and private.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "support/child_process.h"

namespace {

// Read by the sanitizers' run-time libraries before main(), here and in the programs started by
// a test. What the caller's environment says goes first.
void setSanitizerOptions() {
    setenv("LSAN_OPTIONS", "suppressions=" TEST_SUPPORT_DIR "/lsan.supp:print_suppressions=0", 0);
    setenv("TSAN_OPTIONS", "suppressions=" TEST_SUPPORT_DIR "/tsan.supp", 0);
    setenv("UBSAN_OPTIONS", "print_stacktrace=1", 0);
}

int restartInPrivateRoot(int argc, char** argv) {
    setSanitizerOptions();
    char self[PATH_MAX] = {};
    if (readlink("/proc/self/exe", self, sizeof(self) - 1) < 0) return EXIT_FAILURE;
    std::vector<std::string> words = {TEST_PRIVATE_ROOT};
    for (const std::string& word : support::targetCommand({self}))
        words.push_back(word);
    words.insert(words.end(), argv + 1, argv + argc);
    std::vector<char*> arguments = support::argumentVector(words);
    execv(arguments[0], arguments.data());
    std::fprintf(stderr, "%s: %s\n", arguments[0], std::strerror(errno));
    return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<char*> words(argv, argv + argc);
    words.push_back(nullptr);
    int count = argc;
    testing::InitGoogleTest(&count, words.data());
    const bool inside = std::getenv("APP_CONFIG_PRIVATE_ROOT") != nullptr;
    if (!inside && !testing::GTEST_FLAG(list_tests)) return restartInPrivateRoot(argc, argv);
    return RUN_ALL_TESTS();
}
