#include "shared_memory/shared_memory.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <future>

#include "shared_memory/peer.h"
#include "support/files.h"

namespace {

using core_utils::CSharedMemory;
using core_utils::SegmentString;
using core_utils::SegmentVector;
using support::CPeer;
using support::CPeerMemory;
using support::printedBy;
using Doubles = std::vector<double>;
using Bytes = std::vector<unsigned char>;
using Texts = std::vector<std::string>;

constexpr char kFile[] = "/dev/shm/CONF_AUTO_SAVE_MEM";
constexpr char kOpenFailed[] =
    "exception encountered opening shared memory [CONF_AUTO_SAVE_MEM] \n";
const Texts kTexts = {"short", "", std::string(3000, 'l')};

TEST(SharedMemory, TwoProcessesExchangeVectorsOfAllThreeTypes) {
    umask(077);
    CSharedMemory memory(false);
    struct stat status {};
    ASSERT_EQ(0, stat(kFile, &status));
    EXPECT_EQ(1310720, status.st_size);
    EXPECT_EQ(0644U, status.st_mode & 0777U) << "whatever the umask of the first process";

    CPeer writer([](CPeerMemory& peer) {
        return peer.setDoubleVector(0, {1.5, -2.0}) && peer.setByteVector(21, {0, 255}) &&
               peer.setStringVector(24, kTexts) && peer.createIntVal(7) && peer.createStrVal("s");
    });
    EXPECT_EQ(0, writer.run());
    EXPECT_EQ((Doubles{1.5, -2.0}), memory.getDoubleVector(0));
    EXPECT_EQ((Bytes{0, 255}), memory.getByteVector(21));
    EXPECT_EQ(kTexts, memory.getStringVector(24));
    unsigned int number = 0;
    std::string text;
    EXPECT_TRUE(CSharedMemory::readIntVal(number) && CSharedMemory::readStrVal(text));
    EXPECT_EQ("7s", std::to_string(number) + text);
    EXPECT_FALSE(CSharedMemory::createIntVal(8) || CSharedMemory::createStrVal("t"));

    memory.setStringVector(24, {std::string(100, 'n')});
    CPeer reader([](CPeerMemory& peer) {
        Bytes values;
        return peer.getStringVector(24) == Texts{std::string(100, 'n')} &&
               CSharedMemory::readByteVector("KEY_FALL_TIME", values) && values == Bytes{0, 255};
    });
    EXPECT_EQ(0, reader.run());
    EXPECT_EQ((Doubles{1.5, -2.0}), CSharedMemory(false).getDoubleVector(0)) << "as a restart";
    EXPECT_TRUE(CSharedMemory(true).getDoubleVector(0).empty()) << "the old segment is discarded";
}

TEST(SharedMemory, WritingLeavesExactlyTheInputAndReadingNeverCreates) {
    CPeerMemory memory;
    Doubles out = {9.0};
    EXPECT_FALSE(CSharedMemory::readDoubleVector("VOLTAGE_DATA_MEM", out));
    EXPECT_EQ(0U, memory.mpSharedMemory->get_num_named_objects());
    for (const Doubles& values : {Doubles{1, 2, 3, 4, 5}, Doubles{6, 7, 8}, Doubles(4000, 2.5)}) {
        EXPECT_TRUE(memory.setDoubleVector(0, values));
        EXPECT_EQ(values, memory.getDoubleVector(0));
    }
    EXPECT_TRUE(memory.setDoubleVector(0, {}));
    EXPECT_TRUE(CSharedMemory::readDoubleVector("VOLTAGE_DATA_MEM", out));
    EXPECT_EQ(Doubles{9.0}, out) << "an object without elements leaves the output";

    for (const int id : {-1, 6, 23, 26, 31, 42, 43, 44, 45, 46, 47, 49}) {
        EXPECT_FALSE(memory.setDoubleVector(id, {1.0})) << id;
        EXPECT_TRUE(memory.getDoubleVector(id).empty()) << id;
    }
    EXPECT_EQ(1U, memory.mpSharedMemory->get_num_named_objects());
}

TEST(SharedMemory, FullSegmentFailsTheWriteAndNothingElse) {
    CSharedMemory memory(false);
    memory.setByteVector(7, {1});
    EXPECT_TRUE(memory.setDoubleVector(0, Doubles(100000)));
    const std::string full = R"(failed with exception "boost::interprocess::bad_alloc")";
    const Texts longTexts(100, std::string(20000, 'x'));
    EXPECT_EQ(full, printedBy([&] { memory.setDoubleVector(1, Doubles(100000)); }));
    EXPECT_EQ(full, printedBy([&] { memory.setStringVector(24, longTexts); }));
    EXPECT_EQ("exception catch \n", printedBy([&] {
                  EXPECT_FALSE(memory.setDoubleVector(1, Doubles(300000))) << "beyond any segment";
              }));
    EXPECT_EQ(Bytes{1}, memory.getByteVector(7));
    EXPECT_TRUE(memory.setStringVector(24, {"fits"}) && memory.setDoubleVector(0, {1.0}));
}

// A faulty or foreign program may leave anything under one of the names. The words are those of a
// vector: its allocator, where the elements are, their number, the room for them.
TEST(SharedMemory, ForeignObjectsAreNotReadNotWrittenAndEndNothing) {
    constexpr std::size_t X = 0x5A5A5A5A;
    const std::pair<const char*, std::vector<std::size_t>> cases[] = {
        {"one word", {0}},
        {"five words", {0, 0, 0, 0, 0}},
        {"rubbish", {X, X, X, X}},
        {"elements outside", {1, 0x7FFFFFFF, 2, 2}},
        {"more elements than room", {1, 64, 1000, 2}},
        {"all zero", {0, 0, 0, 0}},
    };
    for (const auto& [description, words] : cases) {
        SCOPED_TRACE(description);
        CSharedMemory(true);
        CPeerMemory memory;
        for (const char* name : {"VOLTAGE_DATA_MEM", "CHF_MODE_MEM", "WLAN_SSID_MEM"}) {
            auto* raw = memory.mpSharedMemory->construct<std::size_t>(name)[words.size()]();
            std::copy(words.begin(), words.end(), raw);
        }
        const std::string printed = printedBy([&] {
            EXPECT_TRUE(memory.getDoubleVector(0).empty());
            EXPECT_TRUE(memory.getByteVector(7).empty());
            EXPECT_TRUE(memory.getStringVector(24).empty());
            EXPECT_FALSE(memory.setDoubleVector(0, {1.0}));
            EXPECT_FALSE(memory.setByteVector(7, {1}));
            EXPECT_FALSE(memory.setStringVector(24, {"a"}));
        });
        EXPECT_EQ("BOOST VCTR DBL IS EMPTY \nBOOST VCTR BYTE IS EMPTY \nBOOST VCTR STR IS EMPTY \n",
                  printed);
    }
}

TEST(SharedMemory, TextsThatPointOutsideAreNotRead) {
    CPeerMemory memory;
    memory.setStringVector(24, kTexts);
    const auto found = memory.mpSharedMemory->find<SegmentVector<SegmentString>>("WLAN_SSID_MEM");
    std::memset(static_cast<void*>(&found.first->at(2)), 0x5A, sizeof(SegmentString));
    EXPECT_TRUE(memory.getStringVector(24).empty());
    printedBy([&] { EXPECT_FALSE(memory.setStringVector(24, {"a"})); });
}

TEST(SharedMemory, UnfinishedSegmentFailsToOpenInBoundedTimeAndTheInstanceOnlyFails) {
    const std::pair<const char*, std::string> cases[] = {
        {"no size", ""},
        {"zeros", std::string(1310720, '\0')},
        {"begun", '\1' + std::string(1310719, '\0')},
        {"given up", "\3"},
    };
    for (const auto& [description, bytes] : cases) {
        SCOPED_TRACE(description);
        support::writeFile(kFile, bytes);
        const auto begin = std::chrono::steady_clock::now();
        std::unique_ptr<CSharedMemory> memory;
        EXPECT_EQ(kOpenFailed, printedBy([&] { memory = std::make_unique<CSharedMemory>(false); }));
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4));
        Bytes out;
        EXPECT_TRUE(memory->getDoubleVector(0).empty());
        EXPECT_FALSE(memory->setStringVector(24, {"a"}));
        EXPECT_FALSE(CSharedMemory::readByteVector("CHF_MODE_MEM", out));
        EXPECT_FALSE(CSharedMemory::writeByteVector("CHF_MODE_MEM", {1}));
        EXPECT_FALSE(CSharedMemory::createIntVal(1));
    }
}

