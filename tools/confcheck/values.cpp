#include "confcheck/values.h"

#include <cmath>
#include <cstdlib>
#include <stdexcept>
#include <type_traits>

#include "config/manager/device_identity.h"
#include "config/schema/value_text.h"
#include "ini_file/chunk_syntax.h"
#include "support/format.h"

namespace confcheck {

namespace {

using namespace hxl_config_handler;
using core_utils::CFileConfig;
using tools::quoted;

constexpr std::size_t CHANNELS = 2;
constexpr std::size_t LONGEST_LINE = core_utils::CHUNK_SIZE;

// How the daemon treats non-numeric text.
enum eEffect { COUNTS_AS_ZERO, COUNTS_AS_SAVED, IS_DROPPED, IS_NOT_READ, ENDS_LOAD };
constexpr const char* EFFECTS[] = {"it counts as 0", "the file counts as saved", "it is dropped",
                                   "it cannot be read", "it ends the load of the file"};

void addFault(sReading& reading, const std::string& text, const std::string& fault) {
    reading.faults.push_back(quoted(text) + " " + fault);
}

// Reports text that is not a number, which has the `effect`, or that only begins with one.
void checkSpelling(sReading& reading, const std::string& text, bool whole, eEffect effect) {
    char* end = nullptr;
    if (whole) {
        std::strtol(text.c_str(), &end, 10);
    } else {
        std::strtod(text.c_str(), &end);
    }
    const auto length = static_cast<std::size_t>(end - text.c_str());
    if (length == 0) {
        addFault(reading, text, std::string("is no number: ") + EFFECTS[effect]);
    } else if (length < text.size()) {
        addFault(reading, text,
                 "is no number from " + quoted(text.substr(length)) + " on, which is ignored");
    }
}

void checkFinite(sReading& reading, const std::string& text, double number) {
    if (!std::isfinite(number)) addFault(reading, text, "is used as " + tools::format(number));
}

void checkRange(sReading& reading, const std::string& text, unsigned char byte) {
    const long number = std::strtol(text.c_str(), nullptr, 10);
    if (number >= 0 && number <= 0xFF) return;
    addFault(reading, text, "is no byte: its low 8 bits count, " + tools::format(byte));
}

// Runs a conversion of the product that throws for non-numeric text.
template <typename Convert>
void convertOrFail(sReading& reading, const std::string& text, eEffect effect, Convert convert) {
    try {
        return convert();
    } catch (const std::invalid_argument&) {
    } catch (const std::out_of_range&) {
        addFault(reading, text, std::string("is too large or too small: ") + EFFECTS[effect]);
    }
    reading.endsLoad = effect == ENDS_LOAD;
    if (reading.endsLoad || effect == IS_NOT_READ) reading.readable = false;
}

std::string show(const std::string& text) {
    return text;
}
template <typename Number>
std::string show(Number number) {
    return tools::format(number);
}

// Shows the values of `reading`, and whether the daemon could write them where they came from.
template <typename Values>
void setValues(sReading& reading, const sItem& item, const Values& values) {
    for (const auto& value : values)
        reading.value += (&value == &*std::begin(values) ? "" : ",") + show(value);
    const std::size_t length = item.key.size() + joinList(values).size() + 2;
    if (length <= LONGEST_LINE) return;
    reading.faults.push_back("cannot be written back: a line has at most " +
                             std::to_string(LONGEST_LINE) + " characters with its end, this one " +
                             std::to_string(length));
}

void readIdentity(sReading& reading, const sItem& item, const std::string& text) {
    setValues(reading, item, std::vector<std::string>{text});
    const auto [devType, channels] = identityOf(text);
    reading.note = devType == 0
                       ? "no identity"
                       : "device type " + std::to_string(devType) + ", " +
                             std::to_string(channels) + (channels == 1 ? " channel" : " channels");
    if (settlingTimeMs(text) > 0) {
        addFault(reading, text, "is no usual device string: it counts as " + reading.note);
    }
}

void readState(sReading& reading, const std::string& text) {
    reading.value = text;
    checkSpelling(reading, text, true, COUNTS_AS_SAVED);
    convertOrFail(reading, text, COUNTS_AS_SAVED, [&] {
        const unsigned char state = toByte(text);
        checkRange(reading, text, state);
        reading.value = tools::format(state);
        reading.fresh = state == 0;
    });
    reading.note = reading.fresh
                       ? "fresh: a load seeds factory defaults of one value each, and only "
                         "its changes are followed"
                       : "saved: a load publishes the values below";
}

void readDoubles(sReading& reading, const sItem& item, const std::vector<std::string>& pieces) {
    std::vector<double> values;
    for (const std::string& piece : pieces) {
        checkSpelling(reading, piece, false, ENDS_LOAD);
        convertOrFail(reading, piece, ENDS_LOAD, [&] {
            values.push_back(toDouble(piece));
            checkFinite(reading, piece, values.back());
        });
        if (reading.endsLoad) return;
    }
    if (values.size() == 1) reading.note = "one value: none for channel 2";
    setValues(reading, item, values);
}

void readBytes(sReading& reading, const sItem& item, const std::vector<std::string>& pieces) {
    std::vector<unsigned char> values;
    for (const std::string& piece : pieces) {
        checkSpelling(reading, piece, true, IS_DROPPED);
        convertOrFail(reading, piece, IS_DROPPED, [&] {
            values.push_back(toByte(piece));
            checkRange(reading, piece, values.back());
        });
    }
    setValues(reading, item, values);
}

void checkFit(sReading& reading, const std::string& piece, float value) {
    checkSpelling(reading, piece, false, COUNTS_AS_ZERO);
    checkFinite(reading, piece, value);
}
void checkFit(sReading& reading, const std::string& piece, unsigned char value) {
    checkSpelling(reading, piece, true, COUNTS_AS_ZERO);
    checkRange(reading, piece, value);
}

template <typename T>
void readPair(sReading& reading, const sItem& item, const std::vector<std::string>& pieces) {
    std::vector<T> values(CHANNELS);
    for (std::size_t i = 0; i < CHANNELS && i < pieces.size(); ++i) {
        convert(pieces[i], values[i]);
        checkFit(reading, pieces[i], values[i]);
    }
    if (pieces.size() < CHANNELS) reading.faults.push_back("one value: channel 2 gets 0");
    setValues(reading, item, values);
}

void checkCount(sReading& reading, const char* things, const char* effect, std::size_t count,
                std::size_t most) {
    if (count <= most) return;
    reading.faults.push_back(std::to_string(count) + " " + things + ": " + effect);
}

// One number, by the reader of its type.
template <typename Number>
void readNumber(sReading& reading, CFileConfig& file, const sItem& item, const std::string& text,
                eEffect effect) {
    constexpr bool WHOLE = std::is_integral_v<Number>;
    checkSpelling(reading, text, WHOLE, effect);
    convertOrFail(reading, text, effect, [&] {
        Number number{};
        reading.readable = file.read(item.section, item.key, number);
        if constexpr (WHOLE) {
            if (std::strtoll(text.c_str(), nullptr, 10) != number) {
                addFault(reading, text, "is too large or too small: it counts as " + show(number));
            }
        } else {
            checkFinite(reading, text, number);
        }
        if (item.kind == eKind::FACTOR)
            return setValues(reading, item, std::vector<Number>{number});
        reading.value = show(number);
    });
}

void readList(sReading& reading, const sItem& item, const std::string& text) {
    const std::vector<std::string> pieces = splitList(text);
    switch (item.kind) {
        case eKind::DOUBLES:
            readDoubles(reading, item, pieces);
            return checkCount(reading, "values", "there are two channels", pieces.size(), CHANNELS);
        case eKind::BYTES:
            readBytes(reading, item, pieces);
            return checkCount(reading, "values", "there are two channels", pieces.size(), CHANNELS);
        case eKind::FLOAT_PAIR:
            readPair<float>(reading, item, pieces);
            return checkCount(reading, "values", "the first two count", pieces.size(), CHANNELS);
        case eKind::BYTE_PAIR:
            readPair<unsigned char>(reading, item, pieces);
            return checkCount(reading, "values", "the first two count", pieces.size(), CHANNELS);
        default:
            setValues(reading, item, pieces);
            return checkCount(reading, "texts", "a comma ends one", pieces.size(), 1);
    }
}

}  // namespace

sReading readItem(CFileConfig& file, const sItem& item) {
    sReading reading;
    char value[LONGEST_LINE + 1];
    int size = sizeof value;
    reading.readable = file.readValue(item.section.c_str(), item.key.c_str(), value, &size);
    if (!reading.readable) {
        reading.faults.push_back(size < 0 ? "a value with a second \"=\" cannot be read"
                                          : "a key without a value cannot be read");
        return reading;
    }
    const std::string text = value;
    switch (item.kind) {
        case eKind::TEXT:
            reading.value = text;
            break;
        case eKind::IDENTITY:
            readIdentity(reading, item, text);
            break;
        case eKind::STATE:
            readState(reading, text);
            break;
        case eKind::INTEGER:
            readNumber<int>(reading, file, item, text, COUNTS_AS_ZERO);
            break;
        case eKind::FLOAT:
            readNumber<float>(reading, file, item, text, COUNTS_AS_ZERO);
            break;
        case eKind::DOUBLE:
            readNumber<double>(reading, file, item, text, ENDS_LOAD);
            break;
        case eKind::FACTOR:
            readNumber<double>(reading, file, item, text, IS_NOT_READ);
            break;
        default:
            readList(reading, item, text);
    }
    return reading;
}

}  // namespace confcheck
