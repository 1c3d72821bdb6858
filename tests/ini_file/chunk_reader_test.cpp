#include "ini_file/chunk_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support/files.h"

namespace {

const std::string PATH = support::configPath("chunks.cfg");

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

}  // namespace
