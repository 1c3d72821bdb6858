// Reads and writes all configuration files: INI-like sections and keys.
// docs/configuration-files.md describes the syntax and its limits.
#ifndef INI_FILE_FILE_CONFIG_H
#define INI_FILE_FILE_CONFIG_H

#include <cstdint>
#include <string>
#include <string_view>

#include "storage/locked_file.h"

namespace core_utils {

class CChunkReader;

// The file stays open between open() and close(). Every access scans it from its start, in chunks
// of at most 80 characters; nothing is cached. A change is in storage when its call returns true;
// one that fails leaves the old file. Whatever interrupts a change, a power cut too, leaves the old
// file or the new one (storage/durable_change.h).
//
// One thread at a time, and no second object on the same file. All operations return false if the
// file is closed, a section name has more than 77 characters, the system reports an error or there
// is no memory for the part of the file that a rewrite moves. Only the double reader throws.
class CFileConfig {
  public:
    // While a batch exists, writes to the file change a copy in memory, and reads see that copy.
    // commit() writes it to the file as one change, so all of them reach the file or none. Closing
    // the file or destroying the batch drops changes that were not committed. The file must be
    // open, must outlive the batch and can have one batch at a time.
    class CBatch {
      public:
        // Reads the whole file. If that fails, every change and commit() fail.
        explicit CBatch(CFileConfig& file);
        CBatch(const CBatch&) = delete;
        CBatch& operator=(const CBatch&) = delete;
        ~CBatch();

        // Writes the changes and ends the batch: later operations work on the file again. Returns
        // false if this failed or memory ran out in one of the changes; the file is then unchanged.
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

    // `mode` is that of fopen: "r+b" to write (the file must exist), "rb" to read. Follows symbolic
    // links. Returns false if a file is open already, which then stays open, and for everything
    // that is not a regular file. Never blocks, not even on a FIFO.
    bool open(const char* path, const char* mode);
    bool open(const std::string& path, const std::string& mode);

    // Returns false if no file was open or its data may not be in storage.
    bool close();

    bool isOpen() const;

    // Looks up `key`. Its value is the first blank-free token, at most 78 characters. On entry
    // `*ioSize` is the capacity of `buffer` in bytes. On success `buffer` holds the value with a
    // terminating NUL and `*ioSize` is its length. On failure `*ioSize` is the length if the value
    // does not fit, unchanged if the value is empty, and -1 if there is no such key or the value
    // contains a "=".
    bool readValue(const char* section, const char* key, char* buffer, int* ioSize);

    // Typed lookups. On failure they print section and key and leave `out` unchanged. Non-numeric
    // text reads as 0, except in the double reader, which throws the exceptions of toDouble()
    // (number_text.h).
    bool read(const std::string& section, const std::string& key, int& out);
    bool read(const std::string& section, const std::string& key, std::string& out);
    bool read(const std::string& section, const std::string& key, float& out);
    bool read(const std::string& section, const std::string& key, double& out);

    // Writes the line "key=value". If its length changes, the rest of the file is rewritten: only
    // key lines, comments and headers stay, with one blank line before each header. A missing key
    // becomes the first key of its section, and a missing section is appended. With `noCreate` set,
    // a missing key or section returns false and changes nothing. A line of exactly 81 characters,
    // line feed included, is refused; a longer one is cut to 80 and so loses its line feed.
    // `valueLength` is only compared with 0: an empty value is refused.
    bool writeValue(const char* section, const char* key, const char* value, int valueLength,
                    bool noCreate = false);

    // Typed writers. A double is written with six decimals. An empty text is refused.
    bool write(const std::string& section, const std::string& key, int value,
               bool noCreate = false);
    bool write(const std::string& section, const std::string& key, const std::string& value,
               bool noCreate = false);
    bool write(const std::string& section, const std::string& key, double value,
               bool noCreate = false);

    // Deletes the line of `key` and rewrites the rest of the file as a write does. Returns false if
    // there is no such key.
    bool removeKey(const char* section, const char* key);

  private:
    // Appends `section`, a header and a key line, to the file.
    bool append(const char* section);

    // Replaces everything from `offset` on by `head` and the lines of `rest` that a rewrite keeps.
    bool rewriteFrom(std::int64_t offset, const char* head, CChunkReader& rest);

    // Change the file or the batch's copy of it. Without memory the first returns false and the
    // second throws.
    bool replace(std::int64_t offset, std::int64_t length, std::string_view text);
    bool replaceOrThrow(std::int64_t offset, std::int64_t length, std::string_view text);

    bool getSize(std::int64_t& size);
    bool getLastCharacter(char& last);

    // The batch's copy of the file, or null without a batch.
    const std::string* image() const { return mpBatch != nullptr ? &mpBatch->mImage : nullptr; }
    bool isUsable(const char* section, const char* key) const;

    CLockedFile mFile;
    CBatch* mpBatch = nullptr;
};

}  // namespace core_utils

#endif
