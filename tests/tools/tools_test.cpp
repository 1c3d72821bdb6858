#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <regex>

#include "confcheck/config_files.h"
#include "support/child_process.h"
#include "support/files.h"
#include "support/peer.h"

namespace {

using namespace std::string_literals;
using namespace support;

// What a shell command that may call the tools prints, on both outputs, then its status. Its folder
// is that of the configuration files.
std::string shell(const std::string& command) {
    std::string script = "exec 2>&1\ncd " + configPath("") + '\n';
    for (const char* tool : {TEST_SHMCONF, TEST_CONFCHECK}) {
        script += std::filesystem::path(tool).filename().string() + "() {";
        for (const std::string& word : targetCommand({tool}))
            script += ' ' + word;
        script += " \"$@\"; }\n";
    }
    writeFile("/dev/shm/script", script + command);
    std::string out;
    FILE* pipe = popen("bash /dev/shm/script", "r");
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        out += static_cast<char>(c);
    return out + "status " + std::to_string(WEXITSTATUS(pclose(pipe)));
}

TEST(Shmconf, RefusalsSayWhyAndCreateAndChangeNothing) {
    const struct {
        const char* line;
        int status;
        const char* message;
    } rows[] = {
        {"set 0 1", 3, "there is no segment CONF_AUTO_SAVE_MEM"},
        {"watch 23", 2, "closest are:\n  22\tWLAN_AUTOCONN_MEM\n  24\t"},
        {"get cnf_pm1", 2, "the beginning of more than one object:\n  32\tCNF_PM1_DBL_MEM\n  33\t"},
        {"preset 1 set curr 1 2", 2, "more than one setting: CurrentSet, CurrRange"},
        {"set --channel 1 21 7", 2, "KEY_FALL_TIME is not by channel; use --index"},
        {"set 0 1 -1e999", 2, "the value \"-1e999\" is too large for a double"},
        {"set 0 1 0x", 2, "the value \"0x\" is not a number"},
        {"set 21 +-1", 2, "the value \"+-1\" is not a whole number from 0 to 255"},
        {"set --channel 2 0 7", 1, "VOLTAGE_DATA_MEM has no element at index 1: it holds 1"},
        {"set --channel 3 0 7", 1, "VOLTAGE_DATA_MEM is by channel, and there is no channel 3\n"},
        {"set --index 0 0 7 8", 2, "one element takes one value"},
        {"preset 2 set volts 1 1", 2,
         "a preset has no setting \"volts\"; the closest is VoltageSet"},
        {"--json list", 2, "no option \"--json\" before a command"},
        {"help unsett", 2, "there is no command \"unsett\"; the closest command is unset"},
    };
    for (const auto& [line, status, message] : rows) {
        if (status != 3) CPeerMemory().setDoubleVector(0, {24.0});
        const std::string result = shell(std::string("shmconf ") + line);
        EXPECT_EQ(0U, result.find("shmconf: ")) << line << result;
        EXPECT_NE(std::string::npos, result.find(message)) << line << result;
        EXPECT_NE(std::string::npos, result.find("\nstatus " + std::to_string(status))) << line;
        EXPECT_EQ(status != 3, std::filesystem::exists(SEGMENT_FILE));
    }
    EXPECT_EQ(Doubles{24.0}, CPeerMemory().getDoubleVector(0));
}

TEST(Shmconf, WritesWhatThePeersReadAndRemovesIt) {
    shell("shmconf set --create VOLT +24 -5.5 -.5 1e-400");
    CPeerMemory peer;
    EXPECT_EQ((Doubles{24.0, -5.5, -0.5, 0.0}), peer.getDoubleVector(0));
    shell("shmconf set 21 0 +255");
    EXPECT_EQ((Bytes{0, 255}), peer.getByteVector(21));
    shell("shmconf set wlan_ssid -- '[a,b]' '' --create -x list --");
    EXPECT_EQ((Texts{"[a,b]", "", "--create", "-x", "list", "--"}), peer.getStringVector(24));
    EXPECT_EQ("[a,b]\n\n--create\n-x\nlist\n--\nstatus 0", shell("shmconf get --raw 24"));
    const std::string removed = shell("shmconf unset 0 1 wlan_ssid");
    EXPECT_NE(std::string::npos, removed.find("CURRENT_DATA_MEM did not exist")) << removed;
    EXPECT_EQ(1U, peer.mpSharedMemory->get_num_named_objects());
}

TEST(Shmconf, LoadGivesBackWhatDumpPrintedButForTheIdentity) {
    CPeerMemory peer;
    peer.setDoubleVector(0, {NAN, -INFINITY, -0.0, 1e-310, 0.1});
    peer.setByteVector(21, {0, 255});
    peer.setStringVector(24, {"\xff\n", std::string("\0B\xc3\xbc", 4), ""});
    peer.setStringVector(48, {"100_VOLTS_DEV_2CH"});
    EXPECT_EQ("wrote 4 objects\nstatus 0",
              shell("shmconf dump > /dev/shm/a; rm " + std::string(SEGMENT_FILE) +
                    "; shmconf load --create --identity /dev/shm/a; shmconf dump > /dev/shm/b; "
                    "cmp /dev/shm/a /dev/shm/b"));
    EXPECT_EQ(
        "shmconf: the identity was left as it is, not made \"100_VOLTS_DEV_2CH\"; --identity "
        "writes it\nwrote 3 objects\nstatus 0",
        shell("shmconf set cnf_dev KOL_35_VOLTS_DEV_2CH >/dev/null; shmconf load < /dev/shm/a"));
    EXPECT_EQ(Texts{"KOL_35_VOLTS_DEV_2CH"}, CPeerMemory().getStringVector(48));
}

TEST(Shmconf, LoadNamesAllThatIsWrongAndWritesNothing) {
    CPeerMemory peer;
    const struct {
        const char *name, *type, *values, *fault;
    } members[] = {
        {"VOLTAGE_DATA_MEM", "double", "[1]", ""},
        {"VOLTAGE_DATA_MEM", "double", "[2]", "  VOLTAGE_DATA_MEM is there twice\n"},
        {"VOLT", "double", "[1]", "  there is no object \"VOLT\"\n"},
        {"FUSE_DATA_MEM", "byte", "[1]", "  FUSE_DATA_MEM is of type double, not \"byte\"\n"},
        {"RAMP_DATA_MEM", "double", "[\"1\"]", "  RAMP_DATA_MEM has the wrong value \"1\"\n"},
        {"KEY_FALL_TIME", "byte", "[256]", "  KEY_FALL_TIME has the wrong value 256\n"},
        {"WLAN_SSID_MEM", "text", R"([{"hex":"0"}])",
         "  WLAN_SSID_MEM has the wrong value {\"hex\":\"0\"}\n"},
        {"WLAN_PASS_MEM", "text", "{}", "  WLAN_PASS_MEM has no array \"values\"\n"},
    };
    std::string file = "[5", faults = "  a member of the array has no name\n";
    for (const auto& [name, type, values, fault] : members) {
        file += std::string(R"(,{"state":"present","name":")") + name + R"(","type":")" + type +
                R"(","values":)" + values + '}';
        faults += fault;
    }
    writeFile("/dev/shm/a", file + ']');
    EXPECT_EQ("shmconf: nothing was written:\n" + faults + "status 2",
              shell("shmconf load /dev/shm/a"));
    EXPECT_EQ(0U, peer.mpSharedMemory->get_num_named_objects());
    EXPECT_EQ("shmconf: the input is no JSON\nstatus 2", shell("shmconf load < /dev/null"));
    EXPECT_EQ("shmconf: cannot read /none\nstatus 2", shell("shmconf load /none"));
}

