#include "ini_file/chunk_reader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "support/files.h"

namespace {

const std::string PATH = support::configPath("chunks.cfg");

// The C library is the oracle: the same chunks, at the same positions.
TEST(ChunkReader, CutsAnyBytesAsFgetsDoes) {
    std::mt19937 random(1);
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        const std::size_t lineLength = 1 + below(300);
        std::string bytes(below(3 * core_utils::CChunkReader::WINDOW_SIZE), '\0');
        for (char& byte : bytes)
            byte = below(lineLength) == 0 ? '\n' : static_cast<char>(random());
        support::writeFile(PATH, bytes);
        const long start = static_cast<long>(below(bytes.size() + 1));
        core_utils::CLockedFile file;
        ASSERT_TRUE(file.open(PATH.c_str(), "rb"));
        core_utils::CChunkReader reader(file);
        reader.seek(start);
        std::FILE* oracle = std::fopen(PATH.c_str(), "rb");
        ASSERT_EQ(0, std::fseek(oracle, start, SEEK_SET));
        char buffer[81];
        for (long begin = start; std::fgets(buffer, sizeof buffer, oracle) != nullptr;) {
            const long end = std::ftell(oracle);
            const auto length = static_cast<std::size_t>(end - begin);
            ASSERT_TRUE(reader.next());
            ASSERT_EQ(begin, reader.begin());
            ASSERT_EQ(end, reader.end());
            ASSERT_EQ(std::string_view(buffer, length), reader.chunk());
            ASSERT_EQ(length == 80 && buffer[79] != '\n', reader.isCutOff());
            begin = end;
        }
        EXPECT_FALSE(reader.next());
        EXPECT_FALSE(reader.failed());
        std::fclose(oracle);
    }
}

}  // namespace
