#include "confcheck/lines.h"

#include <algorithm>

#include "ini_file/chunk_syntax.h"
#include "support/closest.h"
#include "support/format.h"

namespace confcheck {

namespace {

using core_utils::isBlank;
using tools::quoted;

constexpr char BYTE_ORDER_MARK[] = "\xef\xbb\xbf";

std::string trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return std::string(text);
}

bool startsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

// Whether "#" behind a value can only be meant as the beginning of a comment.
bool canHaveComment(eKind kind) {
    return kind != eKind::TEXT && kind != eKind::TEXTS && kind != eKind::IDENTITY;
}

}  // namespace

CLines::CLines(const sConfigFile& file) {
    for (const auto* items : {&file.items, &file.others}) {
        for (const sItem& item : *items)
            mItems[item.section].push_back(&item);
    }
}

void CLines::take(std::string_view chunk, bool cutOff) {
    checkCharacters(chunk);
    const std::string key(core_utils::keyOf(chunk));
    if (mChunks > 0) {
        takeRest(chunk);
    } else if (mLine == 1 && startsWith(chunk, BYTE_ORDER_MARK)) {
        report("begins with a byte order mark, which hides this line");
    } else if (core_utils::isHeader(chunk)) {
        takeHeader(chunk);
    } else if (!key.empty()) {
        takeKeyLine(chunk, key);
    } else {
        takeText(chunk);
    }
    ++mChunks;
    if (cutOff) return;
    ++mLine;
    mChunks = 0;
    mbComment = mbValueCut = mbRestReported = mbNulReported = false;
}

std::vector<sFinding> CLines::findings() const {
    std::vector<sFinding> findings = mFindings;
    if (mCrLines > 0) {
        findings.push_back({mFirstCrLine, "CR before the line end: it counts as a blank"});
        if (mCrLines > 1) {
            findings.back().reason += " (here and on " + std::to_string(mCrLines - 1) + " more)";
        }
    }
    return findings;
}

int CLines::lineOf(const sItem& item) const {
    const auto line = mKeyLines.find({item.section, item.key});
    return line == mKeyLines.end() ? 0 : line->second;
}

void CLines::checkCharacters(std::string_view chunk) {
    if (chunk.find('\0') != std::string_view::npos && !mbNulReported) {
        report("holds a NUL character: it counts as a blank");
        mbNulReported = true;
    }
    if (chunk.size() < 2 || chunk.substr(chunk.size() - 2) != "\r\n") return;
    if (mCrLines++ == 0) mFirstCrLine = mLine;
}

// True if `chunk` is the header of a section that somebody reads.
bool CLines::enterSection(std::string_view chunk) {
    const auto section = std::find_if(mItems.begin(), mItems.end(), [&](const auto& entry) {
        return core_utils::isHeaderOf(chunk, entry.first);
    });
    if (section == mItems.end()) {
        mPlace = ePlace::UNKNOWN_SECTION;
        return false;
    }
    mPlace = ePlace::SECTION;
    mSection = section->first;
    mSections.insert(mSection);
    return true;
}

const sItem* CLines::findItem(const std::string& key) const {
    if (mPlace != ePlace::SECTION) return nullptr;
    for (const sItem* item : mItems.at(mSection)) {
        if (item->key == key) return item;
    }
    return nullptr;
}

// A further chunk of a line, which counts as a line of its own.
void CLines::takeRest(std::string_view chunk) {
    const std::string key(core_utils::keyOf(chunk));
    const auto column = static_cast<std::size_t>(mChunks) * core_utils::CHUNK_SIZE;
    std::string effect;
    if (core_utils::isHeader(chunk)) {
        enterSection(chunk);
        effect = "what follows counts as a header";
    } else if (!key.empty()) {
        if (findItem(key) != nullptr) mKeyLines.emplace(std::pair(mSection, key), mLine);
        effect = "what follows counts as a line with the key " + quoted(key);
    } else if (mbValueCut && mChunks == 1 && !isBlank(chunk.front())) {
        effect = "the value ends there";
    } else if (!mbComment && !trimmed(chunk).empty()) {
        effect = "what follows is ignored";
    }
    if (effect.empty() || mbRestReported) return;
    report("is too long and is cut after " + std::to_string(column) + " characters: " + effect);
    mbRestReported = true;
}

