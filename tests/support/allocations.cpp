#include "support/allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local int gCount = 0;
thread_local int gFailing = 0;

}  // namespace

void support::countAllocations(int number) {
    gCount = 0;
    gFailing = number;
}

int support::allocations() {
    return gCount;
}

void* operator new(std::size_t size) {
    void* block = ++gCount == gFailing ? nullptr : std::malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
// Not inline: the compiler would see free() take what another operator new has given.
[[gnu::noinline]] void operator delete(void* block) noexcept {
    std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
