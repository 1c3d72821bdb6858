#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <sstream>

#include "support/child_process.h"
#include "support/files.h"
#include "support/peer.h"

namespace {

using support::Bytes;
using support::CChildProcess;
using support::CPeerMemory;
using support::Doubles;
using Words = support::Texts;

constexpr char kFile[] = "/dev/shm/CONF_AUTO_SAVE_MEM";

Words shmconf(Words words) {
    words.insert(words.begin(), TEST_SHMCONF);
    return words;
}

struct sResult {
    explicit sResult(const Words& words) {
        testing::internal::CaptureStderr();
        CChildProcess tool(shmconf(words));
        while (const auto line = tool.readLine())
            out += *line + '\n';
        status = tool.wait();
        err = testing::internal::GetCapturedStderr();
    }
    std::optional<int> status;
    std::string out;
    std::string err;
};

struct sRefusal {
    const char* line;
    int status;
    const char* message;
};
constexpr sRefusal kRefusals[] = {
    {"set 0 1", 3, "there is no segment CONF_AUTO_SAVE_MEM"},
    {"get VOLTAGE_DATA_MEN", 2, "closest are:\n  0\tVOLTAGE_DATA_MEM"},
    {"get dev_typ", 2, "closest are:\n  48\tCNF_DEV_TYP_MEM"},
    {"watch 23", 2, "closest are:\n  22\tWLAN_AUTOCONN_MEM\n  24\t"},
    {"get wlan_", 2, "more than one object:\n  22\tWLAN_AUTOCONN_MEM"},
    {"set 0 1 1e999", 2, "the value \"1e999\" is not a number"},
    {"set 21 1 256", 2, "the value \"256\" is not a whole number from 0 to 255"},
    {"set 0 --creat 1", 2, "no option --creat"},
};

TEST(Shmconf, RefusalsSayWhyAndCreateAndChangeNothing) {
    for (const bool withSegment : {false, true}) {
        if (withSegment) CPeerMemory().setDoubleVector(0, {24.0});
        for (const auto& [line, status, message] : kRefusals) {
            if (withSegment && status == 3) continue;
            std::istringstream words(line);
            const sResult result({std::istream_iterator<std::string>(words), {}});
            EXPECT_EQ(status, result.status) << line;
            EXPECT_EQ("", result.out);
            EXPECT_NE(std::string::npos, result.err.find(message)) << line << result.err;
        }
        EXPECT_EQ(withSegment, std::filesystem::exists(kFile));
    }
    EXPECT_EQ(Doubles{24.0}, CPeerMemory().getDoubleVector(0));
}

TEST(Shmconf, WritesWhatThePeersRead) {
    EXPECT_EQ(0, sResult({"set", "--create", "VOLT", "24", "-5.5", "-.5"}).status);
    CPeerMemory peer;
    EXPECT_EQ((Doubles{24.0, -5.5, -0.5}), peer.getDoubleVector(0));
    EXPECT_EQ(0, sResult({"set", "21", "0", "255"}).status);
    EXPECT_EQ((Bytes{0, 255}), peer.getByteVector(21));
    EXPECT_EQ(
        0, sResult({"set", "wlan_ssid", "--", "[a,b]", "", "--create", "-x", "list", "--"}).status);
    EXPECT_EQ((Words{"[a,b]", "", "--create", "-x", "list", "--"}), peer.getStringVector(24));
}

TEST(Shmconf, ShowsAnyContents) {
    CPeerMemory peer;
    peer.setStringVector(48, {"a\x1b[31m\n\xff\"\\", "Büro\xc2\x9b"});
    EXPECT_EQ(
        "ID  NAME             TYPE  COUNT  VALUES\n"
        R"(48  CNF_DEV_TYP_MEM  text      2  "a\x1b[31m\x0a\xff\"\\" "Büro\xc2\x9b")"
        "\n",
        sResult({"list"}).out);
    const std::string json = sResult({"get", "--json", "48"}).out;
    EXPECT_NE(std::string::npos, json.find("a\\u001b[31m\\n\xef\xbf\xbd")) << json;
    peer.mpSharedMemory->construct<int>("FUSE_DATA_MEM")(1);
    peer.setDoubleVector(0, {});
    const sResult states({"get", "fuse", "0", "ramp"});
    EXPECT_EQ(1, states.status);
    EXPECT_EQ(
        "ID  NAME              TYPE    COUNT  VALUES\n"
        " 4  FUSE_DATA_MEM     double      -  (is no vector of type double)\n"
        " 0  VOLTAGE_DATA_MEM  double      0  (empty)\n"
        " 5  RAMP_DATA_MEM     double      -  (absent)\n",
        states.out);
    EXPECT_EQ(1, sResult({"set", "fuse", "1"}).status);
}

TEST(Shmconf, LeavesAHalfCreatedSegmentAlone) {
    support::writeFile(kFile, "");
    const sResult result({"list", "--json"});
    EXPECT_EQ(3, result.status);
    EXPECT_EQ("", result.out) << "only what a script can parse";
    EXPECT_NE(std::string::npos, result.err.find("never finished")) << result.err;
}

TEST(Shmconf, WatchPrintsEachChangeUntilItsCountOrTheEndOfTheSegment) {
    CPeerMemory peer;
    peer.setByteVector(21, {7});
    CChildProcess all(shmconf({"watch", "--count", "2", "--interval", "1"}));
    CChildProcess one(shmconf({"watch", "ramp"}));
    EXPECT_EQ("watching 39 objects", all.readLine());
    EXPECT_EQ("watching 1 object", one.readLine());
    peer.setByteVector(21, {8});
    EXPECT_NE(std::string::npos, all.readLine().value().find("  21 KEY_FALL_TIME: 7 -> 8"));
    peer.setByteVector(21, {9});
    EXPECT_NE(std::string::npos, all.readLine().value().find("  21 KEY_FALL_TIME: 8 -> 9"));
    EXPECT_EQ(0, all.wait());
    std::filesystem::remove(kFile);
    EXPECT_EQ(3, one.wait());
}

}  // namespace
