#include "shmconf/segment.h"

#include "shmconf/tool_error.h"

namespace shmconf {

namespace {

using core_utils::CPeerSegment;
using eOutcome = CPeerSegment::eOutcome;

void require(const CPeerSegment::sResult& result) {
    switch (result.outcome) {
        case eOutcome::DONE:
            return;
        case eOutcome::NO_SEGMENT:
            throw CToolError(STATUS_NO_SEGMENT,
                             result.reason + ": neither the daemon nor a peer has run");
        case eOutcome::UNUSABLE:
        case eOutcome::REPLACED:
        case eOutcome::LOCKED:
        case eOutcome::DAMAGED:
            throw CToolError(STATUS_NO_SEGMENT, result.reason);
        default:
            throw CToolError(STATUS_FAILED, result.reason);
    }
}

void requireWritten(const sObject& object, CPeerSegment::sResult result) {
    result.reason = std::string(object.name) + " was not written: " + result.reason;
    require(result);
}

}  // namespace

CSegment::CSegment(bool create) {
    require(create ? mSegment.open() : mSegment.attach());
}

sContents CSegment::read(const sObject& object) const {
    sContents contents{eState::PRESENT, emptyValues(object.element)};
    const auto result =
        std::visit([&](auto& values) { return mSegment.read(object.id, values); }, contents.values);
    if (result.outcome == eOutcome::NO_OBJECT) {
        contents.state = eState::ABSENT;
    } else if (result.outcome == eOutcome::NO_VECTOR) {
        contents.state = eState::UNREADABLE;
    } else {
        require(result);
    }
    return contents;
}

void CSegment::write(const sObject& object, const Values& values) {
    requireWritten(
        object,
        std::visit([&](const auto& elements) { return mSegment.write(object.id, elements); },
                   values));
}

void CSegment::writeElement(const sObject& object, std::size_t index, const Values& value) {
    requireWritten(object, std::visit(
                               [&](const auto& elements) {
                                   using Value =
                                       typename std::decay_t<decltype(elements)>::value_type;
                                   return mSegment.set<Value>(object.id, index, elements.at(0));
                               },
                               value));
}

bool CSegment::remove(const sObject& object) {
    const auto result = mSegment.remove(object.id);
    if (result.outcome == eOutcome::NO_OBJECT) return false;
    require(result);
    return true;
}

}  // namespace shmconf
