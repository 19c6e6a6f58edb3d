// The heap of the program: what is freed is overwritten at once. Words that were opened pass through strings,
// documents and layouts of many libraries, none of which clears what it lets go of; here it is done for all
// of them, so that a locked program has nothing left of them.
//
// Linked into a program it takes the C library's place for every library in it. Blocks that the C library
// mapped by themselves go back to the kernel, which clears them. Under a sanitizer, which keeps a heap of its
// own, there is none of this.

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define MORVANE_FOREIGN_HEAP
#endif
#endif

#if !defined(MORVANE_FOREIGN_HEAP) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" {

void __libc_free(void *block);
void *__libc_realloc(void *block, std::size_t size);

} // extern "C"

namespace {

// The word before a block holds its size and, in the low bits, how it came to be.
bool isMapped(const void *block)
{
    constexpr std::uintptr_t mappedBit = 2;
    return (static_cast<const std::uintptr_t *>(block)[-1] & mappedBit) != 0;
}

} // namespace

extern "C" {

void free(void *block)
{
    if (!block)
        return;
    if (!isMapped(block))
        std::memset(block, 0, malloc_usable_size(block));
    __libc_free(block);
}

// The C library would leave the former block as it was.
void *realloc(void *block, std::size_t size)
{
    if (!block)
        return std::malloc(size);
    if (isMapped(block))
        return __libc_realloc(block, size);
    const std::size_t former = malloc_usable_size(block);
    if (size > 0 && size <= former && size >= former / 2) {
        std::memset(static_cast<char *>(block) + size, 0, former - size);
        return block;
    }
    void *const moved = size > 0 ? std::malloc(size) : nullptr;
    if (size > 0 && !moved)
        return nullptr;
    if (moved)
        std::memcpy(moved, block, std::min(former, size));
    free(block);
    return moved;
}

} // extern "C"

#endif
