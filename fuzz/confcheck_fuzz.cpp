// The checker of configuration files on any file in the place of all six, for any device type: it
// sees a key where the file class does, and its findings lie in the file.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "confcheck/check.h"
#include "ini_file/file_config.h"
#include "support/files.h"

namespace {

constexpr int DEV_TYPES = 4;  // with 0, not known

[[noreturn]] void fail(const std::string& path, const std::string& what) {
    std::fprintf(stderr, "%s: %s\n", path.c_str(), what.c_str());
    std::abort();
}

void compare(const confcheck::sFileReport& report, int lines) {
    core_utils::CFileConfig file;
    if (!report.error.empty() || !file.open(report.path, "rb")) fail(report.path, report.error);
    for (const confcheck::sValue& value : report.values) {
        char text[100];
        int size = sizeof text;
        const bool read = file.readValue(value.section.c_str(), value.key.c_str(), text, &size);
        // Without a line there is no such key; a value that is used can be read.
        const bool agrees =
            value.line == 0 ? !read && size < 0 : read || value.source != confcheck::eSource::FILE;
        if (!agrees || value.line > lines) fail(report.path, value.section + ' ' + value.key);
    }
    for (const confcheck::sFinding& finding : report.findings) {
        if (finding.line < 1 || finding.line > lines) fail(report.path, finding.reason);
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) return 0;
    const std::string content(reinterpret_cast<const char*>(bytes), size);
    const int lines = 1 + static_cast<int>(std::count(content.begin(), content.end(), '\n'));
    for (const char* name :
         {"devtype_info.cfg", "conf_auto_save.cfg", "conf_preset.cfg", "system_config.cfg",
          "dev_var_system_config.cfg", "correction_current.cfg"}) {
        support::writeFile(support::configPath(name), content);
    }
    // The last byte can vary without a change of what the file says.
    const confcheck::sReport report =
        confcheck::checkFolder(support::configPath(""), {bytes[size - 1] % DEV_TYPES});
    for (const confcheck::sFileReport& file : report.files)
        compare(file, lines);
    return 0;
}
