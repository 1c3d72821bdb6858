#include "storage/durable_change.h"

#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "framework/exit_gate.h"

namespace core_utils {

namespace {

constexpr std::int64_t PAGE_SIZE_IN_BYTES = 4096;

bool isWritable(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

bool readAt(int descriptor, std::int64_t offset, char* buffer, std::size_t size) {
    while (size > 0) {
        const ssize_t read = pread(descriptor, buffer, size, offset);
        if (read < 0 && errno == EINTR) continue;
        if (read <= 0) return false;
        buffer += read;
        offset += read;
        size -= static_cast<std::size_t>(read);
    }
    return true;
}

bool writeAt(int descriptor, std::int64_t offset, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = pwrite(descriptor, text.data(), text.size(), offset);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        offset += written;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool store(int descriptor) {
    return fsync(descriptor) == 0;
}

// `before` at `offset` is replaced by `after`.
struct sChange {
    std::int64_t offset;
    std::string_view before;
    std::string_view after;

    std::int64_t endBefore() const { return offset + static_cast<std::int64_t>(before.size()); }
    std::int64_t endAfter() const { return offset + static_cast<std::int64_t>(after.size()); }

    // Leaves out what both have in common: the beginning, and the end of texts of one length.
    void trim() {
        const auto first = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
        const auto prefix = static_cast<std::size_t>(first.first - before.begin());
        offset += static_cast<std::int64_t>(prefix);
        before.remove_prefix(prefix);
        after.remove_prefix(prefix);
        if (before.size() != after.size()) return;
        while (!before.empty() && before.back() == after.back()) {
            before.remove_suffix(1);
            after.remove_suffix(1);
        }
    }

    // True if storage takes it as one write of one block.
    bool isOneWrite(std::int64_t block) const {
        return before.size() == after.size() && offset / block == (endAfter() - 1) / block;
    }
};

bool changeInPlace(int descriptor, const sChange& change) {
    const std::size_t lengthBefore = change.before.size();
    const std::size_t lengthAfter = change.after.size();
    const bool grows = lengthAfter > lengthBefore;
    const bool shrinks = lengthAfter < lengthBefore;
    const std::string room(grows ? lengthAfter - lengthBefore : 0, '\n');
    std::string text(change.after);
    if (!text.empty() && shrinks) text.resize(lengthBefore, '\n');

    const bool changed =
        (!grows || (writeAt(descriptor, change.endBefore(), room) && store(descriptor))) &&
        (text.empty() || (writeAt(descriptor, change.offset, text) && store(descriptor))) &&
        (!shrinks || (ftruncate(descriptor, change.endAfter()) == 0 && store(descriptor)));
    if (changed) return true;
    writeAt(descriptor, change.offset, change.before);
    // Undo. A change of length always reaches to the end of the file, another does not.
    if (lengthBefore == lengthAfter || ftruncate(descriptor, change.endBefore()) == 0)
        store(descriptor);
    return false;
}

bool copy(int from, int to, std::int64_t begin, std::int64_t end) {
    char buffer[PAGE_SIZE_IN_BYTES];
    while (begin < end) {
        const auto size = static_cast<std::size_t>(std::min(end - begin, PAGE_SIZE_IN_BYTES));
        if (!readAt(from, begin, buffer, size)) return false;
        if (!writeAt(to, begin, {buffer, size})) return false;
        begin += static_cast<std::int64_t>(size);
    }
    return true;
}

// Gives the empty file `to` the attributes and the changed content of the file `from`.
bool fill(int to, int from, const struct stat& status, const sChange& change) {
    // A change of length always reaches to the end of the file: the last copy is then empty.
    return fchown(to, status.st_uid, status.st_gid) == 0 &&
           fchmod(to, status.st_mode & 07777) == 0 && copy(from, to, 0, change.offset) &&
           writeAt(to, change.offset, change.after) &&
           copy(from, to, change.endBefore(), status.st_size) && store(to);
}

bool storeFolderOf(char* path) {
    *(std::strrchr(path, '/') + 1) = '\0';
    const int folder = ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return false;
    const bool stored = store(folder);
    ::close(folder);
    return stored;
}

enum class eNewFile { IMPOSSIBLE, NOT_STORED, STORED };

eNewFile changeByNewFile(int descriptor, const char* path, const struct stat& status,
                         const sChange& change) {
    char target[PATH_MAX];
    char name[PATH_MAX + sizeof ".new"];
    struct stat named {};
    if (status.st_nlink != 1 || realpath(path, target) == nullptr || stat(target, &named) != 0 ||
        named.st_dev != status.st_dev || named.st_ino != status.st_ino) {
        return eNewFile::IMPOSSIBLE;
    }
    std::snprintf(name, sizeof name, "%s.new", target);
    unlink(name);  // from an earlier crash
    const int created = ::open(name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (created < 0) return eNewFile::IMPOSSIBLE;
    const bool renamed =
        fill(created, descriptor, status, change) && std::rename(name, target) == 0;
    // Cannot fail: both are open.
    if (renamed) dup3(created, descriptor, O_CLOEXEC);
    ::close(created);
    if (!renamed) {
        unlink(name);
        return eNewFile::IMPOSSIBLE;
    }
    return storeFolderOf(target) ? eNewFile::STORED : eNewFile::NOT_STORED;
}

}  // namespace

bool changeDurably(int descriptor, const char* path, std::int64_t offset, std::int64_t length,
                   std::string_view text) {
    const CExitGate::CWork work;
    struct stat status {};
    if (fstat(descriptor, &status) != 0) return false;
    const auto size = static_cast<std::size_t>(length);
    // Fails now, before anything is changed, if the file may not be cut.
    if (length > 0 && size != text.size() && ftruncate(descriptor, status.st_size) != 0) {
        std::printf("truncate fail : %d \n", errno);
        return false;
    }
    std::string before(size, '\0');
    if (!isWritable(descriptor) || !readAt(descriptor, offset, before.data(), size)) return false;

    sChange change{offset, before, text};
    change.trim();
    if (change.before.empty() && change.after.empty()) return true;
    const std::int64_t block = std::clamp<std::int64_t>(status.st_blksize, 1, PAGE_SIZE_IN_BYTES);
    if (!change.isOneWrite(block)) {
        const eNewFile result = changeByNewFile(descriptor, path, status, change);
        if (result != eNewFile::IMPOSSIBLE) return result == eNewFile::STORED;
    }
    return changeInPlace(descriptor, change);
}

}  // namespace core_utils
