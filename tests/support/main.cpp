// The entry of every test program. Tests use the daemon's real paths, and much of the product lives
// once a process: the program starts itself again for each test, where those paths are empty.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <utility>

#include "support/child_process.h"

namespace {

// Read by the sanitizers' run-time libraries before main(), here and in the programs started by
// a test. What the caller's environment says goes first.
void setSanitizerOptions() {
    setenv("LSAN_OPTIONS", "suppressions=" TEST_SUPPORT_DIR "/lsan.supp:print_suppressions=0", 0);
    setenv("TSAN_OPTIONS", "suppressions=" TEST_SUPPORT_DIR "/tsan.supp", 0);
    setenv("UBSAN_OPTIONS", "print_stacktrace=1", 0);
}

[[noreturn]] void startInPrivateRoot(const support::Words& arguments) {
    setSanitizerOptions();
    support::Words words =
        support::targetCommand({std::filesystem::read_symlink("/proc/self/exe")});
    words.insert(words.begin(), TEST_PRIVATE_ROOT);
    words.insert(words.end(), arguments.begin(), arguments.end());
    support::execute(words);
}

// Runs each selected test in a process of its own instead of here, as a shard of one test.
class COneProcessEach : public testing::EmptyTestEventListener {
  public:
    explicit COneProcessEach(support::Words arguments) : mArguments(std::move(arguments)) {}

  private:
    void OnTestIterationStart(const testing::UnitTest& tests, int) override {
        setenv("GTEST_TOTAL_SHARDS", std::to_string(tests.test_to_run_count()).c_str(), 1);
        int failed = 0;
        for (int i = 0; i < tests.test_to_run_count(); ++i) {
            setenv("GTEST_SHARD_INDEX", std::to_string(i).c_str(), 1);
            const pid_t child = fork();
            if (child == 0) startInPrivateRoot(mArguments);
            failed += support::statusOf(child) != 0;
        }
        _exit(failed == 0 ? EXIT_SUCCESS : EXIT_FAILURE);
    }

    const support::Words mArguments;
};

}  // namespace

int main(int argc, char** argv) {
    const support::Words arguments(argv + 1, argv + argc);
    testing::InitGoogleTest(&argc, argv);
    const bool inside = std::getenv("APP_CONFIG_PRIVATE_ROOT") != nullptr;
    if (!inside && !testing::GTEST_FLAG(list_tests)) {
        testing::TestEventListeners& listeners = testing::UnitTest::GetInstance()->listeners();
        delete listeners.Release(listeners.default_result_printer());
        listeners.Append(new COneProcessEach(arguments));
    }
    return RUN_ALL_TESTS();
}
