// The rows of files whose keys have one number each, which all end up in one vector of doubles.
#ifndef CONFIG_SCHEMA_NUMBER_ROW_H
#define CONFIG_SCHEMA_NUMBER_ROW_H

#include <cstddef>

namespace hxl_config_handler {

// Which reader of CFileConfig takes the value: non-numeric text throws from that of DOUBLE and is
// 0 to the others.
enum class eNumber { INTEGER, FLOAT, DOUBLE };

struct sNumberRow {
    const char* key;
    eNumber type;
    double fallback;    // if the key cannot be read
    std::size_t index;  // of the value in the shared vector
    const char* unit = "";
};

// True if the rows fill a vector of their number without a gap.
template <std::size_t COUNT>
constexpr bool haveOneIndexEach(const sNumberRow (&rows)[COUNT]) {
    for (std::size_t index = 0; index < COUNT; ++index) {
        int found = 0;
        for (const sNumberRow& row : rows)
            found += row.index == index ? 1 : 0;
        if (found != 1) return false;
    }
    return true;
}

}  // namespace hxl_config_handler

#endif
