#include "ini_file/file_config.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <random>

#include "file_config_model.h"
#include "support/files.h"

namespace {

using core_utils::CFileConfig;
using support::CFileConfigModel;
using support::sFileOperation;

const std::string kPath = support::configPath("test.cfg");

std::string filled(int length, char character = 'x') {
    return std::string(static_cast<std::size_t>(length), character);
}

struct sCase {
    std::vector<std::string> lines;
    std::vector<sFileOperation> operations;

    std::string bytes() const { return std::accumulate(lines.begin(), lines.end(), std::string()); }
};

// Random files and operations, rich in what sits on the edge of a rule.
class CGenerator {
  public:
    explicit CGenerator(unsigned seed) : mRandom(seed) {}

    sCase makeCase() {
        mNames = {"Sec", "A", pick({"", "A]", "B B", filled(77, 'S'), filled(78, 'S')})};
        mKeys = {pick({"", "Key ", "#K", filled(40, 'k'), filled(78, 'k'), "a=b"}), "Key", "K"};
        sCase made;
        for (int i = below(25); i > 0; --i)
            made.lines.push_back(line());
        if (!made.lines.empty() && below(3) == 0) made.lines.back().pop_back();
        for (int i = 1 + below(12); i > 0; --i)
            made.operations.push_back(operation());
        return made;
    }

  private:
    int below(int limit) { return static_cast<int>(mRandom() % static_cast<unsigned>(limit)); }

    std::string pick(const std::vector<std::string>& choices) {
        return choices[mRandom() % choices.size()];
    }

    // Mostly near a multiple of the chunk size.
    std::string filler() {
        const std::vector<int> lengths = {3, 9, 75, 80, 80, 155, 160, 240};
        return filled(lengths[mRandom() % lengths.size()] + below(8) - 3);
    }

    std::string rubbish() {
        const std::string nasty("=[]# \t\r\0\x80\xFFKA", 13);
        std::string bytes;
        for (int i = below(12); i > 0; --i)
            bytes += nasty[mRandom() % nasty.size()];
        return bytes;
    }

    std::string value() {
        return pick({"1", "22", "-3.5", "12.500000", "1e999", "text", "a=b", "", "0", filler(),
                     filled(below(6) + 76 - std::min(static_cast<int>(mKeys[0].size()), 70))});
    }

    std::string line() {
        const std::string key = pick(mKeys);
        const std::string after = pick({"", "\r", " junk", "=1", rubbish()}) + "\n";
        return pick({"[" + pick(mNames) + "]" + after, "[" + pick(mNames) + "]" + filled(76) + "\n",
                     "[" + pick(mNames) + "]\n", key + "=" + value() + after,
                     key + "=" + value() + "\n", key + "=" + rubbish() + value() + after,
                     pick({"\n", "\r\n", "  \n", "text\n", "=\n", "==1\n", " [A]\n"}),
                     "#" + pick({"", "K=1", filler()}) + after, filler() + after, rubbish() + after,
                     filled(80 * (1 + below(2))) + pick({"[A]", "#", "text", key + "=1"}) + after});
    }

    sFileOperation operation() {
        sFileOperation made;
        made.action = support::kFileActions[below(16) == 0 ? below(2) : 2 + below(10)];
        made.section = pick(mNames);
        made.key = pick(mKeys);
        made.value = value();
        made.number = below(made.action == "read raw" || below(2) == 0 ? 90 : 2000000000) + 1;
        made.noCreate = below(3) == 0;
        return made;
    }

