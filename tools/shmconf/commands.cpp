#include "shmconf/commands.h"

#include <signal.h>

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

void print(std::ostream& out, const std::vector<sRow>& rows, eFormat format) {
    switch (format) {
        case eFormat::COLUMNS:
            return printTable(out, rows);
        case eFormat::JSON:
            return printJson(out, rows);
        case eFormat::RAW:
            return printRaw(out, rows);
    }
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
    std::vector<sRow> rows = readRows(CSegment(false), allObjects());
    if (!all) {
        const auto isAbsent = [](const sRow& row) { return row.contents.state == eState::ABSENT; };
        rows.erase(std::remove_if(rows.begin(), rows.end(), isAbsent), rows.end());
    }
    if (rows.empty()) {
        std::cerr << "shmconf: the segment holds none of the objects; --all lists them\n";
    }
    print(out, rows, format);
}

eExitStatus getObjects(std::ostream& out, const Words& objects, eFormat format) {
    const std::vector<sObject> found = findObjects(objects);
    const std::vector<sRow> rows = readRows(CSegment(false), found);
    print(out, rows, format);
    if (std::all_of(rows.begin(), rows.end(), isPresent)) return STATUS_DONE;
    if (format == eFormat::RAW) {
        for (const sRow& row : rows) {
            if (!isPresent(row)) {
                std::cerr << "shmconf: " << row.object.name << ' ' << describe(row) << '\n';
            }
        }
    }
    return STATUS_FAILED;
}

void setObject(std::ostream& out, const std::string& object, const Words& values, bool create) {
    const sObject found = findObject(object);
    const Values parsed = parseValues(found.element, values);
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