// The page shows the rest.
TEST(Shmconf, PresetsByNameShowWhatAShortObjectLacks) {
    CPeerMemory peer;
    peer.setDoubleVector(34, {1.5, 2.5, 3.5});
    EXPECT_EQ("shmconf: CNF_PM2_SEL_MEM (absent)\nstatus 1", shell("shmconf preset 2"));
    peer.setByteVector(35, Bytes(18));
    EXPECT_EQ(
        "CurrentSet          A           3.5          -\n"
        "  \"preset\": 2,\n      \"unit\": \"A\",\n      \"values\": [\n        3.5\n6\nstatus 0",
        shell("shmconf preset 2 | grep ^Curre; shmconf preset 2 --json > /dev/shm/a;"
              "sed -n '2p; 14,16p' /dev/shm/a; grep -c unit /dev/shm/a"));
    const std::string beyond = shell("shmconf preset 2 set currents 2 7");
    EXPECT_NE(std::string::npos, beyond.find("no element at index 3: it holds 3")) << beyond;
    shell("shmconf preset 2 set chnconn 2 1; shmconf preset 2 set voltageset 1 -5");
    EXPECT_EQ((Doubles{-5.0, 2.5, 3.5}), peer.getDoubleVector(34));
    EXPECT_EQ(1, peer.getByteVector(35).at(17));
}

TEST(Shmconf, AChangeIsDoneAlsoWhenItsOutputGoesNowhere) {
    CPeerMemory peer;
    for (const std::string lost : {">&-", ">/dev/full", "0>&- >&-"}) {
        peer.setDoubleVector(0, {});
        EXPECT_EQ("shmconf: done, but the output could not be written\nstatus 0",
                  shell("shmconf set 0 7 " + lost));
        EXPECT_EQ(Doubles{7.0}, peer.getDoubleVector(0)) << lost;
        EXPECT_EQ("shmconf: the output cannot be written\nstatus 1",
                  shell("shmconf get 0 " + lost));
    }
    EXPECT_EQ("status 0", shell("set -o pipefail; shmconf set 0 8 2>/dev/null | true"));
    EXPECT_EQ("shmconf: the output cannot be written\nstatus 1", shell("shmconf watch >/dev/full"));
}

