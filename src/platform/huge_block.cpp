#include "platform/huge_block.h"

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace tessmeta {

#if defined(__linux__) && defined(MADV_HUGEPAGE)

void* AllocateHugeBlock(std::size_t bytes) noexcept {
    // Map one huge page more than asked and trim both ends to the alignment.
    const std::size_t mappedBytes = bytes + kHugeBlockBytes;
    void* mapped =
        ::mmap(nullptr, mappedBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) return nullptr;
    const auto begin = reinterpret_cast<std::uintptr_t>(mapped);
    const std::uintptr_t aligned =
        (begin + kHugeBlockBytes - 1) / kHugeBlockBytes * kHugeBlockBytes;
    if (aligned > begin) ::munmap(mapped, aligned - begin);
    const std::uintptr_t end = begin + mappedBytes;
    if (aligned + bytes < end)
        ::munmap(reinterpret_cast<void*>(aligned + bytes), end - aligned - bytes);
    ::madvise(reinterpret_cast<void*>(aligned), bytes, MADV_HUGEPAGE);
    return reinterpret_cast<void*>(aligned);
}

void FreeHugeBlock(void* block, std::size_t bytes) noexcept {
    if (block) ::munmap(block, bytes);
}

#else

void* AllocateHugeBlock(std::size_t) noexcept {
    return nullptr;
}
void FreeHugeBlock(void*, std::size_t) noexcept {}

#endif

}  // namespace tessmeta
