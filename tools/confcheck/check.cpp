#include "confcheck/check.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>

#include "confcheck/values.h"
#include "config/manager/device_identity.h"
#include "ini_file/chunk_reader.h"

namespace confcheck {

namespace {

constexpr char READ_MODE[] = "rb";

bool isAutoSaveItem(const sItem& item) {
    return item.kind == eKind::DOUBLES || item.kind == eKind::BYTES || item.kind == eKind::TEXTS;
}

const char* kindOf(mode_t mode) {
    if (S_ISDIR(mode)) return "a directory";
    if (S_ISFIFO(mode)) return "a FIFO";
    if (S_ISSOCK(mode)) return "a socket";
    return "a device";
}

// False, and `report` says why, if there is nothing to read.
bool readLines(CLines& lines, sFileReport& report) {
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
    while (reader.next())
        lines.take(reader.chunk(), reader.isCutOff());
    if (reader.failed()) report.error = "it cannot be read to its end";
    return !reader.failed();
}

// One file, once its lines are known.
class CFileCheck {
  public:
    CFileCheck(const sConfigFile& file, const CLines& lines, int devType, sFileReport& report)
        : mFile(file), mLines(lines), mDevType(devType), mReport(report) {}

    void run(core_utils::CFileConfig& config) {
        for (const sItem& item : mFile.items)
            take(item, config);
        for (const sItem& item : mFile.others) {
            if (mLines.lineOf(item) > 0) read(item, config);
        }
        reportMissingSections();
    }

  private:
    void report(int line, const std::string& reason) {
        mReport.findings.push_back({std::max(line, 1), reason});
    }

    sUse read(const sItem& item, core_utils::CFileConfig& config) {
        sUse use = readItem(config, item);
        for (const std::string& fault : use.faults)
            report(mLines.lineOf(item), fault);
        return use;
    }

    void take(const sItem& item, core_utils::CFileConfig& config) {
        const int line = mLines.lineOf(item);
        const bool isItem = isAutoSaveItem(item);
        if (isItem && !mbSaved) return takeSeeded(item, line);
        const bool wasEnded = mEndLine > 0;
        const sUse use = line == 0 ? sUse() : read(item, config);
        if (use.endsLoad && !wasEnded) endLoad(item, line);
        if (item.kind == eKind::STATE) takeState(use, line);
        if (mEndLine > 0 && item.step >= mEndStep) {
            add(item, {}, eSource::NOTHING, endNote());
        } else if (use.readable) {
            add(item, use.value, eSource::FILE, use.note);
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

    void takeState(const sUse& use, int line) {
        mbSaved = use.readable && !use.fresh;
        mbFresh = use.fresh;
        if (!use.readable) {
            report(line, "without a STATE that can be read, nothing of this file is loaded");
        }
    }

    // An item of a file that holds no saved values.
    void takeSeeded(const sItem& item, int line) {
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

sFileReport checkFile(const std::string& folder, const sConfigFile& file, int devType) {
    sFileReport report;
    report.path = folder + (folder.empty() || folder.back() != '/' ? "/" : "") + file.name;
    CLines lines(file);
    if (!readLines(lines, report)) return report;
    core_utils::CFileConfig config;
    if (!config.open(report.path, READ_MODE)) {
        report.error = std::strerror(errno);
        return report;
    }
    report.findings = lines.findings();
    CFileCheck(file, lines, devType, report).run(config);
    std::stable_sort(report.findings.begin(), report.findings.end(),
                     [](const sFinding& a, const sFinding& b) { return a.line < b.line; });
    return report;
}

}  // namespace

sReport checkFolder(const std::string& folder, int devType) {
    sReport report;
    report.typeGiven = devType != 0;
    report.devType = devType;
    if (!report.typeGiven) {
        const sFileReport identity = checkFile(folder, configFiles(0).front(), 0);
        if (!identity.values.empty()) {
            report.devType = hxl_config_handler::identityOf(identity.values.front().value).first;
        }
    }
    for (const sConfigFile& file : configFiles(report.devType))
        report.files.push_back(checkFile(folder, file, report.devType));
    return report;
}

}  // namespace confcheck