TEST(Shmconf, PrintsWhatItsPageShows) {
    CPeerMemory();
    const std::string page = readFile(TEST_SHMCONF_PAGE);
    const std::regex shown(R"(\$ (.*)\n((?:(?!\$ |```).*\n)*))");  // a command and its output
    int replayed = 0;
    for (std::sregex_iterator at(page.begin(), page.end(), shown), end; at != end; ++at) {
        const std::string command = at->str(1);
        if (command.find("watch") != std::string::npos) continue;
        EXPECT_EQ(0U, shell(command).find(at->str(2) + "status")) << at->str();
        ++replayed;
    }
    EXPECT_GT(replayed, 15);
}

TEST(Shmconf, CompletesItsCommandsOptionsAndObjects) {
    EXPECT_EQ(
        "set\n--help --json --raw\nWLAN_AUTOCONN_MEM WLAN_SSID_MEM WLAN_PASS_MEM\n\nset\nstatus 0",
        shell(
            ". " TEST_SHMCONF_COMPLETION "\n"
            "completed() { COMP_CWORD=$1 COMP_WORDS=(\"$@\"); COMP_WORDS[0]=shmconf COMPREPLY=(); "
            "_shmconf shmconf; echo \"${COMPREPLY[*]}\"; }\n"
            "completed 1 se; completed 3 get volt --; completed 2 get wlan; "
            "completed 3 set volt 1; completed 3 preset 1 se"));
}

TEST(Shmconf, ShowsAnyContents) {
    CPeerMemory peer;
    peer.setStringVector(48, {"a\x1b[31m\n\xff\"\\", "Büro\xc2\x9b"});
    EXPECT_EQ(
        "ID  NAME             TYPE  UNIT  COUNT  VALUES\n"
        R"(48  CNF_DEV_TYP_MEM  text            2  "a\x1b[31m\x0a\xff\"\\" "Büro\xc2\x9b")"
        "\nstatus 0",
        shell("shmconf list"));
    const std::string json = shell("shmconf get --json 48");
    EXPECT_NE(std::string::npos, json.find(R"("hex": "611b5b33316d0aff225c")")) << json;
    peer.mpSharedMemory->construct<int>("FUSE_DATA_MEM")(1);
    peer.setDoubleVector(0, {});
    EXPECT_EQ(
        "ID  NAME              TYPE    UNIT  COUNT  VALUES\n"
        " 4  FUSE_DATA_MEM     double            -  (is no vector of type double)\n"
        " 0  VOLTAGE_DATA_MEM  double  V         0  (empty)\n"
        " 5  RAMP_DATA_MEM     double            -  (absent)\n"
        "status 1",
        shell("shmconf get fuse 0 ramp"));
    EXPECT_EQ(
        "shmconf: FUSE_DATA_MEM was not written: FUSE_DATA_MEM is no vector of type double\n"
        "status 1",
        shell("shmconf set fuse 1"));
}

TEST(Shmconf, WatchPrintsEachChangeUntilItsCountOrTheEndOfTheSegment) {
    CPeerMemory peer;
    peer.setByteVector(21, {7});
    CChildProcess all({TEST_SHMCONF, "watch", "--count", "2", "--interval", "1"});
    CChildProcess one({TEST_SHMCONF, "watch", "ramp"});
    EXPECT_EQ(0U, all.readLine().value().find("watching "));
    EXPECT_EQ("watching 1 object", one.readLine());
    peer.setByteVector(21, {8});
    EXPECT_NE(std::string::npos, all.readLine().value().find("  21 KEY_FALL_TIME: 7 -> 8"));
    peer.setByteVector(21, {9});
    EXPECT_NE(std::string::npos, all.readLine().value().find("  21 KEY_FALL_TIME: 8 -> 9"));
    EXPECT_EQ(0, all.wait());
    std::filesystem::remove(SEGMENT_FILE);
    EXPECT_EQ(3, one.wait());
}

const std::string DELIVER = "cp -r " TEST_DEPLOY_DIR "/etc/quenvel/config/system/. .; ";

