#include "shared_memory/peer_segment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <future>
#include <regex>
#include <set>
#include <thread>

#include "peer/preset.h"
#include "shared_memory/peer_segment_c.h"
#include "support/files.h"
#include "support/peer.h"

namespace {

using namespace support;
using namespace std::chrono_literals;
using core_utils::CPeerSegment;
using eOutcome = CPeerSegment::eOutcome;
using hxl_config_handler::sPresetBlock;

TEST(PeerSegment, OnlyOpeningAndWritingCreateAndEveryRefusalSaysWhy) {
    CPeerSegment segment;
    EXPECT_EQ("not attached to CONF_AUTO_SAVE_MEM: no attach() or open()",
              segment.write(0, Doubles{1.0}).reason);
    EXPECT_EQ("there is no segment CONF_AUTO_SAVE_MEM", segment.attach().reason);
    EXPECT_FALSE(std::filesystem::exists(SEGMENT_FILE));
    ASSERT_TRUE(segment.open() && segment.attach() && segment.check());

    Doubles values = {9.0};
    Texts texts;
    EXPECT_EQ(eOutcome::NO_OBJECT, segment.read(0, values).outcome);
    EXPECT_EQ(eOutcome::UNKNOWN_OBJECT, segment.write("VOLTAGE", values).outcome);
    EXPECT_EQ(eOutcome::UNKNOWN_OBJECT, segment.remove(23).outcome);
    EXPECT_EQ("CHF_MODE_MEM has elements of type byte", segment.write(7, values).reason);
    EXPECT_EQ(eOutcome::TYPE_MISMATCH, segment.read("VOLTAGE_DATA_MEM", texts).outcome);
    EXPECT_EQ(Doubles{9.0}, values) << "a failure leaves the values";
    CPeerMemory memory;
    EXPECT_EQ(0U, memory.mpSharedMemory->get_num_named_objects());

    memory.mpSharedMemory->construct<int>("WLAN_SSID_MEM")(1);
    EXPECT_EQ("WLAN_SSID_MEM is no vector of type text", segment.read(24, texts).reason);
    EXPECT_EQ(eOutcome::NO_VECTOR, segment.write(24, texts).outcome);
    EXPECT_TRUE(segment.remove(24) && segment.write(24, Texts{"b"})) << "removed as it is";

    EXPECT_EQ(eOutcome::FULL, segment.write(0, Doubles(300000)).outcome);
    EXPECT_EQ(eOutcome::FULL, segment.write(25, Texts(100, std::string(20000, 'x'))).outcome);
    std::filesystem::remove(SEGMENT_FILE);
    EXPECT_EQ(eOutcome::REPLACED, segment.check().outcome);
    writeFile(SEGMENT_FILE, "x");
    EXPECT_EQ(eOutcome::UNUSABLE, CPeerSegment().attach().outcome);
    EXPECT_EQ(eOutcome::REPLACED, segment.read(0, values).outcome) << "of what it is attached to";
}

TEST(PeerSegment, SaysThatTheSegmentWasRemovedOrAttachesToTheNextOne) {
    CPeerSegment reader, follower, opener;
    ASSERT_TRUE(opener.open(CPeerSegment::eWhenReplaced::ATTACH_AGAIN));
    ASSERT_TRUE(reader.attach());
    ASSERT_TRUE(follower.attach(CPeerSegment::eWhenReplaced::ATTACH_AGAIN));
    Doubles values;
    const auto readUntil = [&](const CPeerSegment& segment, eOutcome outcome) {
        return waitUntil([&] { return segment.read(0, values).outcome == outcome; });
    };
    std::filesystem::remove(SEGMENT_FILE);
    EXPECT_TRUE(readUntil(reader, eOutcome::REPLACED));
    EXPECT_TRUE(readUntil(follower, eOutcome::NO_SEGMENT));
    EXPECT_EQ("CONF_AUTO_SAVE_MEM was removed", reader.write(0, Doubles{1.0}).reason);
    EXPECT_FALSE(std::filesystem::exists(SEGMENT_FILE));

    std::this_thread::sleep_for(CPeerSegment::NAME_CHECK_INTERVAL);
    EXPECT_TRUE(opener.write(0, Doubles{2.0})) << "creates one";
    EXPECT_TRUE(readUntil(follower, eOutcome::DONE));
    EXPECT_EQ(Doubles{2.0}, values);
    EXPECT_EQ(eOutcome::REPLACED, reader.set<double>(0, 0, 1).outcome);
    EXPECT_TRUE(reader.attach() && reader.set<double>(0, 0, 1));
}

TEST(PeerSegment, RemovingGivesTheMemoryBack) {
    CPeerSegment segment;
    ASSERT_TRUE(segment.open());
    CPeerMemory memory;
    const std::size_t free = memory.mpSharedMemory->get_free_memory();
    ASSERT_TRUE(segment.write(24, Texts{"short", std::string(3000, 'l')}) &&
                segment.write(0, Doubles(1000)) && segment.write(7, Bytes(1000)));
    EXPECT_TRUE(segment.remove(24) && segment.remove(0) && segment.remove("CHF_MODE_MEM"));
    EXPECT_EQ(free, memory.mpSharedMemory->get_free_memory());
    EXPECT_TRUE(memory.mpSharedMemory->check_sanity());
    EXPECT_EQ(eOutcome::NO_OBJECT, segment.remove(0).outcome);
}

TEST(PeerSegment, AnUpdateThatThrowsOrChangesNothingWritesNothing) {
    CPeerSegment segment;
    ASSERT_TRUE(segment.open());
    CPeerMemory memory;
    EXPECT_TRUE(segment.update<double>(0, [&](Doubles& values) {
        EXPECT_TRUE(values.empty());
        EXPECT_TRUE(isLocked(memory.mpSharedMemory->lock()));
    }));
    EXPECT_EQ(eOutcome::NO_ELEMENT, segment.set<double>(0, 0, 5).outcome);
    EXPECT_EQ(0U, memory.mpSharedMemory->get_num_named_objects()) << "nothing is created";

    ASSERT_TRUE(segment.write(0, Doubles{NAN, 1.5}) && segment.set<double>(0, 1, 5));
    EXPECT_EQ("VOLTAGE_DATA_MEM has no element at index 2: it holds 2",
              segment.set<double>("VOLTAGE_DATA_MEM", 2, 7).reason);
    const auto spoil = [](Doubles& values) {
        values = {9.0};
        throw std::length_error("of the caller");
    };
    EXPECT_THROW(segment.update<double>(0, spoil), std::length_error);
    EXPECT_EQ(5.0, memory.getDoubleVector(0).at(1));

    segment.write(24, Texts{"a", "b"});
    EXPECT_TRUE(segment.set<std::string>(24, 1, "c"));
    EXPECT_EQ((Texts{"a", "c"}), memory.getStringVector(24));
    memory.mpSharedMemory->construct<int>("FUSE_DATA_MEM")(1);
    EXPECT_EQ(eOutcome::NO_VECTOR, segment.set<double>(4, 0, 1).outcome);
}

TEST(PeerSegment, WaitsForAChangeAndNoLongerThanToldTo) {
    CPeerSegment segment;
    ASSERT_TRUE(segment.open());
    Doubles values;
    EXPECT_EQ("VOLTAGE_DATA_MEM did not change within 5 ms",
              segment.waitForChange(0, values, 1ms, 5ms).reason);
    auto waiting = std::async(std::launch::async, [&] {
        return segment.waitForChange("VOLTAGE_DATA_MEM", values, 1ms, 20s).outcome;
    });
    std::this_thread::sleep_for(5ms);
    EXPECT_TRUE(segment.write(0, Doubles{NAN, 1.5}));
    EXPECT_EQ(eOutcome::DONE, waiting.get());
    EXPECT_EQ(1.5, values.at(1));
    EXPECT_EQ(eOutcome::TIME_OUT, segment.waitForChange(0, values, 1ms, 0ms).outcome)
        << "not a number is no change against itself";
}

template <typename T, typename Write, typename Read, typename Set, typename Update, typename Wait>
void exchange(const char* name, Write write, Read read, Set set, Update update, Wait wait) {
    peer_segment* segment = nullptr;
    ASSERT_EQ(PEER_SEGMENT_DONE, peer_segment_open(&segment, PEER_SEGMENT_CREATE));
    T values[3] = {1, 2, 3};
    std::size_t count = 1;
    EXPECT_EQ(PEER_SEGMENT_DONE, write(segment, name, values, 2));
    EXPECT_EQ(PEER_SEGMENT_TOO_SMALL, read(segment, name, values, &count));
    EXPECT_STREQ("the array has room for 1 of 2", peer_segment_error());
    EXPECT_EQ(2U, count);
    const auto twice = [](T* all, std::size_t size, void* outcome) {
        std::transform(all, all + size, all, [](T value) { return static_cast<T>(2 * value); });
        return *static_cast<int*>(outcome);
    };
    for (int outcome : {0, 1})
        update(segment, name, twice, &outcome);
    set(segment, name, 1, 7);
    EXPECT_EQ(PEER_SEGMENT_DONE, wait(segment, name, values, &count, 3, 1, 5));
    EXPECT_EQ((std::vector<T>{2, 7, 3}), std::vector<T>(values, values + 3));
    EXPECT_EQ(PEER_SEGMENT_TIME_OUT, wait(segment, name, values, &count, 3, 1, 5));
    peer_segment_close(segment);
}

TEST(PeerSegment, TheInterfaceForCSaysWhatIsMissingAndLetsNothingThrough) {
    peer_segment* segment = nullptr;
    peer_segment_close(segment);
    EXPECT_EQ(PEER_SEGMENT_NO_SEGMENT, peer_segment_open(&segment, 0));
    EXPECT_STREQ("there is no segment CONF_AUTO_SAVE_MEM", peer_segment_error());
    exchange<double>("VOLTAGE_DATA_MEM", peer_segment_write_doubles, peer_segment_read_doubles,
                     peer_segment_set_double, peer_segment_update_doubles,
                     peer_segment_wait_doubles);
    exchange<unsigned char>("CHF_MODE_MEM", peer_segment_write_bytes, peer_segment_read_bytes,
                            peer_segment_set_byte, peer_segment_update_bytes,
                            peer_segment_wait_bytes);
    ASSERT_EQ(PEER_SEGMENT_DONE, peer_segment_open(&segment, 0));
    char text[4] = "?";
    std::size_t size = sizeof(text);
    const char* const texts[] = {"a", "b"};
    peer_segment_write_texts(segment, "WLAN_SSID_MEM", texts, 2);
    peer_segment_set_text(segment, "WLAN_SSID_MEM", 1, "abc");
    EXPECT_EQ(0, peer_segment_read_text(segment, "WLAN_SSID_MEM", 1, text, &size));
    EXPECT_STREQ("abc", text);
    EXPECT_EQ(PEER_SEGMENT_NO_ELEMENT,
              peer_segment_read_text(segment, "WLAN_SSID_MEM", 2, text, &size));
    peer_segment_close(segment);
}

TEST(Preset, IsReadAndChangedByNameWhereTheDaemonKeepsIt) {
    CPeerSegment segment;
    ASSERT_TRUE(segment.open());
    sPresetBlock block{};
    EXPECT_EQ(eOutcome::NO_OBJECT, core_utils::readPreset(segment, 3, block).outcome);
    block.fCurrentSet[1] = 1.5F;
    block.ucChnConnMode[0] = 2;
    EXPECT_TRUE(core_utils::writePreset(segment, 3, block));
    const auto set = [&](int number, const char* key, int channel, double value) {
        return core_utils::setPreset(segment, number, key, channel, value).reason;
    };
    EXPECT_EQ("", set(3, "VoltageSet", 1, 5.5) + set(3, "FuseState", 2, 255));
    CPeerMemory memory;
    EXPECT_EQ((Doubles{5.5, 0, 0, 1.5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
              memory.getDoubleVector(36));
    EXPECT_EQ((Bytes{0, 255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0}),
              memory.getByteVector(37));
    EXPECT_TRUE(core_utils::readPreset(segment, 3, block));
    EXPECT_EQ(1.5F, block.fCurrentSet[1]);
    EXPECT_EQ(255, block.ucFuseState[1]);
    memory.setDoubleVector(36, {2.5});
    EXPECT_TRUE(core_utils::readPreset(segment, 3, block));
    EXPECT_EQ(2.5F, block.fVoltageSet[0]);
    EXPECT_EQ(0.0F, block.fCurrentSet[1]) << "as no element";

    EXPECT_EQ("there is no preset memory 6", core_utils::readPreset(segment, 6, block).reason);
    EXPECT_EQ(eOutcome::UNKNOWN_OBJECT, core_utils::writePreset(segment, 0, block).outcome);
    EXPECT_EQ("there is no preset memory 6", set(6, "VoltageSet", 1, 1));
    EXPECT_EQ("a preset has no setting \"Voltage\"", set(3, "Voltage", 1, 1));
    for (const int channel : {0, 3})
        EXPECT_EQ("a preset has no channel " + std::to_string(channel),
                  set(3, "VoltageSet", channel, 1));
    for (const double state : {-1.0, 0.5, 256.0})
        EXPECT_EQ("FuseState is a whole number from 0 to 255", set(3, "FuseState", 1, state));
}

// Whoever shares the segment without our header reads the page.
TEST(SharedMemoryPage, ListsEveryObjectOfTheDirectoryWithItsElements) {
    std::set<std::string> expected, listed;
    for (const auto& object : core_utils::OBJECT_DIRECTORY)
        expected.insert("| " + std::to_string(object.id) + " | " + object.name + " | " +
                        core_utils::nameOf(object.element) + " |");
    const std::string page = readFile(TEST_SHARED_MEMORY_PAGE);
    const std::regex row(R"(\| \d+ \| \w+ \| \w+ \|)");
    for (std::sregex_iterator i(page.begin(), page.end(), row), end; i != end; ++i)
        listed.insert(i->str());
    EXPECT_EQ(expected, listed);
}

}  // namespace
