#include "shared_memory/peer_segment.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <iterator>
#include <regex>
#include <thread>

#include "shared_memory/peer_segment_c.h"
#include "support/files.h"
#include "support/peer.h"
#include "support/wait_until.h"

namespace {

using namespace support;
using namespace std::chrono_literals;
using core_utils::CPeerSegment;
using eOutcome = CPeerSegment::eOutcome;

constexpr char SEGMENT_FILE[] = "/dev/shm/CONF_AUTO_SAVE_MEM";

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

    // Elements inside the segment that are no block of it: nothing may end over them.
    segment.write(0, Doubles{1.0});
    memory.mpSharedMemory->find<std::ptrdiff_t>("VOLTAGE_DATA_MEM").first[1] += 65536;
    EXPECT_EQ(eOutcome::DAMAGED, segment.remove(0).outcome);
    EXPECT_TRUE(segment.write(0, Doubles{2.0}));
}

// Two counters, and their sum as often as it says.
Doubles counted(double first, double second) {
    const double sum = first + second;
    Doubles values(2 + static_cast<std::size_t>(sum) % 300, sum);
    values[0] = first;
    values[1] = second;
    return values;
}

// A read that failed leaves them, or leaves none.
bool isWhole(const Doubles& values) {
    return values.empty() || values == counted(values.at(0), values.at(1));
}

// Each process owns one counter; what is missing at the end was lost. On a busy machine a holder
// may stand still for a second, and without a pause one process starves another.
TEST(PeerSegment, TwoProcessesThatChangeOneObjectLoseNoUpdateAndAThirdReadsItWhole) {
    constexpr char ROUNDS_VARIABLE[] = "UPDATE_ROUNDS";
    const char* wanted = std::getenv(ROUNDS_VARIABLE);
    const int rounds = wanted != nullptr ? std::atoi(wanted) : 5000;
    static constexpr auto PAUSE = 50us;
    CPeerMemory memory;
    ASSERT_TRUE(memory.setDoubleVector(0, counted(0, 0)));
    const auto countIn = [rounds](int counter) {
        return [rounds, counter](CPeerMemory&) {
            CPeerSegment segment;
            bool works = !!segment.attach();
            for (int round = 0; works && round < rounds; std::this_thread::sleep_for(PAUSE)) {
                const auto result = segment.update<double>(0, [&](Doubles& values) {
                    values = counted(values[0] + 1 - counter, values[1] + counter);
                });
                if (result) ++round;
                works = result || result.outcome == eOutcome::LOCKED;
            }
            return works;
        };
    };
    CPeer first(countIn(0));
    CPeer second(countIn(1));
    first.start();
    second.start();
    CPeerSegment segment;
    ASSERT_TRUE(segment.attach());
    for (int round = 0; round < rounds; ++round) {
        Doubles values = memory.getDoubleVector(0);
        ASSERT_TRUE(isWhole(values));
        const auto result = segment.read(0, values);
        ASSERT_TRUE(isWhole(values));
        ASSERT_TRUE(result || result.outcome == eOutcome::LOCKED) << result.reason;
        std::this_thread::sleep_for(PAUSE);
    }
    EXPECT_EQ(0, first.wait());
    EXPECT_EQ(0, second.wait());
    EXPECT_EQ(counted(rounds, rounds), memory.getDoubleVector(0));
}

TEST(PeerSegment, AnUpdateThatThrowsOrChangesNothingWritesNothing) {
    CPeerSegment segment;
    ASSERT_TRUE(segment.open());
    EXPECT_TRUE(segment.update<double>(0, [](Doubles& values) { EXPECT_TRUE(values.empty()); }));
    EXPECT_EQ(eOutcome::NO_ELEMENT, segment.set<double>(0, 0, 5).outcome);
    CPeerMemory memory;
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
    EXPECT_EQ(eOutcome::TYPE_MISMATCH, segment.set<unsigned char>(24, 1, 1).outcome);
    memory.mpSharedMemory->construct<int>("FUSE_DATA_MEM")(1);
    EXPECT_EQ(eOutcome::NO_VECTOR, segment.set<double>(4, 0, 1).outcome);
}

