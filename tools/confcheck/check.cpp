#include "confcheck/check.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>

#include "confcheck/values.h"
#include "config/manager/device_identity.h"
#include "config/schema/auto_save_schema.h"
#include "config/schema/preset_schema.h"
#include "ini_file/chunk_reader.h"

namespace confcheck {

namespace {

constexpr char READ_MODE[] = "rb";
constexpr char ZEV[] = "ZEV";
constexpr char KOL[] = "KOL";
constexpr int KOL_DEV_TYPE = 3;

bool isAutoSaveItem(const sItem& item) {
    return item.kind == eKind::DOUBLES || item.kind == eKind::BYTES || item.kind == eKind::TEXTS;
}

const char* kindOf(mode_t mode) {
    if (S_ISDIR(mode)) return "a directory";
    if (S_ISFIFO(mode)) return "a FIFO";
    if (S_ISSOCK(mode)) return "a socket";
    return "a device";
}

// The daemon opens these to write when it loads them.
bool isLoadedForWriting(const std::string& name) {
    return name == hxl_config_handler::AUTO_SAVE_FILE_NAME ||
           name == hxl_config_handler::PRESET_FILE_NAME;
}

// Whose presets a file with these lines holds: only ZEV has 100 V models; as delivered the first
// line names the family.
std::string familyOf(const CLines& lines, const std::string& firstLine) {
    if (lines.hasSection(hxl_config_handler::presetSection(1, 2))) return ZEV;
    if (firstLine.empty() || firstLine.front() != '#') return {};
    for (const char* family : {ZEV, KOL})
        if (firstLine.find(family) != std::string::npos) return family;
    return {};
}

// False, and `report` says why, if there is nothing to read.
bool readLines(const std::string& name, CLines& lines, sFileReport& report) {
    struct stat status {};
    core_utils::CLockedFile file;
    if (stat(report.path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        report.findings.push_back({1, std::string("is ") + kindOf(status.st_mode) +
                                          ", no regular file: the daemon cannot open it"});
        return false;
    }
    if (!file.open(report.path.c_str(), READ_MODE)) {
        report.error = std::strerror(errno);
        return false;
    }
    core_utils::CChunkReader reader(file);
    std::string firstLine;
    for (bool first = true; reader.next(); first = false) {
        if (first) firstLine = reader.chunk();
        lines.take(reader.chunk(), reader.isCutOff());
    }
    if (reader.failed()) report.error = "it cannot be read to its end";
    if (name == hxl_config_handler::PRESET_FILE_NAME) report.family = familyOf(lines, firstLine);
    return !reader.failed();
}

// One file, once its lines are known.
class CFileCheck {
  public:
    CFileCheck(const sConfigFile& file, const CLines& lines, int devType, sFileReport& report)
        : mFile(file), mLines(lines), mDevType(devType), mReport(report) {}

    void run(core_utils::CFileConfig& config) {
        for (const sItem& item : mFile.items)
            check(item, config);
        for (const sItem& item : mFile.others) {
            if (mLines.lineOf(item) > 0) read(item, config);
        }
        reportMissingSections();
    }

  private:
    void report(int line, const std::string& reason) {
        mReport.findings.push_back({std::max(line, 1), reason});
    }

    sReading read(const sItem& item, core_utils::CFileConfig& config) {
        sReading reading = readItem(config, item);
        for (const std::string& fault : reading.faults)
            report(mLines.lineOf(item), fault);
        return reading;
    }

    void check(const sItem& item, core_utils::CFileConfig& config) {
        const int line = mLines.lineOf(item);
        const bool isItem = isAutoSaveItem(item);
        if (isItem && !mbSaved) return checkUnloadedItem(item, line);
        const bool wasEnded = mEndLine > 0;
        const sReading reading = line == 0 ? sReading() : read(item, config);
        if (reading.endsLoad && !wasEnded) endLoad(item, line);
        if (item.kind == eKind::STATE) checkState(reading, line);
        if (mEndLine > 0 && item.step >= mEndStep) {
            add(item, {}, eSource::NOTHING, endNote());
        } else if (reading.readable) {
            add(item, reading.value, eSource::FILE, reading.note);
        } else {
            const std::string fallback = isItem ? std::string() : item.fallback;
            add(item, fallback, fallback.empty() ? eSource::NOTHING : eSource::DEFAULT,
                line == 0 ? "missing" : "cannot be read");
        }
    }

    // Nothing is published of the whole step.
    void endLoad(const sItem& item, int line) {
        mEndLine = line;
        mEndStep = item.step;
        for (std::size_t i = 0; i < mReport.values.size(); ++i) {
            if (mFile.items[i].step != mEndStep) continue;
            sValue& value = mReport.values[i];
            value.value.clear();
            value.source = eSource::NOTHING;
            value.note = endNote();
        }
    }

    std::string endNote() const { return "line " + std::to_string(mEndLine) + " ends the load"; }

    void checkState(const sReading& reading, int line) {
        mbSaved = reading.readable && !reading.fresh;
        mbFresh = reading.fresh;
        if (!reading.readable) {
            report(line, "without a STATE that can be read, nothing of this file is loaded");
        }
    }

    // An item of a file that holds no saved values.
    void checkUnloadedItem(const sItem& item, int line) {
        const bool seeded = mbFresh && !item.fallback.empty();
        const char* effect = seeded    ? "STATE is 0: the factory default takes its place"
                             : mbFresh ? "STATE is 0: it is not loaded"
                                       : "without a STATE it is not loaded";
        if (line > 0) report(line, effect);
        add(item, seeded ? item.fallback : std::string(),
            seeded ? eSource::DEFAULT : eSource::NOTHING,
            seeded    ? "factory default"
            : mbFresh ? "device type not known: no factory default"
                      : "not loaded");
    }

    void add(const sItem& item, const std::string& value, eSource source, const std::string& note) {
        mReport.values.push_back(
            {item.section, item.key, item.unit, value, note, source, mLines.lineOf(item)});
    }

    void reportMissingSections() {
        std::set<std::string> known;
        for (const sItem& item : mFile.items) {
            const bool isNeeded = mbSaved || !isAutoSaveItem(item);
            if (!isNeeded || !known.insert(item.section).second) continue;
            if (mLines.hasSection(item.section)) continue;
            report(1, "there is no section [" + item.section + "], which " +
                          (mDevType == 0 ? "a unit that does not know its device type"
                                         : "device type " + std::to_string(mDevType)) +
                          " reads");
        }
    }

    const sConfigFile& mFile;
    const CLines& mLines;
    const int mDevType;
    sFileReport& mReport;
    bool mbSaved = false;  // of the auto-save file
    bool mbFresh = false;
    int mEndLine = 0;  // of the value that ends the load
    int mEndStep = 0;
};

sFileReport checkFile(const std::string& folder, const sConfigFile& file, const sUnit& unit) {
    sFileReport report;
    report.path = folder + (folder.empty() || folder.back() != '/' ? "/" : "") + file.name;
    CLines lines(file);
    if (!readLines(file.name, lines, report)) return report;
    core_utils::CFileConfig config;
    if (!config.open(report.path, READ_MODE)) {
        report.error = std::strerror(errno);
        return report;
    }
    report.findings = lines.findings();
    if (isLoadedForWriting(file.name) && access(report.path.c_str(), W_OK) != 0 && errno == EROFS) {
        report.findings.push_back(
            {1,
             "is on a read-only file system: the daemon, which opens it to write too, cannot "
             "load it"});
    }
    if (!report.family.empty() && !unit.family.empty() && report.family != unit.family) {
        report.findings.push_back({1, "holds the presets of the " + report.family +
                                          " family, not those of " + unit.family});
    }
    CFileCheck(file, lines, unit.devType, report).run(config);
    std::stable_sort(report.findings.begin(), report.findings.end(),
                     [](const sFinding& a, const sFinding& b) { return a.line < b.line; });
    return report;
}

}  // namespace

bool isConfigFile(const std::string& name) {
    const std::vector<sConfigFile> files = configFiles(0);
    return std::any_of(files.begin(), files.end(),
                       [&](const sConfigFile& file) { return file.name == name; });
}

sReport checkFolder(const std::string& folder, const sUnit& given, const std::string& only) {
    sReport report;
    sUnit unit = given;
    if (unit.devType == 0 && unit.family == KOL) unit.devType = KOL_DEV_TYPE;
    report.typeGiven = unit.devType != 0;
    if (!report.typeGiven) {
        const sFileReport identity = checkFile(folder, configFiles(0).front(), {});
        if (!identity.values.empty()) {
            unit.devType = hxl_config_handler::identityOf(identity.values.front().value).first;
        }
    }
    if (unit.family.empty() && unit.devType != 0) {
        unit.family = unit.devType == KOL_DEV_TYPE ? KOL : ZEV;
    }
    report.devType = unit.devType;
    for (const sConfigFile& file : configFiles(unit.devType))
        if (only.empty() || only == file.name)
            report.files.push_back(checkFile(folder, file, unit));
    return report;
}

}  // namespace confcheck
