// shmconf: shows and changes the objects of the segment that the daemon shares with its peers.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <limits>

#include "shmconf/commands.h"

namespace {

using namespace shmconf;

constexpr char FOOTER[] =
    "\nOBJECT is an identifier, a name, or a beginning of a name that no other has; upper and\n"
    "lower case are the same. `shmconf list --all` shows them.\n"
    "Status: 0 done, 1 an object is absent, unreadable or not written, 2 wrong usage, 3 no "
    "segment.";

struct sArguments {
    bool all = false;
    bool json = false;
    bool create = false;
    std::string object;
    Words objects;
    Words behindMark;
    unsigned int count = 0;
    unsigned int interval = 20;  // milliseconds
};

void addJson(CLI::App& command, sArguments& arguments) {
    command.add_flag("--json", arguments.json, "Print JSON instead of columns");
}

// What CLI11 left over is the values: as an option's, one in brackets would be taken apart.
Words valuesOf(const CLI::App& set, const Words& behindMark) {
    Words values = set.remaining();
    for (const std::string& value : values) {
        if (value.rfind("--", 0) != 0) continue;
        throw CToolError(STATUS_USAGE, "no option " + value + "; if it is a value, put -- first");
    }
    values.insert(values.end(), behindMark.begin(), behindMark.end());
    if (values.empty()) throw CToolError(STATUS_USAGE, "set needs at least one value");
    return values;
}

// Takes what follows the first "--" off `words`.
Words cutBehindMark(Words& words) {
    const auto mark = std::find(words.begin(), words.end(), "--");
    if (mark == words.end()) return {};
    Words behind(mark + 1, words.end());
    words.erase(mark, words.end());
    return behind;
}

void defineCommands(CLI::App& app, sArguments& arguments, eExitStatus& status) {
    auto* list = app.add_subcommand("list", "Show the objects that exist");
    list->add_flag("--all", arguments.all, "Show those that do not exist, too");
    addJson(*list, arguments);
    list->callback([&] { listObjects(std::cout, arguments.all, arguments.json); });

    auto* get = app.add_subcommand("get", "Show some objects");
    get->add_option("OBJECT", arguments.objects)->required();
    addJson(*get, arguments);
    get->callback([&] { status = getObjects(std::cout, arguments.objects, arguments.json); });

    auto* set = app.add_subcommand("set", "Replace what an object holds");
    set->add_option("OBJECT", arguments.object,
                    "Its new values follow: VALUE..., after -- if they begin with --")
        ->required();
    set->add_flag("--create", arguments.create, "Create the segment if there is none");
    set->prefix_command();
    set->callback([&arguments, set] {
        setObject(std::cout, arguments.object, valuesOf(*set, arguments.behindMark),
                  arguments.create);
    });

    auto* watch = app.add_subcommand("watch", "Print changes as they happen");
    watch->add_option("OBJECT", arguments.objects, "Default: all");
    const CLI::Range positive(1U, std::numeric_limits<unsigned int>::max());
    watch->add_option("--count", arguments.count, "Stop after so many changes")->check(positive);
    watch->add_option("--interval", arguments.interval, "Milliseconds between looks")
        ->capture_default_str()
        ->check(CLI::Range(1U, 60'000U));
    watch->callback([&] {
        watchObjects(std::cout, arguments.objects,
                     {arguments.count, std::chrono::milliseconds(arguments.interval)});
    });
}

int run(int argc, char** argv) {
    CLI::App app("Shows and changes the settings that the configuration daemon shares.", "shmconf");
    app.require_subcommand(1);
    app.footer(FOOTER);
    sArguments arguments;
    eExitStatus status = STATUS_DONE;
    defineCommands(app, arguments, status);
    Words words(argv + 1, argv + argc);
    if (!words.empty() && words.front() == "set") arguments.behindMark = cutBehindMark(words);
    std::reverse(words.begin(), words.end());  // as CLI11 takes them
    try {
        app.parse(words);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? STATUS_DONE : STATUS_USAGE;
    } catch (const CToolError& error) {
        std::cout.flush();
        std::cerr << "shmconf: " << error.what() << std::endl;
        return error.status();
    }
    std::cout.flush();
    return std::cout ? status : STATUS_FAILED;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "shmconf: %s\n", error.what());
        return STATUS_FAILED;
    }
}
