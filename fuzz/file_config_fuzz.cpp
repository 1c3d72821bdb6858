// The configuration file class beside the model that the tests use: any file, any operations.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include "file_config_model.h"
#include "ini_file/file_config.h"
#include "support/files.h"

namespace {

using support::CFileConfigModel;
using support::sFileOperation;

constexpr std::size_t MAX_TEXT = 200;
constexpr int MAX_OPERATIONS = 8;
constexpr int MAX_CAPACITY = 120;

// What a caller can pass: C strings, so without NUL.
std::string consumeText(FuzzedDataProvider& data) {
    const std::string text = data.ConsumeRandomLengthString(MAX_TEXT);
    return text.substr(0, text.find('\0'));
}

sFileOperation consumeOperation(FuzzedDataProvider& data) {
    const auto& actions = support::kFileActions;
    sFileOperation operation;
    operation.action = actions[data.ConsumeIntegralInRange<std::size_t>(0, std::size(actions) - 1)];
    operation.section = data.ConsumeBool() ? "Sec" : consumeText(data);
    operation.key = data.ConsumeBool() ? "Key" : consumeText(data);
    operation.value = consumeText(data);
    operation.number = data.ConsumeIntegralInRange(1, MAX_CAPACITY);
    operation.noCreate = data.ConsumeBool();
    return operation;
}

[[noreturn]] void fail(const sFileOperation& operation, const std::string& expected,
                       const std::string& result) {
    std::fprintf(stderr, "%s [%s]:[%s] gave %s instead of %s\n", operation.action.c_str(),
                 operation.section.c_str(), operation.key.c_str(), result.c_str(),
                 expected.c_str());
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const std::string PATH = support::configPath("fuzz.cfg");
    FuzzedDataProvider data(bytes, size);
    std::vector<sFileOperation> operations(
        data.ConsumeIntegralInRange<std::size_t>(1, MAX_OPERATIONS));
    std::generate(operations.begin(), operations.end(), [&] { return consumeOperation(data); });

    CFileConfigModel model;
    model.bytes = data.ConsumeRemainingBytesAsString();
    support::writeFile(PATH, model.bytes);
    core_utils::CFileConfig file;
    model.open(PATH, "r+b");
    file.open(PATH, "r+b");
    for (const sFileOperation& operation : operations) {
        const std::string expected = support::perform(model, PATH, operation);
        const std::string result = support::perform(file, PATH, operation);
        if (result != expected) fail(operation, expected, result);
        const std::string content = support::readFile(PATH);
        if (content != model.bytes) fail(operation, model.bytes, content);
    }
    return 0;
}
