#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "support/child_process.h"
#include "support/files.h"
#include "tools/options.h"

namespace {

using support::configPath;
using support::readFile;
namespace fs = std::filesystem;
using Words = std::vector<std::string>;

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

TEST(Confcheck, FindsAllThatIsWrongInTheExampleAndChangesNothing) {
    install(TEST_EXAMPLES_DIR "/confcheck");
    const std::string report = readFile(configPath("report.txt"));
    EXPECT_EQ(report + "status 1", confcheck({}));
    for (const auto& entry : fs::directory_iterator(TEST_EXAMPLES_DIR "/confcheck")) {
        EXPECT_EQ(readFile(entry.path()), readFile(configPath(entry.path().filename())));
    }
}

// The page shows beginnings of the real output.
TEST(Confcheck, PrintsWhatItsPageShows) {
    install(TEST_EXAMPLES_DIR "/confcheck");
    const std::string page = readFile(TEST_CONFCHECK_PAGE);
    int shown = 0;
    for (const auto& [command, words] : std::vector<std::pair<std::string, Words>>{
             {"```\n$ confcheck\n", {}},
             {"```\n$ confcheck --quiet\n", {"--quiet"}},
             {"```\n$ confcheck --quiet --json\n", {"--quiet", "--json"}}}) {
        const std::size_t begin = page.find(command) + command.size();
        const std::string block = page.substr(begin, page.find("```", begin) - begin);
        EXPECT_EQ(0U, confcheck(words).find(block)) << command << block;
        shown += static_cast<int>(block.size() > 1);
    }
    EXPECT_EQ(3, shown);
}

TEST(Confcheck, HasAManualWithItsOptions) {
    EXPECT_EQ(optionsIn(confcheck({"--help"})), optionsIn(readFile(TEST_CONFCHECK_MANUAL)));
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

struct sCase {
    const char* file;
    std::string content;
    std::string findings;  // behind the file's path
};
const std::string SAVED = "[CONF_STATUS]\nSTATE=1\n[CONF_ITEM_SEL]\n[CONF_ITEM_STR]\n";
const sCase CASES[] = {
    {"conf_auto_save.cfg", "[CONF_STATUS]\nSTATE=1\n[CONF_ITEM_DBL]\n[CONF_ITEM_SEL]\n",
     ":1: there is no section [CONF_ITEM_STR], which a unit that does not know its device type "
     "reads\n"},
    {"conf_auto_save.cfg", "[CONF_STATUS]\nSTATE=-256\n[CONF_ITEM_DBL]\nVOL_LVL=1,x\n",
     ":2: \"-256\" is no byte: its low 8 bits count, 0\n"
     ":4: STATE is 0: it is not loaded\n"},
    {"conf_auto_save.cfg", SAVED + "[CONF_ITEM_DBL]\nVOL_LVL=1" + std::string(71, '0') + "2",
     ":6: is too long and is cut after 80 characters: the value ends there\n"
     ":6: cannot be written back: a line has at most 80 characters with its end, this one 88\n"},
    {"conf_auto_save.cfg", "[CONF_STATUS]\n#" + std::string(79, '.') + "[\nSTATE=1\n",
     ":1: without a STATE that can be read, nothing of this file is loaded\n"
     ":2: is too long and is cut after 80 characters: what follows counts as a header\n"},
    {"devtype_info.cfg", std::string("[PROCESSED_DEV_INFORMATION]\nDEV_INFORMATION=UNK\0OWN", 51),
     ":2: holds a NUL character: it counts as a blank\n"
     ":2: the value ends at its first blank: \"OWN\" is ignored\n"
     ":2: \"UNK\" is no usual device string: it counts as device type 1, 2 channels\n"},
    {"correction_current.cfg", "\xef\xbb\xbf[CURRENT_CORRECTION]\nSRC_Low_CurrRange=1\n",
     ":1: begins with a byte order mark, which hides this line\n"
     ":1: there is no section [CURRENT_CORRECTION], which a unit that does not know its device "
     "type reads\n"
     ":2: stands outside a section: it is never read\n"},
};

TEST(Confcheck, FindsWhatIsWrong) {
    for (const auto& [file, content, findings] : CASES) {
        installDelivered();
        EXPECT_EQ("status 0", confcheck({"--quiet"}));
        support::writeFile(configPath(file), content);
        std::string expected;
        for (std::size_t at = 0; at < findings.size(); at = findings.find('\n', at) + 1)
            expected += configPath(file) + findings.substr(at, findings.find('\n', at) + 1 - at);
        EXPECT_EQ(expected + "status 1", confcheck({"--quiet"})) << content;
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
    EXPECT_EQ("status 3", confcheck({configPath("conf_preset.cfg")}));
    EXPECT_EQ("status 2", confcheck({"--type", "4"}));
}

}  // namespace
