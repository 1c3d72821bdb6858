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

// What happens to text that is no number.
enum eFate { COUNTS_AS_ZERO, COUNTS_AS_SAVED, IS_DROPPED, IS_NOT_READ, ENDS_LOAD };
constexpr const char* FATES[] = {"it counts as 0", "the file counts as saved", "it is dropped",
                                 "it cannot be read", "it ends the load of the file"};

void addFault(sUse& use, const std::string& text, const std::string& fault) {
    use.faults.push_back(quoted(text) + " " + fault);
}

// Text that is no number, or only begins with one; the former has the `fate`.
void checkSpelling(sUse& use, const std::string& text, bool whole, eFate fate) {
    char* end = nullptr;
    if (whole) {
        std::strtol(text.c_str(), &end, 10);
    } else {
        std::strtod(text.c_str(), &end);
    }
    const auto length = static_cast<std::size_t>(end - text.c_str());
    if (length == 0) {
        addFault(use, text, std::string("is no number: ") + FATES[fate]);
    } else if (length < text.size()) {
        addFault(use, text,
                 "is no number from " + quoted(text.substr(length)) + " on, which is ignored");
    }
}

void checkFinite(sUse& use, const std::string& text, double number) {
    if (!std::isfinite(number)) addFault(use, text, "is used as " + tools::format(number));
}

void checkRange(sUse& use, const std::string& text, unsigned char byte) {
    const long number = std::strtol(text.c_str(), nullptr, 10);
    if (number >= 0 && number <= 0xFF) return;
    addFault(use, text, "is no byte: its low 8 bits count, " + tools::format(byte));
}

// Runs a conversion of the product that throws for text that is no number.
template <typename Convert>
void convertOrFail(sUse& use, const std::string& text, eFate fate, Convert convert) {
    try {
        return convert();
    } catch (const std::invalid_argument&) {
    } catch (const std::out_of_range&) {
        addFault(use, text, std::string("is too large or too small: ") + FATES[fate]);
    }
    use.endsLoad = fate == ENDS_LOAD;
    if (use.endsLoad || fate == IS_NOT_READ) use.readable = false;
}

std::string show(const std::string& text) {
    return text;
}
template <typename Number>
std::string show(Number number) {
    return tools::format(number);
}

// Shows the values of `use`, and whether the daemon could write them where they came from.
template <typename Values>
void setValues(sUse& use, const sItem& item, const Values& values) {
    for (const auto& value : values)
        use.value += (&value == &*std::begin(values) ? "" : ",") + show(value);
    const std::size_t length = item.key.size() + joinList(values).size() + 2;
    if (length <= LONGEST_LINE) return;
    use.faults.push_back("cannot be written back: a line has at most " +
                         std::to_string(LONGEST_LINE) + " characters with its end, this one " +
                         std::to_string(length));
}

void readIdentity(sUse& use, const sItem& item, const std::string& text) {
    setValues(use, item, std::vector<std::string>{text});
    const auto [devType, channels] = identityOf(text);
    use.note = devType == 0
                   ? "no identity"
                   : "device type " + std::to_string(devType) + ", " + std::to_string(channels) +
                         (channels == 1 ? " channel" : " channels");
    if (settlingTimeMs(text) > 0) {
        addFault(use, text, "is no usual device string: it counts as " + use.note);
    }
}

void readState(sUse& use, const std::string& text) {
    use.value = text;
    checkSpelling(use, text, true, COUNTS_AS_SAVED);
    convertOrFail(use, text, COUNTS_AS_SAVED, [&] {
        const unsigned char state = toByte(text);
        checkRange(use, text, state);
        use.value = tools::format(state);
        use.fresh = state == 0;
    });
    use.note = use.fresh ? "fresh: a load seeds factory defaults of one value each, and only "
                           "its changes are followed"
                         : "saved: a load publishes the values below";
}

void readDoubles(sUse& use, const sItem& item, const std::vector<std::string>& pieces) {
    std::vector<double> values;
    for (const std::string& piece : pieces) {
        checkSpelling(use, piece, false, ENDS_LOAD);
        convertOrFail(use, piece, ENDS_LOAD, [&] {
            values.push_back(toDouble(piece));
            checkFinite(use, piece, values.back());
        });
        if (use.endsLoad) return;
    }
    if (values.size() == 1) use.note = "one value: none for channel 2";
    setValues(use, item, values);
}