TEST(PeerSegment, WaitsForAnotherProcessAndNoLongerThanToldTo) {
    CPeer writer([](CPeerMemory& peer) {
        return peer.setDoubleVector(0, {NAN, 1.5}) && peer.setByteVector(21, {7});
    });
    CPeerSegment segment;
    ASSERT_TRUE(segment.open());
    Doubles values;
    EXPECT_EQ("VOLTAGE_DATA_MEM did not change within 5 ms",
              segment.waitForChange(0, values, 1ms, 5ms).reason);
    auto waiting = std::async(std::launch::async, [&] {
        Bytes bytes;
        return segment.waitForChange(21, bytes, 1ms, 20s) ? bytes : Bytes{};
    });
    ASSERT_EQ(0, writer.run());
    EXPECT_EQ(Bytes{7}, waiting.get());
    EXPECT_TRUE(segment.waitForChange("VOLTAGE_DATA_MEM", values, 1ms, 20s));
    EXPECT_EQ(1.5, values.at(1));
    EXPECT_EQ(eOutcome::TIME_OUT, segment.waitForChange(0, values, 1ms, 0ms).outcome)
        << "not a number is no change against itself";
}

TEST(PeerSegment, TheInterfaceForCSaysWhatIsMissingAndLetsNothingThrough) {
    peer_segment* segment = nullptr;
    peer_segment_close(segment);
    EXPECT_EQ(PEER_SEGMENT_NO_SEGMENT, peer_segment_open(&segment, 0));
    EXPECT_STREQ("there is no segment CONF_AUTO_SAVE_MEM", peer_segment_error());
    ASSERT_EQ(PEER_SEGMENT_DONE, peer_segment_open(&segment, PEER_SEGMENT_CREATE));
    const char* const name = "VOLTAGE_DATA_MEM";
    double values[3] = {1.0, 2.0, 3.0};
    std::size_t count = 1;
    EXPECT_EQ(PEER_SEGMENT_DONE, peer_segment_write_doubles(segment, name, values, 2));
    EXPECT_EQ(PEER_SEGMENT_TOO_SMALL, peer_segment_read_doubles(segment, name, values, &count));
    EXPECT_STREQ("the array has room for 1 of 2", peer_segment_error());
    EXPECT_EQ(2U, count);

    const auto twice = [](double* all, std::size_t size, void* outcome) {
        for (std::size_t i = 0; i < size; ++i)
            all[i] *= 2;
        return *static_cast<int*>(outcome);
    };
    for (int outcome : {0, 1})
        peer_segment_update_doubles(segment, name, twice, &outcome);
    peer_segment_set_double(segment, name, 1, 7.0);
    EXPECT_EQ(PEER_SEGMENT_DONE, peer_segment_wait_doubles(segment, name, values, &count, 3, 1, 5));
    EXPECT_EQ((Doubles{2.0, 7.0, 3.0}), Doubles(values, values + 3));
    EXPECT_EQ(PEER_SEGMENT_TIME_OUT,
              peer_segment_wait_doubles(segment, name, values, &count, 3, 1, 5));

    char text[4] = "?";
    std::size_t size = sizeof(text);
    const char* const texts[] = {"a", "abc"};
    peer_segment_write_texts(segment, "WLAN_SSID_MEM", texts, 2);
    EXPECT_EQ(0, peer_segment_read_text(segment, "WLAN_SSID_MEM", 1, text, &size));
    EXPECT_STREQ("abc", text);
    EXPECT_EQ(PEER_SEGMENT_NO_ELEMENT,
              peer_segment_read_text(segment, "WLAN_SSID_MEM", 2, text, &size));
    peer_segment_close(segment);
}

// Whoever shares the segment without our header reads the page.
TEST(SharedMemoryPage, ListsEveryObjectOfTheDirectoryWithItsElements) {
    const char* const elements[] = {"double", "byte", "text"};
    const std::string page = readFile(TEST_SHARED_MEMORY_PAGE);
    for (const auto& object : core_utils::OBJECT_DIRECTORY) {
        const std::string row = "\n| " + std::to_string(object.id) + " | " + object.name + " | " +
                                elements[static_cast<int>(object.element)] + " | ";
        EXPECT_NE(std::string::npos, page.find(row)) << row;
    }
    const std::regex row(R"(\n\| \d+ \| )");
    EXPECT_EQ(std::distance(std::sregex_iterator(page.begin(), page.end(), row), {}),
              std::distance(std::begin(core_utils::OBJECT_DIRECTORY),
                            std::end(core_utils::OBJECT_DIRECTORY)));
}

}  // namespace
