// The instrument's shared settings for processes in C, or in any language that calls C. The library
// is peer_segment; it behaves as CPeerSegment in peer_segment.h. Names and types of the objects are
// in the table of docs/shared-memory.md.
//
// Each call but peer_segment_close() and peer_segment_error() returns a peer_segment_outcome. It
// waits at most 1 s for the segment's lock; opening waits at most 1 s more for a process that is
// creating the segment. Several threads may use one segment at once; close it when none does.
#ifndef SHARED_MEMORY_PEER_SEGMENT_C_H
#define SHARED_MEMORY_PEER_SEGMENT_C_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

// The values are part of the binary interface and never change.
enum peer_segment_outcome {
    PEER_SEGMENT_DONE = 0,
    PEER_SEGMENT_NO_SEGMENT = 1,      // the segment does not exist
    PEER_SEGMENT_UNUSABLE = 2,        // cannot be attached to: not finished, not permitted, no room
    PEER_SEGMENT_REPLACED = 3,        // the segment was removed: close it and open it again
    PEER_SEGMENT_UNKNOWN_OBJECT = 4,  // the directory has no such name
    PEER_SEGMENT_TYPE_MISMATCH = 5,   // its elements are of another type
    PEER_SEGMENT_NO_OBJECT = 6,       // nobody has written the object yet
    PEER_SEGMENT_NO_VECTOR = 7,       // the object cannot be a vector of this type
    PEER_SEGMENT_FULL = 8,            // no room in the segment; the object is unchanged
    PEER_SEGMENT_LOCKED = 9,          // a live process kept the lock for 1 s
    PEER_SEGMENT_DAMAGED = 10,        // a process without this library has died in a change
    PEER_SEGMENT_TIME_OUT = 11,       // no change within the limit
    PEER_SEGMENT_NO_ELEMENT = 12,     // the object has no element at the index
    PEER_SEGMENT_TOO_SMALL = 100,     // the caller's buffer; *count or *size says what is needed
    PEER_SEGMENT_NO_MEMORY = 101      // this process is out of memory
};

// Flags of peer_segment_open(), to be combined with |.
enum peer_segment_flag {
    PEER_SEGMENT_CREATE = 1,       // creates the segment if there is none
    PEER_SEGMENT_ATTACH_AGAIN = 2  // attaches again after a removal, instead of REPLACED
};

typedef struct peer_segment peer_segment;

// Attaches to the segment. The caller owns *segment and closes it; it is null on failure.
int peer_segment_open(peer_segment** segment, int flags);

// Detaches; the objects stay. Null is allowed.
void peer_segment_close(peer_segment* segment);

// The reason of this thread's last failed call. Never null; valid until the next failure.
const char* peer_segment_error(void);

// Reads a whole object. `*count` is the capacity of `values` in elements, and becomes the number of
// elements in the object. On failure `values` is unchanged.
int peer_segment_read_doubles(peer_segment* segment, const char* object, double* values,
                              size_t* count);
int peer_segment_read_bytes(peer_segment* segment, const char* object, unsigned char* values,
                            size_t* count);

// Reads one text, with a terminating NUL. `*size` is the capacity of `text` in bytes, and becomes
// the size of the text with its NUL.
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

// Reads, changes and writes as one access. `change` may modify the `count` values and returns 0; on
// any other result nothing is written. All users of the segment wait while it runs: it must be
// short and must not wait, print or use the segment. It gets `context` as it was given.
int peer_segment_update_doubles(peer_segment* segment, const char* object,
                                int (*change)(double* values, size_t count, void* context),
                                void* context);
int peer_segment_update_bytes(peer_segment* segment, const char* object,
                              int (*change)(unsigned char* values, size_t count, void* context),
                              void* context);

// Waits until the object's values differ from the `*count` ones in `values`, and then reads them as
// peer_segment_read_doubles() does, with room for `capacity` elements. Looks at once, then every
// `period_ms`; TIME_OUT after `limit_ms`.
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
