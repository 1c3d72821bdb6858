// The one reader and writer of every configuration file: INI-like sections and keys, edited in
// place. docs/configuration-files.md shows the syntax with its limits.
#ifndef INI_FILE_FILE_CONFIG_H
#define INI_FILE_FILE_CONFIG_H

#include <cstdint>
#include <string>
#include <string_view>

#include "storage/locked_file.h"

namespace core_utils {

// `text` as C reads a floating-point number. Throws std::invalid_argument if it begins with none
// and std::out_of_range if a double cannot hold it; both say "stod" with every C++ library, as
// the text ends up in printed lines.
double toDouble(const char* text);

class CChunkReader;

// Works on a file that stays open between open() and close(). Every access scans it from its
// start, in chunks of at most 80 characters; nothing is cached. Every change is in storage when the
// call returns, and whatever ends it leaves the old file or the new one
// (storage/durable_change.h); one that fails leaves the old.
//
// One thread at a time, and no second object on the same file. All operations return false when
// the file is closed, a section name has more than 77 characters, the system reports an error, or
// there is no memory for what a rewrite has to move, which then changes nothing. The double reader
// alone throws.
class CFileConfig {
  public:
    // Collects the changes made while it lives, which reads see, and makes them one: all reach the
    // file or none. One at a time for a file, which has to be open and to outlive it; closing the
    // file drops what was collected, and so does the end of the batch.
    class CBatch {
      public:
        // Loads the file. If that fails, every change and commit() do.
        explicit CBatch(CFileConfig& file);
        CBatch(const CBatch&) = delete;
        CBatch& operator=(const CBatch&) = delete;
        ~CBatch();

        // Makes the changes; the file's own operations then work on it directly again. True if
        // there are none. False if memory ran out in one of them, too: the file is as it was.
        bool commit();

      private:
        friend class CFileConfig;
        CFileConfig& mFile;
        std::string mImage;
        std::int64_t mSize = 0;  // of the file
        bool mbValid = false;
    };

    CFileConfig() = default;
    virtual ~CFileConfig() = default;

    // `mode` as fopen takes it: "r+b" to write (the file must exist), "rb" to read. False, and
    // nothing changed, if a file is open already. What is no regular file fails at once, too, where
    // a FIFO would have to be waited for; a symbolic link to one is followed.
    bool open(const char* path, const char* mode);
    bool open(const std::string& path, const std::string& mode);

    // False if the file was not open or its data may not have reached storage.
    bool close();

    bool isOpen() const;

    // Looks up the value of `key`, its first blank-free token, at most 78 characters.
    // `*ioSize` is the capacity of `buffer` in bytes on entry. True: the value is in `buffer`,
    // terminated, and `*ioSize` is its length. False: `*ioSize` is the length that did not fit,
    // or -1 for no such key or a value with another "=" in it; an empty value leaves it alone.
    bool readValue(const char* section, const char* key, char* buffer, int* ioSize);

    // Typed lookups. On failure they print which section and key and leave `out` alone. Text that
    // is no number reads as 0, except that the double reader throws what toDouble() does.
    bool read(const std::string& section, const std::string& key, int& out);
    bool read(const std::string& section, const std::string& key, std::string& out);
    bool read(const std::string& section, const std::string& key, float& out);
    bool read(const std::string& section, const std::string& key, double& out);

    // Writes the line "key=value". A value of the same length is overwritten in place; otherwise
    // the rest of the file is rewritten without its blank lines and other text, with one blank
    // line before each section. A missing key becomes the first of its section and a missing
    // section is appended, unless `noCreate` is set: then false, and the file is unchanged.
    // A line of exactly 81 characters is refused; a longer one is cut to 80, its line end lost.
    bool writeValue(const char* section, const char* key, const char* value, int valueLength,
                    bool noCreate = false);

    // Typed writers; a double gets six decimals. An empty text is refused.
    bool write(const std::string& section, const std::string& key, int value,
               bool noCreate = false);
    bool write(const std::string& section, const std::string& key, const std::string& value,
               bool noCreate = false);
    bool write(const std::string& section, const std::string& key, double value,
               bool noCreate = false);

    // Deletes the key's line and rewrites the rest like a write. False if there is no such key.
    bool removeKey(const char* section, const char* key);

  private:
    // Writes a new section, header and line, to the end of the file.
    bool append(const char* section);

    // Puts `head` and what a rewrite keeps of `rest` in the place of all from `offset` on.
    bool rewriteFrom(std::int64_t offset, const char* head, CChunkReader& rest);

    // Changes the file or the batch's image of it. The first is silent without memory.
    bool replace(std::int64_t offset, std::int64_t length, std::string_view text);
    bool replaceOrThrow(std::int64_t offset, std::int64_t length, std::string_view text);

    bool getSize(std::int64_t& size);
    bool getLastCharacter(char& last);

    // What is read while a batch lives; null for the file itself.
    const std::string* image() const { return mpBatch != nullptr ? &mpBatch->mImage : nullptr; }
    bool isUsable(const char* section, const char* key) const;

    CLockedFile mFile;
    CBatch* mpBatch = nullptr;
};

}  // namespace core_utils

#endif
