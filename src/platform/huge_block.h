// Large blocks for pools and arenas, backed by huge pages where the system offers
// them: a two-megabyte page costs one page fault where 4 KiB pages cost 512, and on
// a virtual machine every fault is a trap into the hypervisor.
#pragma once

#include <cstddef>

namespace tessmeta {

// The size of the blocks AllocateHugeBlock hands out.
inline constexpr std::size_t kHugeBlockBytes = std::size_t{2} << 20;

// `bytes` (a multiple of kHugeBlockBytes) of zeroed memory aligned to
// kHugeBlockBytes and advised as huge pages, or null where that cannot be had (the
// caller then takes ordinary storage). Give it back with FreeHugeBlock.
void* AllocateHugeBlock(std::size_t bytes) noexcept;
void FreeHugeBlock(void* block, std::size_t bytes) noexcept;

}  // namespace tessmeta
