#include "shmconf/commands.h"

#include <algorithm>
#include <iostream>

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

void print(std::ostream& out, const std::vector<sRow>& rows, bool json) {
    if (json) {
        printJson(out, rows);
    } else {
        printTable(out, rows);
    }
}

}  // namespace

void listObjects(std::ostream& out, bool all, bool json) {
    std::vector<sRow> rows = readRows(CSegment(false), allObjects());
    if (!all) {
        const auto isAbsent = [](const sRow& row) { return row.contents.state == eState::ABSENT; };
        rows.erase(std::remove_if(rows.begin(), rows.end(), isAbsent), rows.end());
    }
    if (rows.empty()) {
        std::cerr << "shmconf: the segment holds none of the objects; --all lists them\n";
    }
    print(out, rows, json);
}

eExitStatus getObjects(std::ostream& out, const Words& objects, bool json) {
    const std::vector<sObject> found = findObjects(objects);
    const std::vector<sRow> rows = readRows(CSegment(false), found);
    print(out, rows, json);
    return std::all_of(rows.begin(), rows.end(), isPresent) ? STATUS_DONE : STATUS_FAILED;
}

void setObject(std::ostream& out, const std::string& object, const Words& values, bool create) {
    const sObject found = findObject(object);
    const Values parsed = parseValues(found.element, values);
    const CSegment segment(create);
    segment.write(found, parsed);
    printTable(out, readRows(segment, {found}));
}

void watchObjects(std::ostream& out, const Words& objects, const sWatchOptions& options) {
    const std::vector<sObject> found = objects.empty() ? allObjects() : findObjects(objects);
    watch(out, CSegment(false), found, options);
}

}  // namespace shmconf