void CLines::takeHeader(std::string_view chunk) {
    const std::size_t end = chunk.find(']');
    const std::string rest =
        end == std::string_view::npos ? std::string() : trimmed(chunk.substr(end + 1));
    if (enterSection(chunk)) {
        if (rest.find('=') != std::string::npos && rest.front() != '#') {
            report("what follows the header is ignored: " + quoted(rest));
        }
        return;
    }
    std::vector<std::string> names;
    for (const auto& [section, items] : mItems)
        names.push_back(section);
    const std::string name =
        trimmed(chunk.substr(1, end == std::string_view::npos ? end : end - 1));
    report((end == std::string_view::npos ? "header without \"]\", " : "unknown section, ") +
           quoted(name) + ": nothing in it is read; the closest is " +
           quoted(tools::closestOf(name, names)));
}

void CLines::takeKeyLine(std::string_view chunk, const std::string& key) {
    if (mPlace == ePlace::UNKNOWN_SECTION) return;
    if (mPlace == ePlace::OUTSIDE) return report("stands outside a section: it is never read");
    const sItem* item = findItem(key);
    if (item == nullptr) return report(whyUnknown(key));

    const auto [first, isFirst] = mKeyLines.emplace(std::pair(mSection, key), mLine);
    if (!isFirst) {
        return report(key + " is listed again: line " + std::to_string(first->second) + " counts");
    }
    const std::string_view value = core_utils::valueOf(chunk);
    const char* valueEnd = value.data() + value.size();
    const char* chunkEnd = chunk.data() + chunk.size();
    mbValueCut = !value.empty() && valueEnd == chunkEnd;
    if (value.empty()) return;
    const std::string rest =
        trimmed(chunk.substr(static_cast<std::size_t>(valueEnd - chunk.data())));
    if (rest.empty() || (rest.front() == '#' && canHaveComment(item->kind))) return;
    report("the value ends at its first blank: " + quoted(rest) + " is ignored");
}

std::string CLines::whyUnknown(const std::string& key) const {
    const std::string name = trimmed(key);
    if (name.empty()) return "a key of blanks is never read";
    if (name.front() == '#') {
        return "a comment begins at the first column: this is an unknown key, " + quoted(key);
    }
    if (name != key && findItem(name) != nullptr) {
        return "there is a blank in the key " + quoted(key) + ": it is never found";
    }
    std::vector<std::string> names;
    for (const sItem* item : mItems.at(mSection))
        names.push_back(item->key);
    std::vector<std::string> homes;
    for (const auto& [section, items] : mItems) {
        for (const sItem* item : items) {
            if (item->key == name) homes.push_back(section);
        }
    }
    if (!homes.empty()) {
        return "the key " + quoted(key) + " belongs in [" + tools::closestOf(mSection, homes) + "]";
    }
    return "unknown key " + quoted(key) + "; the closest is " +
           quoted(tools::closestOf(name, names));
}

void CLines::takeText(std::string_view chunk) {
    mbComment = chunk.front() == '#';
    const std::string text = trimmed(chunk);
    if (mbComment || text.empty() || mPlace == ePlace::UNKNOWN_SECTION) return;
    switch (text.front()) {
        case '=':
            return report("there is no key before the \"=\": the line is ignored");
        case '#':
            return report("a comment begins at the first column: a rewrite drops this line");
        case '[':
            return report("a header begins at the first column: this is none");
        default:
            report("a line without \"=\" is ignored, and a rewrite drops it");
    }
}

}  // namespace confcheck
