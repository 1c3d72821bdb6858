// confcheck: tells what the daemon makes of its configuration files, and changes nothing.
#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>

#include "confcheck/check.h"
#include "confcheck/output.h"

namespace {

using namespace confcheck;

// Scripts rely on the numbers.
enum eExitStatus {
    STATUS_CLEAN = 0,
    STATUS_FINDINGS = 1,
    STATUS_USAGE = 2,
    STATUS_CANNOT_READ = 3,  // the folder or one of the files, or the report was not written
};

constexpr char FOOTER[] =
    "\nFindings have the form FILE:LINE: REASON; line 1 stands for the file as a whole, too.\n"
    "Status: 0 clean, 1 findings, 2 wrong usage, 3 something cannot be read.";

struct sArguments {
    std::string path = "/etc/quenvel/config/system";
    sUnit unit;
    bool json = false;
    bool quiet = false;
};

eExitStatus statusOf(const sReport& report) {
    bool findings = false;
    bool errors = false;
    for (const sFileReport& file : report.files) {
        findings = findings || !file.findings.empty();
        if (file.error.empty()) continue;
        errors = true;
        std::cerr << "confcheck: cannot read " << file.path << ": " << file.error << '\n';
    }
    return errors ? STATUS_CANNOT_READ : findings ? STATUS_FINDINGS : STATUS_CLEAN;
}

// False, and printed, if there is no such folder or file.
bool exists(const std::string& path, bool& isFolder) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        std::cerr << "confcheck: cannot read " << path << ": " << std::strerror(errno) << '\n';
        return false;
    }
    isFolder = S_ISDIR(status.st_mode);
    return true;
}

eExitStatus check(const sArguments& arguments) {
    std::string folder = arguments.path;
    std::string only;
    bool isFolder = false;
    if (!exists(folder, isFolder)) return STATUS_CANNOT_READ;
    if (!isFolder) {
        const std::size_t slash = folder.rfind('/');
        only = folder.substr(slash == std::string::npos ? 0 : slash + 1);
        folder = slash == std::string::npos ? "." : folder.substr(0, slash + 1);
        if (!isConfigFile(only)) {
            std::cerr << "confcheck: " << arguments.path
                      << " has the name of none of the daemon's files\n";
            return STATUS_USAGE;
        }
    }
    const sReport report = checkFolder(folder, arguments.unit, only);
    const auto print = arguments.json ? printJson : printText;
    print(std::cout, report, arguments.quiet);
    std::cout.flush();
    const eExitStatus status = statusOf(report);
    if (std::cout) return status;
    std::cerr << "confcheck: cannot write the report\n";
    return STATUS_CANNOT_READ;
}

eExitStatus run(int argc, char** argv) {
    CLI::App app("Tells what the configuration daemon makes of its files, and changes nothing.",
                 "confcheck");
    app.footer(FOOTER);
    app.set_version_flag("--version", "confcheck " APP_CONFIG_VERSION);
    sArguments arguments;
    app.add_option("PATH", arguments.path, "The folder with the six files, or one of them")
        ->capture_default_str();
    app.add_option(
           "--family", arguments.unit.family,
           "Model family of the unit: ZEV, or KOL, which has type 3 alone. Without it, that "
           "of the device type")
        ->check(CLI::IsMember({"ZEV", "KOL"}));
    app.add_option("--type", arguments.unit.devType,
                   "Device type of the unit: 1 ZEV 35 V, 2 ZEV 100 V, 3 KOL 35 V. Without it, as "
                   "devtype_info.cfg says")
        ->check(CLI::IsMember({1, 2, 3}));
    app.add_flag("--json", arguments.json, "Print JSON instead of text");
    app.add_flag("--quiet", arguments.quiet, "Print findings alone");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? STATUS_CLEAN : STATUS_USAGE;
    }
    return check(arguments);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "confcheck: %s\n", error.what());
        return STATUS_CANNOT_READ;
    }
}
