#include "logging/logger.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <regex>

#include "ini_file/file_config.h"
#include "logging/log_sink_file.h"
#include "support/allocations.h"
#include "support/files.h"

namespace {

using namespace std::string_literals;
using core_logger::CLogEvent;
using core_logger::CLogger;
using core_logger::CLogSinkFile;
using support::printedBy;
using support::readFile;

const std::string DIRECTORY = "/dev/shm/log/deep";
const std::string HEADER = "\n9/9/9 9:9:9 : Log Created ";

std::string local(const char* format, int daysAgo = 0) {
    const time_t when = time(nullptr) - time_t{86400} * daysAgo;
    char text[32];
    return {text, std::strftime(text, sizeof text, format, std::localtime(&when))};
}

const std::string PATH = DIRECTORY + local("/MaintLogger_%Y%m%d.log");

// With a 9 for each number.
std::string masked(const std::string& text) {
    return std::regex_replace(text, std::regex("0x[0-9A-F]+|[0-9]+"), "9");
}

std::shared_ptr<CLogEvent> makeEvent(unsigned int level = 1, const std::string& text = "message") {
    return std::make_shared<CLogEvent>(42, level, std::string(40, 'M').c_str(), text.c_str());
}

class LogSinkFile : public testing::Test {
  protected:
    CLogger& mLogger = *CLogger::getInstance();
    CLogSinkFile mSink{mLogger, nullptr};
};
using Logger = LogSinkFile;

// Nobody stops this logger: its worker still runs when the program ends.
TEST_F(Logger, WritesADatedFileWithOneLineForEachLostLookup) {
    EXPECT_FALSE(mLogger.log(new CLogEvent(1, 4, "Module", "before the start")));
    ASSERT_TRUE(mLogger.start(DIRECTORY, 100000) && mLogger.addLogSink(CLogger::SINK_FILE));
    EXPECT_EQ(50U, mLogger.getParameter());
    support::writeFile(support::configPath("test.cfg"), "[Sec]\n");
    core_utils::CFileConfig file;
    ASSERT_TRUE(file.open(support::configPath("test.cfg"), "rb"));
    std::string expected = HEADER;
    const auto miss = [&](const std::string& type, const std::string& key, auto value) {
        const std::string lost = " FAILED to read [Sec]:[" + key + "]";
        EXPECT_EQ("[CFileConfig::read " + type + ']' + lost + '\n',
                  printedBy([&] { EXPECT_FALSE(file.read("Sec", key, value)); }));
        if (key.find("unlogged") == std::string::npos)
            expected += "\n[9/9/9 9:9:9.9] :[CFileConfig], [9], [ERR], [TID:9] read" + lost;
    };
    miss("str", "unlogged: off", "5"s);
    mLogger.setLevel(4);
    miss("int", "unlogged: int", 5);
    miss("str", "str", "5"s);
    miss("int", "float", 5.0F);
    miss("int", "double", 5.0);
    EXPECT_TRUE(support::waitUntil([&] { return masked(readFile(PATH)) == masked(expected); }));
}

TEST_F(LogSinkFile, LineShowsTheEventAndIsCut) {
    ASSERT_TRUE(mSink.initialise(DIRECTORY, 10000));
    std::string expected = readFile(PATH);
    unsigned int level = 0;
    for (const char* name : {"-", "DBG", "INF", "WRN", "ERR", "-"}) {
        const auto event = makeEvent(level++, std::string(300, 't'));
        EXPECT_EQ(std::string(255, 't'), event->getMessage());
        support::countAllocations();
        mSink.handleEvent(event);
        EXPECT_EQ(0, support::allocations()) << "a worker cannot catch a failed one";
        const std::string line = "\n["s + event->getTimestamp() + "] :[" + std::string(31, 'M') +
                                 "], [42], [" + name + "], " + event->getMessage();
        expected += line.substr(0, 256);
    }
    EXPECT_EQ(expected, readFile(PATH));
    setenv("TZ", "XYZ-5:30", 1);
    EXPECT_TRUE(support::waitUntil([] {
        const std::string stamp = makeEvent()->getTimestamp();
        return stamp.size() < 23 && stamp.substr(0, 20) == local("%d/%m/%Y %H:%M:%S.");
    })) << "local time, and below 100 milliseconds unpadded";
}

TEST_F(LogSinkFile, SwitchesTheLoggerOffWhenItsFileIsFull) {
    const struct {
        std::uint32_t maxSize;  // bytes; the header takes 35
        std::uint32_t level;    // after the header
        std::string left;
    } rows[] = {{35, 5, ""}, {36, 1, HEADER}};
    for (const auto& row : rows) {
        mLogger.setLevel(1);
        EXPECT_TRUE(mSink.initialise(DIRECTORY, row.maxSize));
        EXPECT_EQ(row.level, mLogger.getLevel());
        mSink.handleEvent(makeEvent());
        EXPECT_EQ(5U, mLogger.getLevel());
        mSink.handleEvent(makeEvent());
        EXPECT_EQ(row.left, masked(readFile(PATH)));
    }
}

TEST_F(LogSinkFile, ClosesAFileThatCannotBeWritten) {
    EXPECT_FALSE(mSink.initialise("", 10000));
    EXPECT_EQ("", printedBy([&] {
                  EXPECT_FALSE(mSink.initialise(std::string(257, 'd'), 10000)) << "not tried";
              }));
    EXPECT_FALSE(mSink.initialise("/dev/full", 10000)) << "not a directory";
    ASSERT_EQ(0, mkdir("/dev/shm/log", 0700) + mkdir(DIRECTORY.c_str(), 0700) +
                     symlink("/dev/full", PATH.c_str()));
    EXPECT_TRUE(mSink.initialise(DIRECTORY, 10000)) << "without its header";
    EXPECT_EQ("ERROR : CLogger  WRITE to file\n\nERROR : CLogger close file ",
              printedBy([&] { mSink.handleEvent(makeEvent()); }));
    EXPECT_TRUE(mSink.close()) << "it is closed";
    EXPECT_TRUE(mSink.initialise(DIRECTORY, 10000));
    EXPECT_FALSE(mSink.close());
}

TEST_F(LogSinkFile, HouseKeepingDeletesWhatIsOlderThanTheCutOffDate) {
    unsigned int deleted = 9, failed = 9;
    EXPECT_FALSE(mSink.houseKeep(30, deleted, failed)) << "no file is open";
    ASSERT_TRUE(mSink.initialise(DIRECTORY, 10000));
    const std::string kept[] = {local("/MaintLogger_%Y%m%d.log", 30), local("/%Y%m%d.log", 31),
                                "/MaintLogger_20000101_log"};
    for (const std::string& name : kept)
        support::writeFile(DIRECTORY + name, "");
    for (const std::string& name :
         {local("/MaintLogger_%Y%m%d.log", 31), local("/x%Y%m%d.log", 31), "/note.00000000.txt"s})
        support::writeFile(DIRECTORY + name, "");
    for (const char* name : {"/MaintLogger_20000101.log", "/MaintLogger_29990101.log"})
        ASSERT_EQ(0, mkdir((DIRECTORY + name).c_str(), 0700));
    EXPECT_TRUE(mSink.houseKeep(30, deleted, failed));
    EXPECT_EQ(3U, deleted);
    EXPECT_EQ(1U, failed) << "the old directory";
    for (const std::string& name : kept)
        EXPECT_EQ(0, access((DIRECTORY + name).c_str(), F_OK)) << name;
    EXPECT_FALSE(mSink.houseKeep(0x7FFFFFFF, deleted, failed)) << "before the clock began";
}

TEST_F(Logger, DeliversToItsLatestSinkOnly) {
    // Nobody else holds the event any more when it has been handled.
    const auto printedOfOneEvent = [&] {
        return printedBy([&] {
            const auto event = makeEvent();
            EXPECT_TRUE(mLogger.publish(event));
            EXPECT_TRUE(support::waitUntil([&] { return event.use_count() == 1; }));
        });
    };
    EXPECT_FALSE(mLogger.removeLogSink());
    EXPECT_FALSE(mLogger.addLogSink(CLogger::SINK_FILE)) << "before start() there is no directory";
    ASSERT_TRUE(mLogger.start(DIRECTORY, 10000) && mLogger.addLogSink(CLogger::SINK_SLOG));
    EXPECT_EQ("CLogSinkSlog:: Event not handled 2147483649\n", printedOfOneEvent());
    EXPECT_FALSE(mLogger.houseKeep(30)) << "there are no files";
    EXPECT_TRUE(mLogger.addLogSink(CLogger::SINK_STD));
    EXPECT_EQ("", printedOfOneEvent());
    EXPECT_TRUE(mLogger.addLogSink(CLogger::SINK_FILE));
    EXPECT_FALSE(mLogger.addLogSink(4)) << "an unknown kind changes nothing";
    EXPECT_EQ("", printedOfOneEvent());
    EXPECT_EQ(HEADER + "\n[9/9/9 9:9:9.9] :[" + std::string(31, 'M') + "], [9], [DBG], message",
              masked(readFile(PATH)));
    EXPECT_TRUE(mLogger.houseKeep(30));
    EXPECT_TRUE(mLogger.removeLogSink());
    EXPECT_FALSE(mLogger.publish(makeEvent()));
    EXPECT_FALSE(mLogger.houseKeep(30));
    EXPECT_FALSE(mLogger.stop());
}

}  // namespace
