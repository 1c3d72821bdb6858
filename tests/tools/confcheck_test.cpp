#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>

#include "support/child_process.h"
#include "support/files.h"

namespace {

using support::configPath;
using support::readFile;
namespace fs = std::filesystem;
using support::Words;

// What the tool prints, then its status.
std::string confcheck(Words words) {
    words.insert(words.begin(), TEST_CONFCHECK);
    support::CChildProcess tool(words);
    std::string out;
    while (const auto line = tool.readLine())
        out += *line + '\n';
    return out + "status " + std::to_string(tool.wait().value_or(-1));
}

void install(const std::string& folder) {
    fs::copy(folder, configPath(""),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
}
void installDelivered() {
    install(TEST_DEPLOY_DIR "/etc/quenvel/config/system");
}

// The other files are as delivered.
TEST(Confcheck, FindsAllThatIsWrongInTheExamplesAndChangesNothing) {
    const struct {
        std::string folder;
        Words options;
    } examples[] = {{TEST_EXAMPLES_DIR "/confcheck-fresh", {"--quiet"}},
                    {TEST_EXAMPLES_DIR "/confcheck", {}}};
    for (const auto& example : examples) {
        installDelivered();
        install(example.folder);
        EXPECT_EQ(readFile(example.folder + "/report.txt") + "status 1",
                  confcheck(example.options));
        for (const auto& entry : fs::directory_iterator(example.folder))
            EXPECT_EQ(readFile(entry.path()), readFile(configPath(entry.path().filename())));
    }
}

TEST(Confcheck, JsonHasTheSameFields) {
    install(TEST_EXAMPLES_DIR "/confcheck");
    std::string json = confcheck({"--json", "--type", "2"});
    json.erase(json.rfind("status 1"));
    const auto report = nlohmann::json::parse(json);
    std::string findings;
    for (const auto& file : report["files"]) {
        for (const auto& finding : file["findings"]) {
            findings += finding["file"].get<std::string>() + ":" +
                        std::to_string(finding["line"].get<int>()) + ": " +
                        finding["reason"].get<std::string>() + "\n";
        }
    }
    EXPECT_EQ(findings + "status 1", confcheck({"--quiet", "--type", "2"}));
}

TEST(Confcheck, FindsWhatHidesALineOrASection) {
    const struct {
        const char* file;
        std::string content;
        std::string findings;  // behind the file's path
    } rows[] = {
        {"conf_auto_save.cfg", "[CONF_STATUS]\nSTATE=1\n[CONF_ITEM_DBL]\n[CONF_ITEM_SEL]\n",
         ":1: there is no section [CONF_ITEM_STR], which a unit that does not know its device type "
         "reads\n"},
        {"conf_auto_save.cfg", "[CONF_STATUS]\n#" + std::string(79, '.') + "[\nSTATE=1\n",
         ":1: without a STATE that can be read, nothing of this file is loaded\n"
         ":2: is too long and is cut after 80 characters: what follows counts as a header\n"},
        {"devtype_info.cfg",
         std::string("[PROCESSED_DEV_INFORMATION]\nDEV_INFORMATION=UNK\0OWN", 51),
         ":2: holds a NUL character: it counts as a blank\n"
         ":2: the value ends at its first blank: \"OWN\" is ignored\n"
         ":2: \"UNK\" is no usual device string: it counts as device type 1, 2 channels\n"},
    };
    for (const auto& row : rows) {
        installDelivered();
        EXPECT_EQ("status 0", confcheck({"--quiet"}));
        support::writeFile(configPath(row.file), row.content);
        const std::string path = configPath(row.file) + ":";
        EXPECT_EQ(std::regex_replace(row.findings, std::regex("(^|\n):"), "$1" + path) + "status 1",
                  confcheck({"--quiet"}))
            << row.content;
    }
}

TEST(Confcheck, NeitherWaitsNorReadsWhatIsNoFile) {
    installDelivered();
    fs::remove(configPath("conf_preset.cfg"));
    EXPECT_EQ("status 3", confcheck({"--quiet"}));
    mkfifo(configPath("conf_preset.cfg").c_str(), 0600);
    EXPECT_EQ(configPath("conf_preset.cfg") +
                  ":1: is a FIFO, no regular file: the daemon cannot open it\nstatus 1",
              confcheck({"--quiet"}));
}

// The first start adds the identity.
TEST(Confcheck, MissesNothingButTheIdentityInTheDeliveredFiles) {
    for (const char* type : {"1", "2", "3"}) {
        installDelivered();
        if (*type == '3') install(TEST_DEPLOY_DIR "/families/KOL");
        const std::string report = confcheck({"--type", type});
        EXPECT_EQ(report.find("(missing)"), report.rfind("(missing)")) << report;
    }
}

TEST(Confcheck, KnowsPresetsOfTheOtherFamilyForWrong) {
    const auto wrong = [](const std::string& theirs, const std::string& ours) {
        return configPath("conf_preset.cfg") + ":1: holds the presets of the " + theirs +
               " family, not those of " + ours + "\nstatus 1";
    };
    installDelivered();
    EXPECT_EQ(wrong("ZEV", "KOL"), confcheck({"--quiet", "--type", "3"}));
    EXPECT_EQ(wrong("ZEV", "KOL"), confcheck({"--quiet", "--family", "KOL"}));
    install(TEST_DEPLOY_DIR "/families/KOL");
    EXPECT_EQ("status 0", confcheck({"--quiet", "--type", "3"}));
    EXPECT_EQ(wrong("KOL", "ZEV"), confcheck({"--quiet", "--type", "1"}));
    EXPECT_EQ(wrong("KOL", "ZEV"), confcheck({"--quiet", "--family", "ZEV"}));
}

TEST(Confcheck, ChecksOneFileBesideTheOthers) {
    install(TEST_EXAMPLES_DIR "/confcheck");
    const std::string all = confcheck({"--quiet"}), path = configPath("conf_preset.cfg");
    const std::size_t begin = all.find(path), end = all.find(configPath("system_config.cfg"));
    EXPECT_EQ(all.substr(begin, end - begin) + "status 1", confcheck({"--quiet", path}));
    support::writeFile(configPath("other.cfg"), "");
    EXPECT_EQ("status 2", confcheck({configPath("other.cfg")}));
}

TEST(Confcheck, FindsWhatTheDaemonCannotOpenOnAReadOnlyFileSystem) {
    installDelivered();
    const std::string folder = configPath("");
    ASSERT_EQ(0, mount(folder.c_str(), folder.c_str(), nullptr, MS_BIND, nullptr));
    ASSERT_EQ(0,
              mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr));
    const std::string reason =
        ":1: is on a read-only file system: the daemon, which opens it to write too, cannot load "
        "it\n";
    EXPECT_EQ(configPath("conf_auto_save.cfg") + reason + configPath("conf_preset.cfg") + reason +
                  "status 1",
              confcheck({"--quiet"}));
}

}  // namespace
