#include "shmconf/commands.h"

#include <signal.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <sstream>

#include "config/schema/preset_schema.h"
#include "shmconf/json_form.h"
#include "shmconf/output.h"

namespace shmconf {

namespace {

bool isPresent(const sRow& row) {
    return row.contents.state == eState::PRESENT;
}

std::vector<sObject> findObjects(const Words& words) {
    std::vector<sObject> objects;
    for (const std::string& word : words)
        objects.push_back(findObject(word));
    return objects;
}

std::vector<sRow> readRows(const CSegment& segment, const std::vector<sObject>& objects) {
    std::vector<sRow> rows;
    rows.reserve(objects.size());
    for (const sObject& object : objects)
        rows.push_back({object, segment.read(object)});
    return rows;
}

std::vector<sRow> readExisting(const CSegment& segment) {
    std::vector<sRow> rows = readRows(segment, allObjects());
    const auto isAbsent = [](const sRow& row) { return row.contents.state == eState::ABSENT; };
    rows.erase(std::remove_if(rows.begin(), rows.end(), isAbsent), rows.end());
    return rows;
}

void nameThoseWithoutValues(const std::vector<sRow>& rows) {
    for (const sRow& row : rows) {
        if (isPresent(row)) continue;
        std::cerr << "shmconf: " << row.object.name << ' ' << describe(row) << '\n';
    }
}

bool isIdentity(const sRow& row) {
    return row.object.id == hxl_config_handler::DEV_TYPE_ID;
}

std::string readInput(const std::string& file) {
    std::ostringstream text;
    if (file == "-") {
        text << std::cin.rdbuf();
    } else {
        std::ifstream input(file, std::ios::binary);
        text << input.rdbuf();
        if (!input) throw CToolError(STATUS_USAGE, "cannot read " + file);
    }
    return text.str();
}

void print(std::ostream& out, const std::vector<sRow>& rows, eFormat format) {
    switch (format) {
        case eFormat::COLUMNS:
            return printTable(out, rows);
        case eFormat::JSON:
            out << toJson(rows);
            return;
        case eFormat::RAW:
            return printRaw(out, rows);
    }
}

// Peers may do so; a person has mistaken something.
void warnOfThirdChannel(const sObject& object, std::size_t channel) {
    if (!isByChannel(object) || channel <= hxl_config_handler::CHANNEL_COUNT) return;
    std::cerr << "shmconf: " << object.name << " is by channel, and there is no channel " << channel
              << '\n';
}

void printChanged(std::ostream& out, const std::vector<sRow>& rows) {
    signal(SIGPIPE, SIG_IGN);
    printTable(out, rows);
    out.flush();
    if (out) return;
    std::cerr << "shmconf: done, but the output could not be written\n";
    out.clear();
}

}  // namespace

void listObjects(std::ostream& out, bool all, eFormat format) {
    const std::vector<sRow> rows =
        all ? readRows(CSegment(false), allObjects()) : readExisting(CSegment(false));
    if (rows.empty()) {
        std::cerr << "shmconf: the segment holds none of the objects; --all lists them\n";
    }
    print(out, rows, format);
}

eExitStatus getObjects(std::ostream& out, const Words& objects, eFormat format) {
    const std::vector<sObject> found = findObjects(objects);
    const std::vector<sRow> rows = readRows(CSegment(false), found);
    print(out, rows, format);
    if (format == eFormat::RAW) nameThoseWithoutValues(rows);
    return std::all_of(rows.begin(), rows.end(), isPresent) ? STATUS_DONE : STATUS_FAILED;
}

eExitStatus dumpObjects(std::ostream& out) {
    const std::vector<sRow> rows = readExisting(CSegment(false));
    out << toJson(rows);
    nameThoseWithoutValues(rows);
    return std::all_of(rows.begin(), rows.end(), isPresent) ? STATUS_DONE : STATUS_FAILED;
}

void loadObjects(std::ostream& out, const sLoadOptions& options) {
    std::vector<sRow> rows = fromJson(readInput(options.file));
    CSegment segment(options.create);
    const auto identity = std::find_if(rows.begin(), rows.end(), isIdentity);
    if (identity != rows.end() && !options.identity) {
        if (describe({identity->object, segment.read(identity->object)}) != describe(*identity)) {
            std::cerr << "shmconf: the identity was left as it is, not made " << describe(*identity)
                      << "; --identity writes it\n";
        }
        rows.erase(identity);
    }
    for (const sRow& row : rows)
        segment.write(row.object, row.contents.values);
    out << "wrote " << rows.size() << (rows.size() == 1 ? " object\n" : " objects\n");
}

void setObject(std::ostream& out, const std::string& object, const Words& values, bool create) {
    const sObject found = findObject(object);
    const Values parsed = parseValues(found.element, values);
    warnOfThirdChannel(found, values.size());
    CSegment segment(create);
    segment.write(found, parsed);
    printChanged(out, readRows(segment, {found}));
}

void setElement(std::ostream& out, const std::string& object, const sElement& element,
                const Words& values) {
    const sObject found = findObject(object);
    if (values.size() != 1) throw CToolError(STATUS_USAGE, "one element takes one value");
    if (element.channel && !isByChannel(found)) {
        throw CToolError(STATUS_USAGE, std::string(found.name) + " is not by channel; use --index");
    }
    const Values parsed = parseValues(found.element, values);
    CSegment segment(false);
    if (element.channel) warnOfThirdChannel(found, *element.channel);
    segment.writeElement(found, element.channel ? *element.channel - 1 : *element.index, parsed);
    printChanged(out, readRows(segment, {found}));
}

eExitStatus unsetObjects(std::ostream& out, const Words& objects) {
    const std::vector<sObject> found = findObjects(objects);
    CSegment segment(false);
    eExitStatus status = STATUS_DONE;
    for (const sObject& object : found) {
        if (segment.remove(object)) continue;
        std::cerr << "shmconf: " << object.name << " did not exist\n";
        status = STATUS_FAILED;
    }
    printChanged(out, readRows(segment, found));
    return status;
}

void watchObjects(std::ostream& out, const Words& objects, const sWatchOptions& options) {
    const std::vector<sObject> found = objects.empty() ? allObjects() : findObjects(objects);
    watch(out, CSegment(false), found, options);
}

void printDirectory(std::ostream& out) {
    for (const sObject& object : allObjects())
        out << object.id << ' ' << object.name << ' ' << typeName(object.element) << '\n';
}

}  // namespace shmconf
