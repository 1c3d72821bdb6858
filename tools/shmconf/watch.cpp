#include "shmconf/watch.h"

#include <time.h>

#include <cstdio>
#include <ostream>
#include <string>
#include <thread>

#include "shmconf/output.h"
#include "shmconf/tool_error.h"

namespace shmconf {

namespace {

std::string localTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    localtime_r(&now.tv_sec, &parts);
    char text[64];
    const std::size_t length = std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &parts);
    std::snprintf(text + length, sizeof(text) - length, ".%03ld", now.tv_nsec / 1'000'000);
    return text;
}

}  // namespace

void watch(std::ostream& out, const CSegment& segment, const std::vector<sObject>& objects,
           const sWatchOptions& options) {
    // Compared as printed: a NaN never compares equal.
    std::vector<std::string> known;
    known.reserve(objects.size());
    for (const sObject& object : objects)
        known.push_back(describe({object, segment.read(object)}));
    out << "watching " << objects.size() << (objects.size() == 1 ? " object" : " objects")
        << std::endl;

    for (unsigned int changes = 0;;) {
        for (std::size_t i = 0; i < objects.size(); ++i) {
            std::string current = describe({objects[i], segment.read(objects[i])});
            if (current == known[i]) continue;
            out << localTime() << "  " << objects[i].id << ' ' << objects[i].name << ": "
                << known[i] << " -> " << current << std::endl;
            known[i] = std::move(current);
            if (++changes == options.count) return;
        }
        if (!out) throw CToolError(STATUS_FAILED, "the output cannot be written");
        std::this_thread::sleep_for(options.interval);
    }
}

}  // namespace shmconf