TEST(SharedMemory, SegmentCutShortIsRefusedAndASmallerOneIsUsedAsItIs) {
    CPeer creator([](CPeerMemory&) { return truncate(kFile, 65536) == 0; });
    EXPECT_EQ(0, creator.run());
    EXPECT_EQ(kOpenFailed, printedBy([] { CSharedMemory memory(false); }));

    std::filesystem::remove(kFile);
    { core_utils::Segment small(boost::interprocess::create_only, "CONF_AUTO_SAVE_MEM", 65536); }
    CSharedMemory memory(false);
    EXPECT_TRUE(memory.setDoubleVector(0, {1.0}));
    EXPECT_EQ(65536U, std::filesystem::file_size(kFile));
}

TEST(SharedMemory, NoRoomForTheSegmentFailsToOpen) {
    ASSERT_TRUE(support::mountSmall("/dev/shm", "64k"));
    EXPECT_EQ(kOpenFailed, printedBy([] { CSharedMemory memory(false); }));
}

TEST(SharedMemory, PeerKilledWithTheMutexCostsATimeOutNotAHang) {
    CSharedMemory memory(false);
    CPeer peer([](CPeerMemory& other) {
        auto die = [] { raise(SIGKILL); };
        other.mpSharedMemory->atomic_func(die);
        return false;
    });
    EXPECT_EQ(-SIGKILL, peer.run());
    auto reading = std::async(std::launch::async, [] {
        Doubles out;
        return CSharedMemory::readDoubleVector("VOLTAGE_DATA_MEM", out);
    });
    EXPECT_FALSE(memory.setByteVector(7, {1}));
    EXPECT_FALSE(reading.get());
}

}  // namespace
