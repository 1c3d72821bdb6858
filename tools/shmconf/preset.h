// The preset memories, by the names of their settings.
#ifndef SHMCONF_PRESET_H
#define SHMCONF_PRESET_H

#include <cstddef>
#include <iosfwd>
#include <string>

namespace shmconf {

// The words of a command line: `setting` is a key, or a beginning of a key that no other has; upper
// and lower case are the same.
struct sPresetValue {
    std::string setting;
    std::size_t channel = 1;  // counted from 1
    std::string value;
};

// Both print to `out` and throw CToolError. Another number than 1 to 5 has no settings.
void showPreset(std::ostream& out, int number, bool json);
// Prints the setting as it is afterwards.
void changePreset(std::ostream& out, int number, const sPresetValue& change);

}  // namespace shmconf

#endif
