// The configuration file class beside its model: any file, any operations. Both are made of pieces
// that sit on the edge of a rule, chosen by the fuzzer, with its own bytes among them.
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

using fuzz::CFileConfigModel;
using fuzz::sFileOperation;

constexpr char PRINTED_PATH[] = "/dev/shm/printed";
constexpr int MAX_LINES = 25;
constexpr int MAX_OPERATIONS = 12;

std::string filled(int length, char character = 'x') {
    return std::string(static_cast<std::size_t>(length), character);
}

class CGenerator {
  public:
    CGenerator(const std::uint8_t* bytes, std::size_t size) : mData(bytes, size) {
        mNames = {"Sec", "A", pick({"", "A]", "B B", filled(77, 'S'), filled(78, 'S'), text()})};
        mKeys = {pick({"", "Key ", "#K", filled(40, 'k'), filled(78, 'k'), "a=b", text()}), "Key",
                 "K"};
    }

    std::string file() {
        std::string bytes;
        for (int i = below(MAX_LINES); i > 0; --i)
            bytes += line();
        if (!bytes.empty() && below(3) == 0) bytes.pop_back();
        return bytes;
    }

    std::vector<sFileOperation> operations() {
        std::vector<sFileOperation> all(static_cast<std::size_t>(1 + below(MAX_OPERATIONS)));
        std::generate(all.begin(), all.end(), [this] { return operation(); });
        return all;
    }

  private:
    int below(int limit) { return mData.ConsumeIntegralInRange(0, limit - 1); }

    std::string pick(const std::vector<std::string>& choices) {
        return choices[mData.ConsumeIntegralInRange<std::size_t>(0, choices.size() - 1)];
    }

    std::string bytes() { return mData.ConsumeRandomLengthString(100); }

    // What a caller can pass: C strings, so without NUL.
    std::string text() {
        const std::string any = bytes();
        return any.substr(0, any.find('\0'));
    }

    // Mostly near a multiple of the chunk size, or longer than the window of the scanner.
    std::string filler() {
        constexpr int LENGTHS[] = {3, 9, 75, 80, 80, 155, 160, 240, 4096 - 160};
        return filled(mData.PickValueInArray(LENGTHS) + below(8) - 3);
    }

    std::string rubbish() {
        const std::string nasty("=[]# \t\r\0\x80\xFFKA", 13);
        std::string chosen;
        for (int i = below(12); i > 0; --i)
            chosen += nasty[mData.ConsumeIntegralInRange<std::size_t>(0, nasty.size() - 1)];
        return chosen;
    }

    std::string value() {
        const int room = 70 - std::min(static_cast<int>(mKeys[0].size()), 70);
        return pick({"1", "22", "-3.5", "12.500000", "1e999", "text", "a=b", "", "0", filler(),
                     filled(room + below(12)), text()});
    }

    std::string line() {
        const std::string header = "[" + pick(mNames) + "]";
        const std::string key = pick(mKeys) + "=";
        const std::string after = pick({"", "", "\r", " junk", "=1", rubbish()}) + "\n";
        switch (below(10)) {
            case 0:
                return header + filled(76) + "\n";
            case 1:
                return header + after;
            case 2:
                return key + value() + after;
            case 3:
                return key + rubbish() + value() + after;
            case 4:
                return pick({"\n", "\r\n", "  \n", "text\n", "=\n", "==1\n", " [A]\n", "[a=b]\n"});
            case 5:
                return "#" + pick({"", "K=1", filler()}) + after;
            case 6:
                return filled(80 * (1 + below(2))) + pick({"[A]", "#", "text", key + "1"}) + after;
            case 7:
                return filled(79) + "\n" + pick({"", "text\n", header + "\n"});
            case 8:
                return filler() + after;
            default:
                return bytes() + rubbish() + after;
        }
    }

    sFileOperation operation() {
        sFileOperation made;
        made.action = fuzz::FILE_ACTIONS[below(16) == 0 ? below(2) : 2 + below(10)];
        made.section = pick(mNames);
        made.key = pick(mKeys);
        made.value = value();
        made.number = below(made.action == "read raw" || below(2) == 0 ? 90 : 2000000000) + 1;
        made.noCreate = below(3) == 0;
        return made;
    }

    FuzzedDataProvider mData;
    std::vector<std::string> mNames;
    std::vector<std::string> mKeys;
};

void require(bool holds, const sFileOperation& operation, const char* what,
             const std::string& expected, const std::string& got) {
    if (holds) return;
    std::fprintf(stderr, "%s [%s]:[%s] '%s' %d %d: %s\nexpected:\n%s\ngot:\n%s\n",
                 operation.action.c_str(), operation.section.c_str(), operation.key.c_str(),
                 operation.value.c_str(), operation.number, operation.noCreate, what,
                 testing::PrintToString(expected).c_str(), testing::PrintToString(got).c_str());
    std::abort();
}

std::string takePrinted() {
    std::fflush(stdout);
    std::string printed = support::readFile(PRINTED_PATH);
    if (std::freopen(PRINTED_PATH, "w", stdout) == nullptr) std::abort();
    return printed;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return std::freopen(PRINTED_PATH, "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const std::string PATH = support::configPath("fuzz.cfg");
    CGenerator generator(bytes, size);
    const std::vector<sFileOperation> operations = generator.operations();

    CFileConfigModel model;
    model.bytes = generator.file();
    support::writeFile(PATH, model.bytes);
    core_utils::CFileConfig file;
    model.open(PATH, "r+b");
    file.open(PATH, "r+b");
    for (const sFileOperation& operation : operations) {
        const std::string expected = fuzz::perform(model, PATH, operation);
        const std::string result = fuzz::perform(file, PATH, operation);
        require(result == expected, operation, "the result", expected, result);
        const std::string content = support::readFile(PATH);
        require(content == model.bytes, operation, "the file", model.bytes, content);
    }
    const std::string printed = takePrinted();
    require(printed == model.printed, operations.back(), "the output", model.printed, printed);
    return 0;
}
