// The settings of a preset memory by name, for a process beside the daemon. A preset memory
// consists of two shared objects, numbers and states, as the preset schema lays down.
#ifndef PEER_PRESET_H
#define PEER_PRESET_H

#include <string>
#include <vector>

#include "config/schema/preset_schema.h"
#include "shared_memory/peer_segment.h"

namespace core_utils {

// Where a setting lies: channel 1 in the object's element `index`, channel 2 in the next one.
struct sPresetField {
    const char* key;   // as in the preset file: "VoltageSet"
    const char* unit;  // "V"; empty for a state, and where the unit is not known
    const sSharedObject* object;
    std::size_t index;
};

// The 17 settings of preset memory `number`, 1 to 5, in order; empty for another number.
std::vector<sPresetField> presetFields(int number);

// The functions below block and fail as CPeerSegment's operations do. They return UNKNOWN_OBJECT
// for a number that is not 1 to 5. Reading and writing a memory access its two objects one after
// the other.

// On failure `block` is unchanged. Elements that an object lacks are read as 0.
CPeerSegment::sResult readPreset(const CPeerSegment& segment, int number,
                                 hxl_config_handler::sPresetBlock& block);

// Replaces all settings, creating the objects if they do not exist.
CPeerSegment::sResult writePreset(CPeerSegment& segment, int number,
                                  const hxl_config_handler::sPresetBlock& block);

// Changes one setting of one channel, counted from 1, in one access: concurrent changes of other
// settings are not lost. UNKNOWN_OBJECT for an unknown key, NO_ELEMENT for a channel that the
// preset does not have, TYPE_MISMATCH for a state that is not a whole number from 0 to 255.
CPeerSegment::sResult setPreset(CPeerSegment& segment, int number, const std::string& key,
                                int channel, double value);

}  // namespace core_utils

#endif
