#include "shared_memory/peer_segment_c.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "shared_memory/peer_segment.h"

using core_utils::CPeerSegment;
using eOutcome = CPeerSegment::eOutcome;
using sResult = CPeerSegment::sResult;

static_assert(static_cast<int>(eOutcome::TYPE_MISMATCH) == PEER_SEGMENT_TYPE_MISMATCH);
static_assert(static_cast<int>(eOutcome::NO_ELEMENT) == PEER_SEGMENT_NO_ELEMENT);

struct peer_segment {
    CPeerSegment segment;
};

namespace {

// A fixed array: it must be able to hold the message for lack of memory.
thread_local char lastError[256] = "";

int fail(int outcome, const std::string& reason) {
    const std::size_t length = reason.copy(lastError, sizeof(lastError) - 1);
    lastError[length] = '\0';
    return outcome;
}

// Runs `access`, which returns an sResult or an outcome; no exception leaves.
template <typename Access>
int run(Access access) {
    try {
        return access();
    } catch (const std::bad_alloc&) {
        std::strcpy(lastError, "no memory");
        return PEER_SEGMENT_NO_MEMORY;
    }
}

int toOutcome(const sResult& result) {
    return result ? PEER_SEGMENT_DONE : fail(static_cast<int>(result.outcome), result.reason);
}

template <typename T>
int copyOut(const std::vector<T>& from, T* values, std::size_t capacity, std::size_t* count) {
    *count = from.size();
    if (from.size() > capacity) {
        return fail(PEER_SEGMENT_TOO_SMALL, "the array has room for " + std::to_string(capacity) +
                                                " of " + std::to_string(from.size()));
    }
    std::copy(from.begin(), from.end(), values);
    return PEER_SEGMENT_DONE;
}

template <typename T>
int readValues(peer_segment* segment, const char* object, T* values, std::size_t* count) {
    return run([&] {
        std::vector<T> read;
        const int outcome = toOutcome(segment->segment.read(object, read));
        return outcome == PEER_SEGMENT_DONE ? copyOut(read, values, *count, count) : outcome;
    });
}

template <typename T, typename Source>
int writeValues(peer_segment* segment, const char* object, const Source* values, size_t count) {
    return run([&] {
        return toOutcome(segment->segment.write(object, std::vector<T>(values, values + count)));
    });
}

template <typename T, typename Source>
int setValue(peer_segment* segment, const char* object, std::size_t index, Source value) {
    return run([&] { return toOutcome(segment->segment.set<T>(object, index, value)); });
}

template <typename T>
int updateValues(peer_segment* segment, const char* object,
                 int (*change)(T* values, size_t count, void* context), void* context) {
    return run([&] {
        return toOutcome(segment->segment.update<T>(object, [&](std::vector<T>& values) {
            std::vector<T> changed = values;
            if (change(changed.data(), changed.size(), context) == 0) values.swap(changed);
        }));
    });
}

template <typename T>
int waitForValues(peer_segment* segment, const char* object, T* values, std::size_t* count,
                  std::size_t capacity, unsigned int periodMs, unsigned int limitMs) {
    return run([&] {
        std::vector<T> known(values, values + *count);
        const int outcome = toOutcome(
            segment->segment.waitForChange(object, known, std::chrono::milliseconds(periodMs),
                                           std::chrono::milliseconds(limitMs)));
        return outcome == PEER_SEGMENT_DONE ? copyOut(known, values, capacity, count) : outcome;
    });
}

}  // namespace

int peer_segment_open(peer_segment** segment, int flags) {
    *segment = nullptr;
    return run([&] {
        const auto whenReplaced = (flags & PEER_SEGMENT_ATTACH_AGAIN) != 0
                                      ? CPeerSegment::eWhenReplaced::ATTACH_AGAIN
                                      : CPeerSegment::eWhenReplaced::FAIL;
        auto opened = std::make_unique<peer_segment>();
        const int outcome =
            toOutcome((flags & PEER_SEGMENT_CREATE) != 0 ? opened->segment.open(whenReplaced)
                                                         : opened->segment.attach(whenReplaced));
        if (outcome == PEER_SEGMENT_DONE) *segment = opened.release();
        return outcome;
    });
}

void peer_segment_close(peer_segment* segment) {
    delete segment;
}

const char* peer_segment_error(void) {
    return lastError;
}

int peer_segment_read_doubles(peer_segment* segment, const char* object, double* values,
                              size_t* count) {
    return readValues(segment, object, values, count);
}
int peer_segment_read_bytes(peer_segment* segment, const char* object, unsigned char* values,
                            size_t* count) {
    return readValues(segment, object, values, count);
}

int peer_segment_read_text(peer_segment* segment, const char* object, size_t index, char* text,
                           size_t* size) {
    return run([&] {
        std::vector<std::string> texts;
        const int outcome = toOutcome(segment->segment.read(object, texts));
        if (outcome != PEER_SEGMENT_DONE) return outcome;
        if (index >= texts.size()) {
            return fail(PEER_SEGMENT_NO_ELEMENT,
                        std::string(object) + " has no element at index " + std::to_string(index));
        }
        const std::string& found = texts[index];
        const std::vector<char> terminated(found.c_str(), found.c_str() + found.size() + 1);
        return copyOut(terminated, text, *size, size);
    });
}

int peer_segment_write_doubles(peer_segment* segment, const char* object, const double* values,
                               size_t count) {
    return writeValues<double>(segment, object, values, count);
}
int peer_segment_write_bytes(peer_segment* segment, const char* object, const unsigned char* values,
                             size_t count) {
    return writeValues<unsigned char>(segment, object, values, count);
}
int peer_segment_write_texts(peer_segment* segment, const char* object, const char* const* texts,
                             size_t count) {
    return writeValues<std::string>(segment, object, texts, count);
}

int peer_segment_set_double(peer_segment* segment, const char* object, size_t index, double value) {
    return setValue<double>(segment, object, index, value);
}
int peer_segment_set_byte(peer_segment* segment, const char* object, size_t index,
                          unsigned char value) {
    return setValue<unsigned char>(segment, object, index, value);
}
int peer_segment_set_text(peer_segment* segment, const char* object, size_t index,
                          const char* text) {
    return setValue<std::string>(segment, object, index, text);
}

int peer_segment_update_doubles(peer_segment* segment, const char* object,
                                int (*change)(double* values, size_t count, void* context),
                                void* context) {
    return updateValues(segment, object, change, context);
}
int peer_segment_update_bytes(peer_segment* segment, const char* object,
                              int (*change)(unsigned char* values, size_t count, void* context),
                              void* context) {
    return updateValues(segment, object, change, context);
}

int peer_segment_wait_doubles(peer_segment* segment, const char* object, double* values,
                              size_t* count, size_t capacity, unsigned int period_ms,
                              unsigned int limit_ms) {
    return waitForValues(segment, object, values, count, capacity, period_ms, limit_ms);
}
int peer_segment_wait_bytes(peer_segment* segment, const char* object, unsigned char* values,
                            size_t* count, size_t capacity, unsigned int period_ms,
                            unsigned int limit_ms) {
    return waitForValues(segment, object, values, count, capacity, period_ms, limit_ms);
}
