// The device string that peers publish, and what it tells about the instrument.
#ifndef CONFIG_MANAGER_DEVICE_IDENTITY_H
#define CONFIG_MANAGER_DEVICE_IDENTITY_H

#include <string>
#include <utility>

namespace hxl_config_handler {

// The device string of a type and a channel count; empty for a pair that no model has. The KOL
// family has two channels, whatever count is given.
std::string devStringOf(int devType, int chnCount);

// (device type, channel count) of a device string; (0, 0) for an empty text and for "UNKNOWN". Any
// other text is a 35 V model unless it names another one, and has two channels unless it contains
// "1CH".
std::pair<int, int> identityOf(const std::string& devString);

// How long a text must stay unchanged before it counts as a whole device string, in ms: 0 for the
// usual strings and for a text without an identity. Another text may be a write in progress: its
// writer can be halted half-way, by a page of code that is loaded from flash, and half a string
// often names another model. The time is longer if the text is a prefix of a known string.
int settlingTimeMs(const std::string& devString);

}  // namespace hxl_config_handler

#endif
