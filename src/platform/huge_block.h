// Large blocks for pools and arenas, aligned to two megabytes and, once a process
// holds many of them, backed by huge pages where the system offers them: a
// two-megabyte page costs one page fault where 4 KiB pages cost 512.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace tessmeta {

// The size of the blocks AllocateHugeBlock hands out.
inline constexpr std::size_t kHugeBlockBytes = std::size_t{2} << 20;

// While the blocks a process holds come to no more than this, new ones are left to
// small pages; only blocks beyond it are advised as huge pages. A huge page must
// come from a free run of two megabytes, and a virtual machine that reports free
// memory to its host has handed exactly those back, so each costs the host's
// backing afresh; small pages come first from the pieces freed a moment ago, which
// nobody reported. Past a gigabyte few such pieces are left, and huge pages fault
// 512 times less.
inline constexpr std::size_t kSmallPageBlockBytes = std::size_t{1} << 30;

// `bytes` (a multiple of kHugeBlockBytes) of zeroed memory aligned to
// kHugeBlockBytes, advised as huge pages beyond kSmallPageBlockBytes, or null where
// that cannot be had (the caller then takes ordinary storage). Give it back with
// FreeHugeBlock.
void* AllocateHugeBlock(std::size_t bytes) noexcept;
void FreeHugeBlock(void* block, std::size_t bytes) noexcept;

// Zeroed storage for an array of `bytes`: from huge blocks (rounded up to whole
// ones) at kHugeBlockBytes and over where the system has them, else from the heap.
// A large array stays untouched, and costs no memory, until used (an index sized at
// a load but filed on first use). Throws std::bad_alloc. Give it back with
// FreeArray and the same `bytes`.
void* AllocateArray(std::size_t bytes);
void FreeArray(void* array, std::size_t bytes) noexcept;

// An allocator for vectors of trivial elements that grow large (id slots): their
// arrays come from AllocateArray, zeroed, and a new element is left as the zeroed
// storage holds it rather than written again. On huge pages the zeros cost nothing
// until touched, where value-initialising them would touch every page twice.
// Only for a vector that never shrinks while it holds storage (empty it by
// swapping with an empty one): an element that comes back after a shrink would
// keep its old value.
template <class T>
struct CZeroedArrayAllocator {
    using value_type = T;
    CZeroedArrayAllocator() = default;
    template <class U>
    CZeroedArrayAllocator(const CZeroedArrayAllocator<U>&) noexcept {}
    T* allocate(std::size_t n) { return static_cast<T*>(AllocateArray(n * sizeof(T))); }
    void deallocate(T* p, std::size_t n) noexcept { FreeArray(p, n * sizeof(T)); }
    template <class U, class... Args>
    void construct(U* p, Args&&... args) {
        if constexpr (sizeof...(Args) == 0)
            ::new (static_cast<void*>(p)) U;  // the storage's zeros stand
        else
            ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...);
    }
    template <class U>
    bool operator==(const CZeroedArrayAllocator<U>&) const noexcept {
        return true;
    }
};

// While one lives, a helper thread keeps up to `ahead` blocks of kHugeBlockBytes
// mapped and faulted in, and AllocateHugeBlock hands those out first. A long fill
// (a model's load) then finds most of its fresh pages already there: the kernel
// zeroes them on the second core while the fill reads the file on the first (on a
// virtual machine that first touch of a page costs about as much as reading it).
// Blocks left over when the last one goes are unmapped. Nests and may be used
// from several threads; without threads or huge pages it does nothing.
class CHugeBlockWarmer {
  public:
    explicit CHugeBlockWarmer(int ahead = 1);
    ~CHugeBlockWarmer();
    CHugeBlockWarmer(const CHugeBlockWarmer&) = delete;
    CHugeBlockWarmer& operator=(const CHugeBlockWarmer&) = delete;
};

}  // namespace tessmeta
