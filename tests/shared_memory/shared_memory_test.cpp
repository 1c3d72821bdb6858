#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <functional>

#include "shared_memory/peer_segment.h"
#include "support/files.h"
#include "support/peer.h"

namespace {

using namespace support;
using core_utils::CPeerSegment;
using core_utils::CSharedMemory;
using core_utils::SegmentString;

constexpr char OPEN_FAILED[] =
    "exception encountered opening shared memory [CONF_AUTO_SAVE_MEM] \n";

TEST(SharedMemory, AllMayReadTheSegmentWhichKeepsItsObjectsOverARestart) {
    umask(077);
    CSharedMemory memory(false);
    struct stat status {};
    ASSERT_EQ(0, stat(SEGMENT_FILE, &status));
    EXPECT_EQ(1310720, status.st_size);
    EXPECT_EQ(0644U, status.st_mode & 0777U);
    EXPECT_TRUE(memory.createIntVal(7) && memory.createStrVal("s"));
    CSharedMemory restarted(false);
    EXPECT_FALSE(restarted.createIntVal(8) || restarted.createStrVal("t"));
    unsigned int number = 0;
    std::string text;
    EXPECT_TRUE(restarted.readIntVal(number) && restarted.readStrVal(text));
    EXPECT_EQ("7s", std::to_string(number) + text);
    EXPECT_FALSE(CSharedMemory(true).readIntVal(number)) << "the old segment is discarded";
}

TEST(SharedMemory, WritingLeavesExactlyTheInputAndReadingNeverCreates) {
    CPeerMemory memory;
    Doubles out = {9.0};
    EXPECT_FALSE(CSharedMemory::readDoubleVector("VOLTAGE_DATA_MEM", out));
    EXPECT_EQ(0U, memory.mpSharedMemory->get_num_named_objects());
    // The journal holds 64 KiB.
    const Doubles large(20000, 1.5), larger(20000, -2.5);
    for (const Doubles& values : {Doubles{1, 2, 3}, Doubles{4, 5}, large, larger, {}}) {
        EXPECT_TRUE(memory.setDoubleVector(0, values));
        EXPECT_EQ(values, memory.getDoubleVector(0));
    }
    EXPECT_TRUE(CSharedMemory::readDoubleVector("VOLTAGE_DATA_MEM", out));
    EXPECT_EQ(Doubles{9.0}, out) << "an object without elements leaves the output";
    for (const Texts& texts : {Texts{"short", "", std::string(3000, 'l')}, Texts{"", "n", "m"}}) {
        EXPECT_TRUE(memory.setStringVector(24, texts));
        EXPECT_EQ(texts, memory.getStringVector(24));
    }
    for (const int id : {-1, 6, 23, 26, 31, 42, 43, 44, 45, 46, 47, 49}) {
        EXPECT_FALSE(memory.setDoubleVector(id, {1.0})) << id;
        EXPECT_TRUE(memory.getDoubleVector(id).empty()) << id;
    }
    EXPECT_EQ(2U, memory.mpSharedMemory->get_num_named_objects());
}

TEST(SharedMemory, FullSegmentFailsTheWriteAndNothingElse) {
    CSharedMemory memory(false);
    EXPECT_TRUE(memory.setByteVector(7, {1}) && memory.setDoubleVector(0, Doubles(100000)) &&
                memory.setStringVector(24, {"old"}));
    const std::string full = R"(failed with exception "boost::interprocess::bad_alloc")";
    const Texts texts(100, std::string(20000, 'x'));
    EXPECT_EQ(full, printedBy([&] { EXPECT_FALSE(memory.setStringVector(24, texts)); }));
    EXPECT_EQ(full, printedBy([&] { memory.setDoubleVector(1, Doubles(100000)); }));
    EXPECT_EQ("exception catch \n", printedBy([&] { memory.setDoubleVector(1, Doubles(300000)); }));
    EXPECT_EQ(Bytes{1}, memory.getByteVector(7));
    EXPECT_EQ(Texts{"old"}, memory.getStringVector(24)) << "nothing of what does not fit";
    EXPECT_TRUE(memory.setStringVector(24, {"fits"}) && memory.setDoubleVector(0, {1.0}));
}

// A faulty or foreign program may leave anything under one of the names. The words are those of a
// vector: its allocator, where the elements are, their number, the room for them.
TEST(SharedMemory, ForeignObjectsAreNotReadNotWrittenAndEndNothing) {
    constexpr std::size_t X = 0x5A5A5A5A;
    const std::vector<std::size_t> cases[] = {
        {0}, {0, 0, 0, 0, 0}, {X, X, X, X}, {1, 0x7FFFFFFF, 2, 2}, {1, 64, 1000, 2}, {0, 0, 0, 0}};
    for (const auto& words : cases) {
        CSharedMemory(true);
        CPeerMemory memory;
        for (const char* name : {"VOLTAGE_DATA_MEM", "CHF_MODE_MEM", "WLAN_SSID_MEM"}) {
            auto* raw = memory.mpSharedMemory->construct<std::size_t>(name)[words.size()]();
            std::copy(words.begin(), words.end(), raw);
        }
        EXPECT_TRUE(memory.getDoubleVector(0).empty() && memory.getByteVector(7).empty() &&
                    memory.getStringVector(24).empty());
        const auto write = [&] {
            EXPECT_FALSE(memory.setDoubleVector(0, {1.0}) || memory.setByteVector(7, {1}) ||
                         memory.setStringVector(24, {"a"}));
        };
        EXPECT_EQ("BOOST VCTR DBL IS EMPTY \nBOOST VCTR BYTE IS EMPTY \nBOOST VCTR STR IS EMPTY \n",
                  printedBy(write))
            << testing::PrintToString(words);
    }

    CSharedMemory(true);
    CPeerMemory memory;
    memory.setStringVector(24, {"a", "b"});
    auto& texts = memory.vector<SegmentString>("WLAN_SSID_MEM");
    std::memset(static_cast<void*>(&texts.at(1)), 0x5A, sizeof(SegmentString));
    EXPECT_TRUE(memory.getStringVector(24).empty()) << "a text that is no text";
    EXPECT_EQ("BOOST VCTR STR IS EMPTY \n", printedBy([&] { memory.setStringVector(24, {"c"}); }));
}

// Boost's code would write over these, or free them.
TEST(SharedMemory, ElementsInTheMemoryOfAnotherObjectAreNeitherOverwrittenNorFreed) {
    CPeerMemory memory;
    memory.setDoubleVector(0, {1.0, 2.0});
    memory.setDoubleVector(1, {5.0, 6.0});
    auto* words = memory.mpSharedMemory->find<std::ptrdiff_t>("VOLTAGE_DATA_MEM").first;
    auto* other = reinterpret_cast<char*>(memory.vector<double>("CURRENT_DATA_MEM").data());
    words[1] = other - reinterpret_cast<char*>(&words[1]);
    words[3] = 1000;  // room that was not allocated
    EXPECT_EQ("exception catch \n",
              printedBy([&] { EXPECT_FALSE(memory.setDoubleVector(0, {7.0})); }));
    CPeerSegment segment;
    ASSERT_TRUE(segment.attach());
    EXPECT_EQ(CPeerSegment::eOutcome::DAMAGED, segment.remove(0).outcome);
    EXPECT_EQ((Doubles{5.0, 6.0}), memory.getDoubleVector(1));
    EXPECT_TRUE(memory.setDoubleVector(1, Doubles(100))) << "the segment's mutex is free";
}

TEST(SharedMemory, AttachesToWhatServesAndOtherwiseFailsInBoundedTime) {
    const std::string zeros(1310719, '\0');
    const auto create = [](std::size_t size) {
        core_utils::Segment(boost::interprocess::create_only, "CONF_AUTO_SAVE_MEM", size);
    };
    const struct {
        const char* what;
        const char* options;  // of a new file system
        std::function<void()> prepare;
        bool serves;
    } rows[] = {
        {"no state", "", [] { writeFile(SEGMENT_FILE, ""); }, false},
        {"unfinished", "", [&] { writeFile(SEGMENT_FILE, '\1' + zeros); }, false},
        {"nothing but a state", "", [&] { writeFile(SEGMENT_FILE, '\2' + zeros); }, false},
        {"cut short", "", [&] { create(1310720), truncate(SEGMENT_FILE, 65536); }, false},
        {"no room", "size=1m", [] {}, false},
        {"no memory for its pages", "size=1400k",
         [&] { create(1310720), writeFile("/dev/shm/other", std::string(300000, 'x')); }, false},
        {"just room", "size=1310720", [] {}, true},
        {"another size", "", [&] { create(65536); }, true},
    };
    for (const auto& [what, options, prepare, serves] : rows) {
        SCOPED_TRACE(what);
        ASSERT_EQ(0, mount("tmpfs", "/dev/shm", "tmpfs", 0, options));
        prepare();
        const auto begin = std::chrono::steady_clock::now();
        std::unique_ptr<CSharedMemory> memory;
        EXPECT_EQ(serves ? "" : OPEN_FAILED,
                  printedBy([&] { memory = std::make_unique<CSharedMemory>(false); }));
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4));
        EXPECT_EQ(serves, memory->setStringVector(24, {"a"}));
        EXPECT_EQ(serves, CSharedMemory::writeByteVector("CHF_MODE_MEM", {1}));
        EXPECT_EQ(serves, !memory->getStringVector(24).empty());
    }
    EXPECT_EQ(65536U, std::filesystem::file_size(SEGMENT_FILE)) << "used as it is";
    ASSERT_EQ(0, mount("ramfs", "/dev/shm", "ramfs", 0, ""));
    EXPECT_EQ("", printedBy([] { CSharedMemory(false); })) << "it has no fallocate()";
}

}  // namespace
