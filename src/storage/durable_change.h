// Changes a file so that a power cut, a kill or a full disk leaves the old file or the new one.
#ifndef STORAGE_DURABLE_CHANGE_H
#define STORAGE_DURABLE_CHANGE_H

#include <cstdint>
#include <string_view>

namespace core_utils {

// Puts `text` in the place of the `length` bytes at `offset` of the file behind `descriptor`, which
// `path` names, and forces it to storage. They must be the file's last bytes if `text` has another
// length. Only what differs is written.
//
// What stays within one block and has the same length is overwritten in one write. Everything else
// goes into a new file, PATH.new, with the old one's owner and mode, which is stored and takes the
// name over; the descriptor then refers to it. Where that cannot be done (no permission, no room, a
// mount point, a second hard link) it is done in place, in an order in which the file is at each
// moment the old or the new one with nothing but line ends behind it: line ends make room and are
// stored; one write puts the text over them and the old text, with line ends to the old length, and
// is stored; then the file is cut. A power cut may then store one block and not the next, or leave
// NUL characters in the place of the line ends: what a cut takes away reaches the disk as zeros
// before the file's new length does.
//
// False: the old bytes are there. There are two exceptions: the storage may refuse the old bytes
// too, and if the folder of a new file cannot be stored, the new file is in use already.
// Prints the error number if a file that has to be cut cannot be. Throws std::bad_alloc, and has
// then changed nothing.
bool changeDurably(int descriptor, const char* path, std::int64_t offset, std::int64_t length,
                   std::string_view text);

}  // namespace core_utils

#endif
