#include "shmconf/segment.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "shared_memory/shared_memory.h"
#include "shmconf/tool_error.h"

namespace shmconf {

namespace {

using core_utils::SEGMENT_NAME;

// The segment that CSharedMemory::open() attached to.
struct sShared : core_utils::CSharedMemory {
    static bool exists(const std::string& name) {
        return mpSharedMemory->find<unsigned char>(name.c_str()).first != nullptr;
    }
};

// Standard output is what a script reads: the library's own lines go to standard error.
class COutputToError {
  public:
    COutputToError() {
        std::fflush(stdout);
        mOutput = dup(STDOUT_FILENO);
        if (mOutput >= 0) dup2(STDERR_FILENO, STDOUT_FILENO);
    }
    COutputToError(const COutputToError&) = delete;
    COutputToError& operator=(const COutputToError&) = delete;
    ~COutputToError() {
        std::fflush(stdout);
        if (mOutput < 0) return;
        dup2(mOutput, STDOUT_FILENO);
        close(mOutput);
    }

  private:
    int mOutput = -1;
};

// The inode of the memory object that has the segment's name; 0, and errno set, if none does.
ino_t findSegment() {
    const int descriptor = shm_open((std::string("/") + SEGMENT_NAME).c_str(), O_RDONLY, 0);
    if (descriptor < 0) return 0;
    struct stat status {};
    const bool known = fstat(descriptor, &status) == 0;
    close(descriptor);
    return known ? static_cast<ino_t>(status.st_ino) : 0;
}

void requireSegment() {
    if (findSegment() != 0) return;
    const std::string name = SEGMENT_NAME;
    throw CToolError(STATUS_NO_SEGMENT,
                     errno == ENOENT
                         ? "there is no segment " + name + ": neither the daemon nor a peer has run"
                         : "cannot open the segment " + name + ": " + std::strerror(errno));
}

}  // namespace

CSegment::CSegment(bool create) {
    if (!create) requireSegment();
    const COutputToError redirected;
    if (!core_utils::CSharedMemory::open(SEGMENT_NAME, false)) {
        throw CToolError(STATUS_NO_SEGMENT, std::string("cannot attach to ") + SEGMENT_NAME +
                                                ", for the reason above");
    }
    mInode = findSegment();
}

sContents CSegment::read(const sObject& object) const {
    sContents contents{eState::ABSENT, emptyValues(object.element)};
    try {
        if (!sShared::exists(object.name)) return contents;
    } catch (const boost::interprocess::interprocess_exception& error) {
        throw CToolError(STATUS_NO_SEGMENT, std::string("cannot use the segment: ") + error.what());
    }
    const bool sound =
        std::visit([&object](auto& values) { return sShared::readVector(object.name, values); },
                   contents.values);
    contents.state = sound ? eState::PRESENT : eState::UNREADABLE;
    return contents;
}

void CSegment::write(const sObject& object, const Values& values) const {
    const std::string name = object.name;
    if (read(object).state == eState::UNREADABLE) {
        throw CToolError(STATUS_FAILED, name + " was not written: it is no vector of type " +
                                            typeName(object.element));
    }
    const COutputToError redirected;
    const bool written = std::visit(
        [&name](const auto& elements) { return sShared::writeVector(name, elements); }, values);
    if (written) return;
    std::fputs("\n", stderr);  // the library's line has no end
    throw CToolError(STATUS_FAILED, name + " was not written, for the reason above");
}

bool CSegment::isReplaced() const {
    return findSegment() != mInode;
}

}  // namespace shmconf
