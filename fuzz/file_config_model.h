// A second configuration file class: the same operations on a string of the file's bytes, slow
// and simple. The fuzzer compares the real one with it, step by step.
#ifndef FUZZ_FILE_CONFIG_MODEL_H
#define FUZZ_FILE_CONFIG_MODEL_H

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace fuzz {

class CFileConfigModel {
  public:
    std::string bytes;
    std::string printed;

    bool open(const std::string& /*path*/, const std::string& /*mode*/) {
        const bool wasOpen = mOpen;
        mOpen = true;
        return !wasOpen;
    }

    void close() { mOpen = false; }

    bool readValue(const char* section, const char* key, char* buffer, int* ioSize) const {
        const int capacity = *ioSize;
        *ioSize = -1;
        if (!mOpen || std::strlen(section) > 77) return false;
        const sPlace place = find(section, key);
        if (place.line == npos) return false;
        const std::string line = chunkAt(place.line);
        const auto isBlank = [](unsigned char character) { return character <= 32; };
        const auto equals = std::find(line.begin(), line.end(), '=');
        const auto begin = std::find_if_not(equals + 1, line.end(), isBlank);
        const std::string value(begin, std::find_if(begin, line.end(), isBlank));
        if (value.empty()) *ioSize = capacity;
        if (value.empty() || value.find('=') != npos) return false;
        *ioSize = static_cast<int>(value.size());
        if (*ioSize >= capacity) return false;
        value.copy(buffer, value.size());
        buffer[value.size()] = '\0';
        return true;
    }

    bool read(const std::string& section, const std::string& key, int& out) {
        return lookUp("int", section, key, [&](const char* text) { out = std::atoi(text); });
    }
    bool read(const std::string& section, const std::string& key, std::string& out) {
        return lookUp("str", section, key, [&](const char* text) { out = text; });
    }
    bool read(const std::string& section, const std::string& key, float& out) {
        return lookUp("int", section, key,
                      [&](const char* text) { out = static_cast<float>(std::atof(text)); });
    }
    bool read(const std::string& section, const std::string& key, double& out) {
        return lookUp("int", section, key, [&](const char* text) { out = std::stod(text); });
    }

    bool writeValue(const char* section, const char* key, const char* value, int length,
                    bool noCreate) {
        if (!mOpen || std::strlen(section) > 77 || length == 0) return false;
        const sPlace place = find(section, key);
        std::string line = std::string(key) + "=" + value + "\n";
        if (line.size() == 81 || (place.line == npos && noCreate)) return false;
        line.resize(std::min<std::size_t>(line.size(), 80));
        const std::string header = "[" + std::string(section) + "]\n";
        if (place.line != npos) {
            const std::size_t size = chunkAt(place.line).size();
            if (line.size() == size) {
                bytes.replace(place.line, size, line);
            } else {
                const bool shorter = line.size() < size;
                replaceFrom(place.line, line, shorter ? lineEnd(place.line) : place.line + size);
            }
        } else if (place.header != npos) {
            replaceFrom(place.header, header + line, place.header + chunkAt(place.header).size());
        } else {
            if (!bytes.empty() && bytes.back() != '\n') bytes += '\n';
            bytes += "\n" + header + line;
        }
        return true;
    }
    bool write(const std::string& section, const std::string& key, const std::string& value,
               bool noCreate) {
        return writeValue(section.c_str(), key.c_str(), value.c_str(),
                          static_cast<int>(value.size()), noCreate);
    }
    bool write(const std::string& section, const std::string& key, int value, bool noCreate) {
        return write(section, key, std::to_string(value), noCreate);
    }
    bool write(const std::string& section, const std::string& key, double value, bool noCreate) {
        return write(section, key, std::to_string(value), noCreate);
    }

    bool removeKey(const char* section, const char* key) {
        if (!mOpen || std::strlen(section) > 77) return false;
        const sPlace place = find(section, key);
        if (place.line != npos) replaceFrom(place.line, "", lineEnd(place.line));
        return place.line != npos;
    }

  private:
    static constexpr std::size_t npos = std::string::npos;

    // Offsets of the chunks found: the key's line and the header before it, or else the last
    // header of that name.
    struct sPlace {
        std::size_t header = npos;
        std::size_t line = npos;
    };

    std::string chunkAt(std::size_t offset) const {
        const std::size_t newline = bytes.find('\n', offset);
        return bytes.substr(offset,
                            newline == npos ? 80 : std::min(newline + 1 - offset, std::size_t{80}));
    }

    sPlace find(const std::string& section, const std::string& key) const {
        const std::string header = "[" + section + "]";
        sPlace place;
        bool inSection = false;
        std::string chunk;
        for (std::size_t at = 0; at < bytes.size(); at += chunk.size()) {
            chunk = chunkAt(at);
            const std::size_t equals = chunk.find('=');
            if (chunk[0] == '[') {
                inSection = chunk.compare(0, header.size(), header) == 0;
                if (inSection) place.header = at;
            } else if (inSection && chunk[0] != '#' && equals != npos && equals > 0 &&
                       chunk.substr(0, equals) == key) {
                place.line = at;
                break;
            }
        }
        return place;
    }

    // Past all chunks of the line that begins at `at`.
    std::size_t lineEnd(std::size_t at) const {
        std::string chunk;
        do {
            chunk = chunkAt(at);
            at += chunk.size();
        } while (chunk.size() == 80 && chunk.back() != '\n');
        return at;
    }

    // Puts `text` in the place of [begin, end) and tidies what follows.
    void replaceFrom(std::size_t begin, const std::string& text, std::size_t end) {
        std::string result = bytes.substr(0, begin) + text;
        std::string chunk;
        bool continuation = false;
        for (; end < bytes.size(); end += chunk.size()) {
            chunk = chunkAt(end);
            const std::size_t equals = chunk.find('=');
            const bool isKey = equals != npos && equals > 0;
            if (!isKey && chunk[0] == '[' && !continuation) result += '\n';
            if (isKey || chunk[0] == '[' || chunk[0] == '#' || continuation) result += chunk;
            continuation = chunk.size() == 80;
        }
        bytes = result;
    }

    template <typename Assign>
    bool lookUp(const char* type, const std::string& section, const std::string& key,
                Assign assign) {
        char value[100];
        int size = sizeof(value);
        if (readValue(section.c_str(), key.c_str(), value, &size)) {
            assign(value);
            return true;
        }
        printed += std::string("[CFileConfig::read ") + type + "] FAILED to read [" + section +
                   "]:[" + key + "]\n";
        return false;
    }

    bool mOpen = false;
};

constexpr const char* FILE_ACTIONS[] = {"close",     "open",      "remove",     "read raw",
                                        "read int",  "read text", "read float", "read double",
                                        "write raw", "write int", "write text", "write double"};

// One call, the same on either class.
struct sFileOperation {
    std::string action;
    std::string section;
    std::string key;
    std::string value;
    int number = 0;  // the int to write, the double times 8, the capacity or the length
    bool noCreate = false;
};

// Performs the call and returns all that it gives back, as text.
template <typename File>
std::string perform(File& file, const std::string& path, const sFileOperation& call) {
    const char* const section = call.section.c_str();
    const char* const key = call.key.c_str();
    const auto readTyped = [&](auto out) {
        std::ostringstream result;
        result << file.read(section, key, out);
        result << ' ' << out;
        return result.str();
    };
    try {
        if (call.action == "open") return std::to_string(file.open(path, "r+b"));
        if (call.action == "remove") return std::to_string(file.removeKey(section, key));
        if (call.action == "read raw") {
            std::string buffer(static_cast<std::size_t>(call.number), '~');
            int size = call.number;
            const bool found = file.readValue(section, key, buffer.data(), &size);
            return std::to_string(found) + ' ' + std::to_string(size) + ' ' + buffer;
        }
        if (call.action == "read int") return readTyped(-7);
        if (call.action == "read text") return readTyped(std::string("before"));
        if (call.action == "read float") return readTyped(-7.5F);
        if (call.action == "read double") return readTyped(-7.5);
        bool written = false;
        if (call.action == "write int")
            written = file.write(section, key, call.number, call.noCreate);
        else if (call.action == "write text")
            written = file.write(section, key, call.value, call.noCreate);
        else if (call.action == "write double")
            written = file.write(section, key, call.number / 8.0, call.noCreate);
        else if (call.action == "write raw")
            written = file.writeValue(section, key, call.value.c_str(), call.number, call.noCreate);
        else
            file.close();
        return std::to_string(written);
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace fuzz

#endif
