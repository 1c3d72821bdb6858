// The load of a full preset file, its five sections of 18 look-ups: the product's file class
// beside the plain fgets on an unbuffered stream, and beside readers that keep the file in memory.
#include <SimpleIni.h>
#include <benchmark/benchmark.h>
#include <glib.h>
#include <ini.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "config/schema/config_paths.h"
#include "config/schema/preset_schema.h"
#include "ini_file/file_config.h"

namespace {

using hxl_config_handler::configFilePath;
using Lookup = std::pair<std::string, std::string>;  // section, key

const std::string& path() {
    static const std::string PATH = configFilePath(hxl_config_handler::PRESET_FILE_NAME);
    return PATH;
}

// The look-ups of a load, in its order.
std::vector<Lookup> lookups() {
    std::vector<Lookup> all;
    for (const auto& memory : hxl_config_handler::PRESET_MEMORIES) {
        const std::string section = hxl_config_handler::presetSection(memory.number, 2);
        for (const auto& setting : hxl_config_handler::PRESET_NUMBERS) {
            all.emplace_back(section, setting.key);
        }
        for (const auto& setting : hxl_config_handler::PRESET_STATES) {
            all.emplace_back(section, setting.key);
        }
        all.push_back(all.back());
    }
    return all;
}

// `load` gives the number of values that it found.
template <typename Load>
void run(benchmark::State& state, Load load) {
    const std::vector<Lookup> all = lookups();
    for (auto _ : state) {
        if (load(all) != all.size()) state.SkipWithError("a key was not found");
    }
}

void fileConfig(benchmark::State& state) {
    run(state, [](const std::vector<Lookup>& all) {
        core_utils::CFileConfig file;
        file.open(path(), "r+b");
        std::size_t found = 0;
        for (const auto& [section, key] : all) {
            std::string value;
            found += file.read(section, key, value);
        }
        return found;
    });
}
BENCHMARK(fileConfig)->Unit(benchmark::kMicrosecond);

// One system call a character, as the C library does it for a stream without a buffer.
void unbufferedFgets(benchmark::State& state) {
    run(state, [](const std::vector<Lookup>& all) {
        std::FILE* file = std::fopen(path().c_str(), "r+b");
        std::setbuf(file, nullptr);
        std::size_t found = 0;
        for (const auto& [section, key] : all) {
            const std::string header = "[" + section + "]";
            const std::string start = key + "=";
            bool inSection = false;
            char chunk[81];
            std::rewind(file);
            while (std::fgets(chunk, sizeof chunk, file) != nullptr) {
                if (chunk[0] == '[') {
                    inSection = std::strncmp(chunk, header.c_str(), header.size()) == 0;
                } else if (inSection && std::strncmp(chunk, start.c_str(), start.size()) == 0) {
                    ++found;
                    break;
                }
            }
        }
        std::fclose(file);
        return found;
    });
}
BENCHMARK(unbufferedFgets)->Unit(benchmark::kMicrosecond);

void simpleIni(benchmark::State& state) {
    run(state, [](const std::vector<Lookup>& all) {
        CSimpleIniA ini;
        ini.LoadFile(path().c_str());
        std::size_t found = 0;
        for (const auto& [section, key] : all) {
            found += ini.GetValue(section.c_str(), key.c_str()) != nullptr;
        }
        return found;
    });
}
BENCHMARK(simpleIni)->Unit(benchmark::kMicrosecond);

void inih(benchmark::State& state) {
    run(state, [](const std::vector<Lookup>& all) {
        std::map<Lookup, std::string> values;
        ini_parse(
            path().c_str(),
            [](void* user, const char* section, const char* key, const char* value) {
                (*static_cast<std::map<Lookup, std::string>*>(user))[{section, key}] = value;
                return 1;
            },
            &values);
        std::size_t found = 0;
        for (const Lookup& lookup : all)
            found += values.count(lookup);
        return found;
    });
}
BENCHMARK(inih)->Unit(benchmark::kMicrosecond);

void glibKeyFile(benchmark::State& state) {
    run(state, [](const std::vector<Lookup>& all) {
        GKeyFile* file = g_key_file_new();
        g_key_file_load_from_file(file, path().c_str(), G_KEY_FILE_NONE, nullptr);
        std::size_t found = 0;
        for (const auto& [section, key] : all) {
            char* value = g_key_file_get_string(file, section.c_str(), key.c_str(), nullptr);
            found += value != nullptr;
            g_free(value);
        }
        g_key_file_free(file);
        return found;
    });
}
BENCHMARK(glibKeyFile)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