    std::mt19937 mRandom;
    std::vector<std::string> mNames;
    std::vector<std::string> mKeys;
};

// What the first step that differs from the model gave, or nothing.
std::string findDifference(const sCase& tested) {
    CFileConfigModel model;
    model.bytes = tested.bytes();
    support::writeFile(kPath, model.bytes);
    CFileConfig file;
    std::ostringstream difference;
    const std::string printed = support::printedBy([&] {
        model.open(kPath, "r+b");
        file.open(kPath, "r+b");
        for (const sFileOperation& operation : tested.operations) {
            const std::string expected = support::perform(model, kPath, operation);
            const std::string result = support::perform(file, kPath, operation);
            const std::string bytes = support::readFile(kPath);
            if (result == expected && bytes == model.bytes) continue;
            difference << testing::PrintToString(expected) << " and file\n"
                       << testing::PrintToString(model.bytes) << "\nexpected, but got "
                       << testing::PrintToString(result) << " and file\n"
                       << testing::PrintToString(bytes);
            break;
        }
    });
    if (difference.str().empty() && printed != model.printed) {
        difference << "expected output " << model.printed << "\ngot " << printed;
    }
    return difference.str();
}

// Drops whatever is not needed for a difference to show.
sCase shrink(sCase failing) {
    const auto dropFrom = [&](auto member) {
        for (std::size_t i = (failing.*member).size(); i-- > 0;) {
            sCase smaller = failing;
            (smaller.*member).erase((smaller.*member).begin() + static_cast<std::ptrdiff_t>(i));
            if (!findDifference(smaller).empty()) failing = smaller;
        }
    };
    dropFrom(&sCase::operations);
    dropFrom(&sCase::lines);
    return failing;
}

std::string describe(const sCase& failing) {
    std::ostringstream text;
    for (const std::string& line : failing.lines)
        text << testing::PrintToString(line) << '\n';
    for (const sFileOperation& done : failing.operations) {
        text << done.action << " [" << done.section << "] " << done.key << " '" << done.value
             << "' " << done.number << (done.noCreate ? " noCreate\n" : "\n");
    }
    return text.str();
}

unsigned numberFromEnvironment(const char* name, unsigned otherwise) {
    const char* text = std::getenv(name);
    return text != nullptr ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

TEST(FileConfig, AgreesWithTheModelOnRandomFilesAndOperations) {
    const unsigned seed = numberFromEnvironment("APP_CONFIG_TEST_SEED", 1);
    const unsigned count = numberFromEnvironment("APP_CONFIG_TEST_FILES", 4000);
    std::cout << "APP_CONFIG_TEST_SEED=" << seed << " APP_CONFIG_TEST_FILES=" << count << '\n';
    for (unsigned i = seed; i != seed + count; ++i) {
        const sCase tested = CGenerator(i).makeCase();
        if (findDifference(tested).empty()) continue;
        const sCase smallest = shrink(tested);
        FAIL() << "APP_CONFIG_TEST_SEED=" << i << '\n'
               << describe(smallest) << findDifference(smallest);
    }
}

TEST(FileConfig, AgreesWithTheModelOnLargeFiles) {
    sCase large;
    for (int i = 0; i < 10000; ++i)
        large.lines.push_back("[" + std::to_string(i) + "]\nKey=" + std::to_string(i) + "\n");
    for (const char* section : {"9999", "0", "5000", "10000"}) {
        for (const char* action : {"read int", "write text", "read text", "remove"})
            large.operations.push_back({action, section, "Key", "longer than it was", 0, false});
    }
    EXPECT_EQ("", findDifference(large));

    std::mt19937 random(1);
    std::generate_n(std::back_inserter(large.lines[4000]), 300000, [&] { return random() % 256; });
    EXPECT_EQ("", findDifference(large));
}

// The rules by hand, against a mistake that the model shares.
TEST(FileConfig, ReadsTheFirstTokenOfTheFirstMatchingKey) {
    const struct {
        std::string bytes;
        int size;  // of the value, or -1, or 50 where it is left alone
    } cases[] = {
        {"[Sec] junk\nKey=\t 77  junk\n", 2},
        {"[Sec]\n#Key=1\nkey=1\n[B]\nKey=1\n[Sec]\nKey=333\nKey=1\n", 3},
        {"[Sec]\nKey = 1\n", -1},
        {" [Sec]\nKey=1\n", -1},
        {"[Sec]\nKey=a=b\n", -1},
        {"[Sec]\nKey=  \nKey=1\n", 50},
        {"[Sec]\nKey=" + filled(49), 49},
        {"[Sec]\nKey=" + filled(50), 50},
    };
    for (const auto& wanted : cases) {
        support::writeFile(kPath, wanted.bytes);
        CFileConfig file;
        ASSERT_TRUE(file.open(kPath, "rb"));
        char value[50] = {};
        int size = sizeof(value);
        EXPECT_EQ(wanted.size > 0 && wanted.size < 50, file.readValue("Sec", "Key", value, &size));
        EXPECT_EQ(wanted.size, size) << wanted.bytes;
    }
}

TEST(FileConfig, RewritesOnlyWhatAWriteMustChange) {
    const std::string head = "\ntext\n[Sec]\n\nA=1\n";
    const std::string untidy = "\ntext\n#c\n[B]\n\nKey=3\n";
    const std::string tidied = "#c\n\n[B]\nKey=3\n";
    const std::string longLine = "[Sec]\nKey=" + filled(90) + "\nA=1\n";
    const struct {
        std::string before;
        std::string value;  // empty: the key is removed
        bool done;
        std::string after;
    } cases[] = {
        {head + "Key=22\n" + untidy, "33", true, head + "Key=33\n" + untidy},
        {head + "Key=22\n" + untidy, "4", true, head + "Key=4\n" + tidied},
        {head + "Key=22\n" + untidy, "555", true, head + "Key=555\n" + tidied},
        {head + "Key=22\n" + untidy, "", true, head + tidied},
        {head + untidy, "1", true, "\ntext\n[Sec]\nKey=1\nA=1\n" + tidied},
        {"", "val", true, "\n[Sec]\nKey=val\n"},
        {"A=1", "val", true, "A=1\n\n[Sec]\nKey=val\n"},
        {longLine, "1", true, "[Sec]\nKey=1\nA=1\n"},
        {longLine, "", true, "[Sec]\nA=1\n"},
        {"[Sec]\nKey=1\n", filled(76), false, "[Sec]\nKey=1\n"},
        {"[Sec]\nKey=1\n", filled(77), true, "[Sec]\nKey=" + filled(76)},
    };
    for (const auto& wanted : cases) {
        support::writeFile(kPath, wanted.before);
        CFileConfig file;
        ASSERT_TRUE(file.open(kPath, "r+b"));
        const bool done = wanted.value.empty() ? file.removeKey("Sec", "Key")
                                               : file.write("Sec", "Key", wanted.value);
        EXPECT_EQ(wanted.done, done) << wanted.before << wanted.value;
        EXPECT_EQ(wanted.after, support::readFile(kPath));
    }
}

void expectRefusal(CFileConfig& file, const char* section, const char* key, const char* value) {
    char buffer[9];
    int size = sizeof(buffer);
    EXPECT_FALSE(file.readValue(section, key, value == nullptr ? nullptr : buffer, &size));
    EXPECT_EQ(-1, size);
    EXPECT_FALSE(file.writeValue(section, key, value, 1));
    EXPECT_FALSE(value != nullptr && file.removeKey(section, key));
}

TEST(FileConfig, RefusesMissingArgumentsAndAFileThatIsNotOpen) {
    support::writeFile(kPath, "[Sec]\nKey=1\n");
    CFileConfig file;
    EXPECT_FALSE(file.open(support::configPath("none.cfg"), "r+b"));
    EXPECT_FALSE(file.isOpen());
    expectRefusal(file, "Sec", "Key", "2");
    ASSERT_TRUE(file.open(kPath, "r+b"));
    EXPECT_TRUE(file.isOpen());
    expectRefusal(file, nullptr, "Key", "2");
    expectRefusal(file, "Sec", nullptr, "2");
    expectRefusal(file, "Sec", "Key", nullptr);
    EXPECT_EQ("[Sec]\nKey=1\n", support::readFile(kPath));
}

TEST(FileConfig, LosesNothingInAFileItMayNotWrite) {
    const std::string bytes = "[Sec]\nKey=1\n";
    support::writeFile(kPath, bytes);
    CFileConfig file;
    ASSERT_TRUE(file.open(kPath, "rb"));
    const std::string printed = support::printedBy([&] {
        EXPECT_FALSE(file.write("Sec", "Key", 2)) << "in place";
        EXPECT_FALSE(file.write("Other", "Key", 2)) << "appended";
        EXPECT_FALSE(file.write("Sec", "Key", 22)) << "rewritten";
        EXPECT_FALSE(file.removeKey("Sec", "Key"));
    });
    EXPECT_EQ("truncate fail : 22 \ntruncate fail : 22 \n", printed);
    EXPECT_EQ(bytes, support::readFile(kPath));
}

TEST(FileConfig, OpensRegularFilesOnlyAndWaitsForNothing) {
    const std::string fifo = support::configPath("fifo");
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    for (const std::string& path : {fifo, std::string("/dev/zero"), support::configPath("")}) {
        for (const char* mode : {"rb", "r+b", "w+b", "a"}) {
            CFileConfig file;
            EXPECT_FALSE(file.open(path, mode)) << path << ' ' << mode;
            EXPECT_FALSE(file.isOpen());
        }
    }
    support::writeFile(kPath, "[Sec]\nKey=1\n");
    const std::string link = support::configPath("link");
    ASSERT_EQ(0, symlink(kPath.c_str(), link.c_str()));
    CFileConfig file;
    EXPECT_TRUE(file.open(link, "r+b"));
}

}  // namespace