// The other files are as delivered.
TEST(Confcheck, FindsAllThatIsWrongInTheExamplesAndChangesNothing) {
    const struct {
        std::string folder;
        const char *options, *report;
    } examples[] = {
        {"/confcheck", "", "/report.txt"},
        {"/confcheck", "--json $PWD/correction_current.cfg", "/correction_current.json"},
        {"/confcheck", "--json $PWD/dev_var_system_config.cfg", "/dev_var_system_config.json"},
        {"/confcheck-fresh", "--quiet", "/report.txt"},
    };
    for (const auto& example : examples) {
        const std::string folder = TEST_EXAMPLES_DIR + example.folder;
        EXPECT_EQ(readFile(folder + example.report) + "status 1",
                  shell(DELIVER + "cp " + folder + "/* .; rm -rf /dev/shm/copy; " +
                        "cp -r . /dev/shm/copy; confcheck " + example.options +
                        "; status=$?; diff -r . /dev/shm/copy; exit $status"));
    }
}

TEST(Confcheck, FindsWhatHidesALineOrASection) {
    const std::string name = "./conf_auto_save.cfg:";
    const auto findingsIn = [](const std::string& content) {
        writeFile(configPath("conf_auto_save.cfg"), content);
        return shell("confcheck --quiet conf_auto_save.cfg");
    };
    EXPECT_EQ(name +
                  "1: there is no section [CONF_ITEM_STR], which a unit that does not know its "
                  "device type reads\n" +
                  name + "2: holds a NUL character: it counts as a blank\n" + name +
                  "2: the value ends at its first blank: \"0\" is ignored\nstatus 1",
              findingsIn("[CONF_STATUS]\nSTATE=1\0 0\n[CONF_ITEM_DBL]\n[CONF_ITEM_SEL]\n"s));
    EXPECT_EQ(name + "1: without a STATE that can be read, nothing of this file is loaded\n" +
                  name +
                  "2: is too long and is cut after 80 characters: what follows counts as a "
                  "header\nstatus 1",
              findingsIn("[CONF_STATUS]\n#" + std::string(79, '.') + "[\nSTATE=1\n"));
}

TEST(Confcheck, NeitherWaitsNorReadsWhatTheDaemonCannotOpen) {
    const std::string folder = configPath("");
    EXPECT_EQ("status 0", shell(DELIVER + "confcheck --quiet"));
    ASSERT_EQ(
        0, mount(folder.c_str(), folder.c_str(), nullptr, MS_BIND, nullptr) +
               mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr));
    const std::string reason =
        ":1: is on a read-only file system: the daemon, which opens it to write too, cannot load "
        "it\n";
    EXPECT_EQ("./conf_auto_save.cfg" + reason + "./conf_preset.cfg" + reason + "status 1",
              shell("confcheck --quiet ."));
    ASSERT_EQ(0, umount(folder.c_str()));
    EXPECT_EQ("confcheck: cannot read ./conf_preset.cfg: No such file or directory\nstatus 3",
              shell("rm conf_preset.cfg; confcheck --quiet ."));
    EXPECT_EQ(
        "./conf_preset.cfg:1: is a FIFO, no regular file: the daemon cannot open it\nstatus 1",
        shell("mkfifo conf_preset.cfg; confcheck --quiet ."));
    EXPECT_EQ("confcheck: others has the name of none of the daemon's files\nstatus 2",
              shell("touch others; confcheck others"));
}

TEST(Confcheck, KnowsPresetsOfTheOtherFamilyForWrong) {
    const auto wrong = [](const std::string& theirs, const std::string& ours) {
        return "./conf_preset.cfg:1: holds the presets of the " + theirs +
               " family, not those of " + ours + "\nstatus 1";
    };
    EXPECT_EQ(wrong("ZEV", "KOL"), shell(DELIVER + "confcheck --quiet --type 3 ."));
    EXPECT_EQ(wrong("ZEV", "KOL"), shell("confcheck --quiet --family KOL ."));
    EXPECT_EQ("device type 3, as given\nstatus 0",
              shell("cp " TEST_DEPLOY_DIR "/families/KOL/* .; confcheck --quiet --type 3 . && "
                    "confcheck --family KOL . | head -1"));
    EXPECT_EQ(wrong("KOL", "ZEV"), shell("confcheck --quiet --type 1 ."));
    EXPECT_EQ(wrong("KOL", "ZEV"), shell("confcheck --quiet --family ZEV ."));
}

TEST(Schema, PageNamesEachKeyWithItsUnit) {
    const std::string page = readFile(TEST_CONFIGURATION_FILES_PAGE);
    for (const auto& file : confcheck::configFiles(2)) {
        EXPECT_NE(std::string::npos, page.find("### " + file.name));
        for (const auto& item : file.items) {
            const std::string unit = item.unit.empty() ? "" : " \\(([^)]* )?" + item.unit + "\\)";
            EXPECT_TRUE(std::regex_search(page, std::regex("\\b" + item.key + "\\b" + unit)))
                << item.key << ' ' << item.unit;
        }
    }
}

}  // namespace