void readBytes(sUse& use, const sItem& item, const std::vector<std::string>& pieces) {
    std::vector<unsigned char> values;
    for (const std::string& piece : pieces) {
        checkSpelling(use, piece, true, IS_DROPPED);
        convertOrFail(use, piece, IS_DROPPED, [&] {
            values.push_back(toByte(piece));
            checkRange(use, piece, values.back());
        });
    }
    setValues(use, item, values);
}

void checkFit(sUse& use, const std::string& piece, float value) {
    checkSpelling(use, piece, false, COUNTS_AS_ZERO);
    checkFinite(use, piece, value);
}
void checkFit(sUse& use, const std::string& piece, unsigned char value) {
    checkSpelling(use, piece, true, COUNTS_AS_ZERO);
    checkRange(use, piece, value);
}

template <typename T>
void readPair(sUse& use, const sItem& item, const std::vector<std::string>& pieces) {
    std::vector<T> values(CHANNELS);
    for (std::size_t i = 0; i < CHANNELS && i < pieces.size(); ++i) {
        convert(pieces[i], values[i]);
        checkFit(use, pieces[i], values[i]);
    }
    if (pieces.size() < CHANNELS) use.faults.push_back("one value: channel 2 gets 0");
    setValues(use, item, values);
}

void checkCount(sUse& use, const char* things, const char* effect, std::size_t count,
                std::size_t most) {
    if (count <= most) return;
    use.faults.push_back(std::to_string(count) + " " + things + ": " + effect);
}

// One number, by the reader of its type.
template <typename Number>
void readNumber(sUse& use, CFileConfig& file, const sItem& item, const std::string& text,
                eFate fate) {
    constexpr bool WHOLE = std::is_integral_v<Number>;
    checkSpelling(use, text, WHOLE, fate);
    convertOrFail(use, text, fate, [&] {
        Number number{};
        use.readable = file.read(item.section, item.key, number);
        if constexpr (WHOLE) {
            if (std::strtoll(text.c_str(), nullptr, 10) != number) {
                addFault(use, text, "is too large or too small: it counts as " + show(number));
            }
        } else {
            checkFinite(use, text, number);
        }
        if (item.kind == eKind::FACTOR) return setValues(use, item, std::vector<Number>{number});
        use.value = show(number);
    });
}

void readList(sUse& use, const sItem& item, const std::string& text) {
    const std::vector<std::string> pieces = splitList(text);
    switch (item.kind) {
        case eKind::DOUBLES:
            readDoubles(use, item, pieces);
            return checkCount(use, "values", "there are two channels", pieces.size(), CHANNELS);
        case eKind::BYTES:
            readBytes(use, item, pieces);
            return checkCount(use, "values", "there are two channels", pieces.size(), CHANNELS);
        case eKind::FLOAT_PAIR:
            readPair<float>(use, item, pieces);
            return checkCount(use, "values", "the first two count", pieces.size(), CHANNELS);
        case eKind::BYTE_PAIR:
            readPair<unsigned char>(use, item, pieces);
            return checkCount(use, "values", "the first two count", pieces.size(), CHANNELS);
        default:
            setValues(use, item, pieces);
            return checkCount(use, "texts", "a comma ends one", pieces.size(), 1);
    }
}

}  // namespace

sUse readItem(CFileConfig& file, const sItem& item) {
    sUse use;
    char value[LONGEST_LINE + 1];
    int size = sizeof value;
    use.readable = file.readValue(item.section.c_str(), item.key.c_str(), value, &size);
    if (!use.readable) {
        use.faults.push_back(size < 0 ? "a value with a second \"=\" cannot be read"
                                      : "a key without a value cannot be read");
        return use;
    }
    const std::string text = value;
    switch (item.kind) {
        case eKind::TEXT:
            use.value = text;
            break;
        case eKind::IDENTITY:
            readIdentity(use, item, text);
            break;
        case eKind::STATE:
            readState(use, text);
            break;
        case eKind::INTEGER:
            readNumber<int>(use, file, item, text, COUNTS_AS_ZERO);
            break;
        case eKind::FLOAT:
            readNumber<float>(use, file, item, text, COUNTS_AS_ZERO);
            break;
        case eKind::DOUBLE:
            readNumber<double>(use, file, item, text, ENDS_LOAD);
            break;
        case eKind::FACTOR:
            readNumber<double>(use, file, item, text, IS_NOT_READ);
            break;
        default:
            readList(use, item, text);
    }
    return use;
}

}  // namespace confcheck
