#include "ini_file/file_config.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <stdexcept>

#include "ini_file/chunk_reader.h"
#include "support/files.h"

namespace {

using core_utils::CFileConfig;

const std::string PATH = support::configPath("test.cfg");

std::string filled(std::size_t length, char character = 'x') {
    return std::string(length, character);
}

TEST(ChunkReader, CutsAnyBytesIntoLinesAndPiecesOf80FromAnyPosition) {
    std::mt19937 random(1);
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        const std::size_t lineLength = 1 + below(300);
        std::string bytes(below(3 * core_utils::CChunkReader::WINDOW_SIZE), '\0');
        for (char& byte : bytes)
            byte = below(lineLength) == 0 ? '\n' : static_cast<char>(random());
        support::writeFile(PATH, bytes);
        core_utils::CLockedFile file;
        ASSERT_TRUE(file.open(PATH.c_str(), "rb"));
        core_utils::CChunkReader reader(file);
        std::size_t end = below(bytes.size() + 1);
        reader.seek(static_cast<std::int64_t>(end));
        while (end < bytes.size()) {
            const std::size_t begin = end;
            end = std::min({bytes.find('\n', begin), begin + 79, bytes.size() - 1}) + 1;
            ASSERT_TRUE(reader.next());
            ASSERT_EQ(begin, static_cast<std::size_t>(reader.begin()));
            ASSERT_EQ(end, static_cast<std::size_t>(reader.end()));
            ASSERT_EQ(bytes.substr(begin, end - begin), reader.chunk());
            ASSERT_EQ(end - begin == 80 && bytes[end - 1] != '\n', reader.isCutOff());
        }
        EXPECT_FALSE(reader.next());
        EXPECT_FALSE(reader.failed());
    }
}

TEST(ChunkReader, TellsAFailedReadFromTheEndOfTheFile) {
    core_utils::CLockedFile file;
    ASSERT_TRUE(file.open("/proc/self/mem", "rb"));  // nothing is mapped at its beginning
    core_utils::CChunkReader reader(file);
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.failed());
}

TEST(FileConfig, ReadsTheFirstTokenOfTheFirstMatchingKey) {
    constexpr int ALONE = 50;  // the size that is passed in
    const struct {
        std::string bytes;
        int size;  // of the value, or -1
        std::string section = "Sec";
    } rows[] = {
        {"[Sec] junk\nKey=\t 7\xA0  junk\n", 2},
        {std::string("[Sec]\nKey=\0 4\0 5\n", 17), 1},
        {"[Sec]\n#Key=1\nkey=1\n[B]\nKey=1\n[Sec]\nKey=333\nKey=1\n", 3},
        {" [Sec]\nKey=1\n[Sec\nKey=1\n[Se]\nKey=1\n[Sec2]\nKey=1\n[Sec]\nKey = 1\n", -1},
        {"[Sec]\nKey=a=b\n", -1},
        {"[Sec]\nKey= \r\nKey=1\n", ALONE},
        {"[Sec]\nKey=" + filled(49), 49},
        {"[Sec]\nKey=" + filled(50), 50},
        {"[Sec]\n" + filled(77) + "Key=22\n" + filled(80) + "Key=1\n", 1},
        {"[a=b]\nKey=1\n", 1, "a=b"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bytes);
        support::writeFile(PATH, row.bytes);
        CFileConfig file;
        ASSERT_TRUE(file.open(PATH, "rb"));
        char value[ALONE] = {};
        int size = ALONE;
        const bool found = file.readValue(row.section.c_str(), "Key", value, &size);
        EXPECT_EQ(row.size > 0 && row.size < ALONE, found);
        EXPECT_EQ(row.size, size);
    }
}

TEST(FileConfig, ReadsNumbersAsCDoesButRefusesWhatIsNoDoubleAndWritesThemInFull) {
    support::writeFile(PATH, "[Sec]\nnumber=-3.5x\ntext=text\nhuge=1e999\n");
    CFileConfig file;
    ASSERT_TRUE(file.open(PATH, "r+b"));
    const auto read = [&file](const char* key, auto number) {
        EXPECT_TRUE(file.read("Sec", key, number)) << key;
        return number;
    };
    EXPECT_EQ(-3, read("number", 1));
    EXPECT_EQ(0, read("text", 1));
    EXPECT_EQ(-3.5F, read("number", 1.0F));
    EXPECT_EQ(0.0F, read("text", 1.0F));
    EXPECT_EQ(HUGE_VALF, read("huge", 1.0F));
    EXPECT_EQ(-3.5, read("number", 1.0));
    EXPECT_THROW(read("text", 1.0), std::invalid_argument);
    EXPECT_THROW(read("huge", 1.0), std::out_of_range);
    EXPECT_TRUE(file.write("Sec", "number", -2147483647, true));
    EXPECT_TRUE(file.write("Sec", "new", 12.5));
    EXPECT_EQ("[Sec]\nnew=12.500000\nnumber=-2147483647\ntext=text\nhuge=1e999\n",
              support::readFile(PATH));
}

