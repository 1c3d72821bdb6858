#include "support/allocations.h"

#include <cstdlib>
#include <new>

void* operator new(std::size_t size) {
    const bool fails = ++support::allocationCount == support::failingAllocation;
    void* block = fails ? nullptr : std::malloc(size);
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
