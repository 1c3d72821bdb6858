// The instrument's shared settings for processes in C, or in any language that calls C. The library
// is peer_segment; what it does is that of CPeerSegment in peer_segment.h, and names and types of
// the objects are the table in docs/shared-memory.md.
//
// Each call but peer_segment_close() and peer_segment_error() returns a peer_segment_outcome. It
// blocks while other processes hold the segment's lock, for at most 1 s, and opening for at most
// 1 s more. Several threads may use one segment at once, but only one may close it.
#ifndef SHARED_MEMORY_PEER_SEGMENT_C_H
#define SHARED_MEMORY_PEER_SEGMENT_C_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

// The numbers stay.
enum peer_segment_outcome {
    PEER_SEGMENT_DONE = 0,
    PEER_SEGMENT_NO_SEGMENT = 1,      // none has the name
    PEER_SEGMENT_UNUSABLE = 2,        // cannot be attached to: not finished, not permitted, no room
    PEER_SEGMENT_REPLACED = 3,        // it was removed: close it and open the next
    PEER_SEGMENT_UNKNOWN_OBJECT = 4,  // the directory has no such name
    PEER_SEGMENT_TYPE_MISMATCH = 5,   // its elements are of another type
    PEER_SEGMENT_NO_OBJECT = 6,       // nobody has written the object yet
    PEER_SEGMENT_NO_VECTOR = 7,       // what stands under the name cannot be a vector of this type
    PEER_SEGMENT_FULL = 8,            // no room in the segment; the object is as it was
    PEER_SEGMENT_LOCKED = 9,          // another process keeps the lock
    PEER_SEGMENT_DAMAGED = 10,        // a process without this library has died in a change
    PEER_SEGMENT_TIME_OUT = 11,       // no change within the limit
    PEER_SEGMENT_NO_ELEMENT = 12,     // the object has no element at the index
    PEER_SEGMENT_TOO_SMALL = 100,     // the caller's array; *count says what is needed
    PEER_SEGMENT_NO_MEMORY = 101      // of this process
};

// Of peer_segment_open(), to be added.
enum peer_segment_flag {
    PEER_SEGMENT_CREATE = 1,       // creates the segment if there is none
    PEER_SEGMENT_ATTACH_AGAIN = 2  // once it was removed, attaches to the next instead of REPLACED
};

typedef struct peer_segment peer_segment;

// Attaches to the segment. *segment is the caller's until it closes it, and null on failure.
int peer_segment_open(peer_segment** segment, int flags);

// Detaches; the objects stay. Null is allowed.
void peer_segment_close(peer_segment* segment);

// Why the last call of this thread that was not DONE was not. Never null; valid until the next.
const char* peer_segment_error(void);

// Reads a whole object. `*count` is how many elements `values` has room for, and becomes how many
// the object holds. On failure `values` stay.
int peer_segment_read_doubles(peer_segment* segment, const char* object, double* values,
                              size_t* count);
int peer_segment_read_bytes(peer_segment* segment, const char* object, unsigned char* values,
                            size_t* count);

// Reads one text, with a terminating NUL. `*size` is the room of `text` in bytes, and becomes what
// the text needs.
int peer_segment_read_text(peer_segment* segment, const char* object, size_t index, char* text,
                           size_t* size);

// Leaves exactly these values in the object, creating it if there is none.
int peer_segment_write_doubles(peer_segment* segment, const char* object, const double* values,
                               size_t count);
int peer_segment_write_bytes(peer_segment* segment, const char* object, const unsigned char* values,
                             size_t count);
int peer_segment_write_texts(peer_segment* segment, const char* object, const char* const* texts,
                             size_t count);

// Replaces one element; index 0 is channel 1 where elements are channels. A change that another
// process makes to another element at the same time is not lost.
int peer_segment_set_double(peer_segment* segment, const char* object, size_t index, double value);
int peer_segment_set_byte(peer_segment* segment, const char* object, size_t index,
                          unsigned char value);
int peer_segment_set_text(peer_segment* segment, const char* object, size_t index,
                          const char* text);

// Reads, changes and writes as one access. `change` may alter the `count` values, and returns 0;
// with anything else nothing is written. Everybody who uses the segment waits while it runs: it
// must be short, wait for nothing and not use the segment. `context` is handed on to it.
int peer_segment_update_doubles(peer_segment* segment, const char* object,
                                int (*change)(double* values, size_t count, void* context),
                                void* context);
int peer_segment_update_bytes(peer_segment* segment, const char* object,
                              int (*change)(unsigned char* values, size_t count, void* context),
                              void* context);

// Waits until the object holds something else than the `*count` values, and puts that there, as
// reading into `capacity` elements does. Looks at once, then every `period_ms`; TIME_OUT after
// `limit_ms`.
int peer_segment_wait_doubles(peer_segment* segment, const char* object, double* values,
                              size_t* count, size_t capacity, unsigned int period_ms,
                              unsigned int limit_ms);
int peer_segment_wait_bytes(peer_segment* segment, const char* object, unsigned char* values,
                            size_t* count, size_t capacity, unsigned int period_ms,
                            unsigned int limit_ms);

#ifdef __cplusplus
}
#endif

#endif