TEST(FileConfig, RewritesOnlyWhatAWriteMustChange) {
    const std::string head = "\ntext\n[Sec]\n\nA=1\n";
    const std::string untidy = "\ntext\n=1\n#c\n[B]\n\nKey=3\n[a=b]\n";
    const std::string tidied = "#c\n\n[B]\nKey=3\n[a=b]\n";
    const std::string longLine = "[Sec]\nKey=" + filled(76) + "a=b\nA=1\n";
    const std::string key = "[Sec]\nKey=1\n";
    const std::string longComment = "#" + filled(5000) + "\n";
    const std::string whole = filled(79) + "\n";  // a line that fills its chunk
    const struct {
        std::string before;
        std::string value;  // empty: the key is removed
        bool done;
        std::string after;
        std::string section = "Sec";
        std::string key = "Key";
    } rows[] = {
        {head + "Key=22\n" + untidy, "33", true, head + "Key=33\n" + untidy},
        {head + "Key=22\n" + untidy, "4", true, head + "Key=4\n" + tidied},
        {head + "Key=22\n" + untidy, "", true, head + tidied},
        {head + untidy, "1", true, "\ntext\n[Sec]\nKey=1\nA=1\n" + tidied},
        {"", "val", true, "\n[Sec]\nKey=val\n"},
        {"A=1", "val", true, "A=1\n\n[Sec]\nKey=val\n"},
        {"[Sec]\nKey=1\n[Sec]\nA=1\n", "2", true, "[Sec]\nKey=1\n[Sec]\nNew=2\nA=1\n", "Sec",
         "New"},
        {"[Sec]\n=1\n", "2", true, "[Sec]\n=2\n", "Sec", ""},
        {"[Sec]\n#K=1\n", "2", true, "[Sec]\n#K=2\n#K=1\n", "Sec", "#K"},
        {longLine, "1", true, "[Sec]\nKey=1\nA=1\n"},
        {longLine, "", true, "[Sec]\nA=1\n"},
        {key + longComment + "text\n[B]\n", "22", true,
         "[Sec]\nKey=22\n" + longComment + "\n[B]\n"},
        {key + "#" + whole.substr(1) + "text\nmore\n", "22", true,
         "[Sec]\nKey=22\n#" + whole.substr(1) + "text\n"},
        {key + whole + "[B]\n", "22", true, "[Sec]\nKey=22\n[B]\n"},
        {key, filled(75), true, "[Sec]\nKey=" + filled(75) + "\n"},
        {key, filled(76), false, key},
        {key, filled(77), true, "[Sec]\nKey=" + filled(76)},
        {key, "", false, key, "Sec", "None"},
        {key, "1", false, key, filled(78)},
        {"", "1", true, "\n[" + filled(77) + "]\nKey=1\n", filled(77)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.before + row.value);
        support::writeFile(PATH, row.before);
        CFileConfig file;
        ASSERT_TRUE(file.open(PATH, "r+b"));
        const bool done = row.value.empty() ? file.removeKey(row.section.c_str(), row.key.c_str())
                                            : file.write(row.section, row.key, row.value);
        EXPECT_EQ(row.done, done);
        EXPECT_EQ(row.after, support::readFile(PATH));
    }
}

TEST(FileConfig, RefusesMissingArgumentsAndWhatIsNoOpenRegularFile) {
    support::writeFile(PATH, "[Sec]\nKey=1\n");
    const std::string fifo = support::configPath("fifo");
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    CFileConfig file, closed;
    for (const std::string& path : {fifo, std::string("/dev/zero"), support::configPath("")}) {
        for (const char* mode : {"rb", "r+b", "w+b", "a"})
            EXPECT_FALSE(closed.open(path, mode) || closed.isOpen()) << path << ' ' << mode;
    }
    ASSERT_TRUE(file.open(PATH, "r+b"));
    EXPECT_FALSE(file.open(PATH, "r+b")) << "the first one stays";
    char buffer[9];
    int size = 0;
    const auto expectRefusals = [&](CFileConfig& refusing, const char* section, const char* key) {
        size = sizeof buffer;
        EXPECT_FALSE(refusing.readValue(section, key, buffer, &size));
        EXPECT_EQ(-1, size);
        EXPECT_FALSE(refusing.writeValue(section, key, "2", 1));
        EXPECT_FALSE(refusing.removeKey(section, key));
    };
    expectRefusals(closed, "Sec", "Key");
    expectRefusals(file, nullptr, "Key");
    expectRefusals(file, "Sec", nullptr);
    size = sizeof buffer;
    EXPECT_FALSE(file.readValue("Sec", "Key", nullptr, &size));
    EXPECT_FALSE(file.readValue("Sec", "Key", buffer, nullptr));
    EXPECT_FALSE(file.writeValue("Sec", "Key", nullptr, 1));
    EXPECT_FALSE(file.write("Sec", "Key", std::string()));
    EXPECT_FALSE(file.write("Sec", "New", 1, true)) << "not wanted";
    EXPECT_FALSE(file.write("New", "Key", 1, true));
    EXPECT_EQ("[Sec]\nKey=1\n", support::readFile(PATH));
    EXPECT_TRUE(file.close());
    EXPECT_FALSE(file.close() || file.isOpen());
}

TEST(FileConfig, ABatchReachesTheFileByItsCommitOnly) {
    const std::string before = "[Sec]\nKey=1\n";
    support::writeFile(PATH, before);
    CFileConfig file;
    int value = 0;
    ASSERT_TRUE(file.open(PATH, "r+b"));
    {
        CFileConfig::CBatch dropped(file);
        EXPECT_TRUE(file.write("Sec", "Key", 2));
        EXPECT_TRUE(file.read("Sec", "Key", value));
        EXPECT_EQ(2, value) << "reads see the change";
    }
    EXPECT_TRUE(file.read("Sec", "Key", value));
    EXPECT_EQ(1, value);
    CFileConfig::CBatch closed(file);
    EXPECT_TRUE(file.write("Sec", "Key", 3));
    EXPECT_TRUE(file.close());
    ASSERT_TRUE(file.open(PATH, "r+b"));
    EXPECT_FALSE(file.write("Sec", "Key", 3));
    EXPECT_FALSE(closed.commit());
    EXPECT_EQ(before, support::readFile(PATH));
    EXPECT_TRUE(file.write("Sec", "Key", 4)) << "the batch has ended";
}

}  // namespace
