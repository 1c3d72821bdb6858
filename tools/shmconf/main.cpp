// shmconf: shows and changes the objects of the segment that the daemon shares with its peers.
#include <fcntl.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <limits>

#include "config/schema/preset_schema.h"
#include "host/process_setup.h"
#include "shmconf/commands.h"
#include "shmconf/preset.h"
#include "support/closest.h"

namespace {

using namespace shmconf;

constexpr char FOOTER[] =
    "\nOBJECT is an identifier, a name, or a beginning of a name that no other has; upper and\n"
    "lower case are the same. `shmconf help objects` shows them.\n"
    "Status: 0 done, 1 an object is absent, unreadable or not written, 2 wrong usage, 3 no "
    "segment.";

constexpr unsigned int MOST_ELEMENTS = 0x140000;  // that the segment has room for

struct sArguments {
    bool all = false;
    bool json = false;
    bool raw = false;
    bool create = false;
    std::string object;
    sElement element;
    sLoadOptions load;
    int preset = 0;
    sPresetValue presetValue;
    Words objects;
    Words behindMark;
    unsigned int count = 0;
    unsigned int interval = 20;  // milliseconds

    eFormat format() const {
        if (json) return eFormat::JSON;
        return raw ? eFormat::RAW : eFormat::COLUMNS;
    }
};

CLI::Option* addJson(CLI::App& command, sArguments& arguments) {
    return command.add_flag("--json", arguments.json, "Print JSON instead of columns");
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

void defineReading(CLI::App& app, sArguments& arguments, eExitStatus& status) {
    auto* list = app.add_subcommand("list", "Show the objects that exist");
    list->add_flag("--all", arguments.all, "Show those that do not exist, too");
    addJson(*list, arguments);
    list->callback([&] { listObjects(std::cout, arguments.all, arguments.format()); });

    auto* get = app.add_subcommand("get", "Show some objects");
    get->add_option("OBJECT", arguments.objects)->required();
    auto* json = addJson(*get, arguments);
    get->add_flag("--raw", arguments.raw, "Print the values alone, one a line")->excludes(json);
    get->callback([&] { status = getObjects(std::cout, arguments.objects, arguments.format()); });
}

void defineChanging(CLI::App& app, sArguments& arguments, eExitStatus& status) {
    auto* set = app.add_subcommand("set", "Replace what an object holds, or one element of it");
    set->add_option("OBJECT", arguments.object,
                    "Its new values follow: VALUE..., after -- if they begin with --")
        ->required();
    auto* create =
        set->add_flag("--create", arguments.create, "Create the segment if there is none");
    auto* channel = set->add_option("--channel", arguments.element.channel,
                                    "Change this channel alone, counted from 1");
    channel->check(CLI::Range(1U, MOST_ELEMENTS))->excludes(create);
    set->add_option("--index", arguments.element.index, "Change this element alone, counted from 0")
        ->check(CLI::Range(0U, MOST_ELEMENTS))
        ->excludes(create)
        ->excludes(channel);
    set->prefix_command();
    set->callback([&arguments, set] {
        const Words values = valuesOf(*set, arguments.behindMark);
        if (arguments.element.isGiven()) {
            setElement(std::cout, arguments.object, arguments.element, values);
        } else {
            setObject(std::cout, arguments.object, values, arguments.create);
        }
    });

    auto* unset = app.add_subcommand("unset", "Remove some objects");
    unset->add_option("OBJECT", arguments.objects)->required();
    unset->callback([&] { status = unsetObjects(std::cout, arguments.objects); });
}

void definePreset(CLI::App& app, sArguments& arguments) {
    auto* preset = app.add_subcommand("preset", "Show a preset memory, or change a setting of it");
    preset->add_option("NUMBER", arguments.preset)->required()->check(CLI::Range(1, 5));
    addJson(*preset, arguments);
    auto* set = preset->add_subcommand("set", "Change a setting of one channel");
    set->add_option("SETTING", arguments.presetValue.setting, "A beginning of its name is enough")
        ->required();
    set->add_option("CHANNEL", arguments.presetValue.channel)
        ->required()
        ->check(CLI::Range(1U, static_cast<unsigned int>(hxl_config_handler::CHANNEL_COUNT)));
    set->add_option("VALUE", arguments.presetValue.value)->required();
    preset->callback([&arguments, set] {
        if (set->parsed()) {
            changePreset(std::cout, arguments.preset, arguments.presetValue);
        } else {
            showPreset(std::cout, arguments.preset, arguments.json);
        }
    });
}

void defineBackup(CLI::App& app, sArguments& arguments, eExitStatus& status) {
    auto* dump = app.add_subcommand("dump", "Print all objects that exist, for load");
    dump->callback([&] { status = dumpObjects(std::cout); });

    auto* load = app.add_subcommand("load", "Write the objects that dump has printed");
    load->add_option("FILE", arguments.load.file, "- for standard input")->capture_default_str();
    load->add_flag("--identity", arguments.load.identity, "Write the instrument's identity, too");
    load->add_flag("--create", arguments.load.create, "Create the segment if there is none");
    load->callback([&] { loadObjects(std::cout, arguments.load); });
}

void defineWatching(CLI::App& app, sArguments& arguments) {
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

// CLI11 would only say that a command is required.
void requireKnown(const CLI::App& app, const std::string& word) {
    std::vector<std::string> commands;
    for (const CLI::App* command : app.get_subcommands({}))
        commands.push_back(command->get_name());
    if (std::find(commands.begin(), commands.end(), word) != commands.end()) return;
    if (app.get_option_no_throw(word) != nullptr) return;
    const bool option = word.rfind('-', 0) == 0;
    throw CToolError(STATUS_USAGE, (option ? "there is no option \"" + word + "\" before a command"
                                           : "there is no command \"" + word + '"') +
                                       "; the closest command is " +
                                       tools::closestOf(word, commands));
}

eExitStatus run(Words words) {
    CLI::App app("Shows and changes the settings that the configuration daemon shares.", "shmconf");
    app.require_subcommand(1);
    app.footer(FOOTER);
    app.set_version_flag("--version", "shmconf " APP_CONFIG_VERSION);
    sArguments arguments;
    eExitStatus status = STATUS_DONE;
    defineReading(app, arguments, status);
    defineChanging(app, arguments, status);
    definePreset(app, arguments);
    defineBackup(app, arguments, status);
    defineWatching(app, arguments);
    app.add_subcommand("help", "Show this, the usage of a command, or all objects");

    if (words == Words{"help", "objects"}) {
        printDirectory(std::cout);
        return STATUS_DONE;
    }
    if (!words.empty() && words.front() == "help") {
        words.erase(words.begin());
        words.push_back("--help");
    }
    if (!words.empty()) requireKnown(app, words.front());
    if (!words.empty() && words.front() == "set") arguments.behindMark = cutBehindMark(words);
    std::reverse(words.begin(), words.end());  // as CLI11 takes them
    try {
        app.parse(words);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            throw CToolError(STATUS_USAGE, std::string(error.what()) + "; see shmconf help");
        }
        app.exit(error);  // prints the help or the version
    }
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    fillStandardDescriptors(O_RDONLY);  // so that writing to a closed one fails as it should
    eExitStatus status = STATUS_FAILED;
    try {
        status = run({argv + std::min(argc, 1), argv + argc});
    } catch (const CToolError& error) {
        std::cout.flush();
        std::fprintf(stderr, "shmconf: %s\n", error.what());
        return error.status();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "shmconf: %s\n", error.what());
        return STATUS_FAILED;
    }
    std::cout.flush();
    if (std::cout) return status;
    std::fputs("shmconf: the output cannot be written\n", stderr);
    return STATUS_FAILED;
}
