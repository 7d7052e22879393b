#include "platform/huge_block.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace tessmeta {

#if defined(__linux__) && defined(MADV_HUGEPAGE)

namespace {

// Bytes of huge blocks mapped and not yet given back, process-wide.
std::atomic<std::size_t> g_blockBytes{0};

void* MapHugeBlock(std::size_t bytes) noexcept {
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
    const std::size_t before = g_blockBytes.fetch_add(bytes, std::memory_order_relaxed);
    if (before + bytes > kSmallPageBlockBytes)
        ::madvise(reinterpret_cast<void*>(aligned), bytes, MADV_HUGEPAGE);
    return reinterpret_cast<void*>(aligned);
}

void UnmapHugeBlock(void* block, std::size_t bytes) noexcept {
    ::munmap(block, bytes);
    g_blockBytes.fetch_sub(bytes, std::memory_order_relaxed);
}

// Faults every page of a fresh block in. Writing zeros keeps the block as a fresh
// mapping reads, where the system cannot populate it without writing.
void Prefault(void* block) noexcept {
#if defined(MADV_POPULATE_WRITE)
    if (::madvise(block, kHugeBlockBytes, MADV_POPULATE_WRITE) == 0) return;
#endif
    const std::size_t page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    auto* bytes = static_cast<volatile char*>(block);
    for (std::size_t at = 0; at < kHugeBlockBytes; at += page)
        bytes[at] = 0;
}

// While any warmer lives, one helper thread keeps blocks faulted in ahead.
class CWarmStock {
  public:
    static CWarmStock& Get() {
        static CWarmStock stock;
        return stock;
    }

    void* Take() {
        std::lock_guard lock(m_mutex);
        if (m_ready.empty()) return nullptr;
        void* block = m_ready.back();
        m_ready.pop_back();
        if (m_sleepers > 0) m_changed.notify_all();
        return block;
    }

    void Start(int ahead) {
        std::lock_guard lock(m_mutex);
        if (m_warmers++ > 0) return;
        m_ahead = static_cast<std::size_t>(ahead > 0 ? ahead : 1);
        const unsigned generation = ++m_generation;
        try {
            m_thread = std::thread([this, generation] { Fill(generation); });
        } catch (...) {
            // No thread: allocations simply fault their own pages.
        }
    }

    void Stop() {
        std::thread thread;
        std::vector<void*> left;
        {
            std::lock_guard lock(m_mutex);
            if (--m_warmers > 0) return;
            m_changed.notify_all();
            thread.swap(m_thread);
        }
        if (thread.joinable()) thread.join();
        {
            std::lock_guard lock(m_mutex);
            if (m_warmers > 0) return;  // a new warmer came meanwhile and keeps the stock
            left.swap(m_ready);
        }
        for (void* block : left)
            UnmapHugeBlock(block, kHugeBlockBytes);
    }

  private:
    // Runs until the last warmer goes or a newer thread takes over.
    void Fill(unsigned generation) {
        std::unique_lock lock(m_mutex);
        while (m_warmers > 0 && m_generation == generation) {
            if (m_ready.size() < m_ahead) {
                lock.unlock();
                void* block = MapHugeBlock(kHugeBlockBytes);
                if (block) Prefault(block);
                lock.lock();
                if (!block) return;
                m_ready.push_back(block);
            } else {
                ++m_sleepers;
                m_changed.wait(lock);
                --m_sleepers;
            }
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<void*> m_ready;  // mapped, faulted in, untouched since
    std::thread m_thread;
    std::size_t m_ahead = 1;
    int m_sleepers = 0;  // filling threads waiting to be told of a change
    int m_warmers = 0;
    unsigned m_generation = 0;
};

}  // namespace

void* AllocateHugeBlock(std::size_t bytes) noexcept {
    if (bytes == kHugeBlockBytes)
        if (void* block = CWarmStock::Get().Take()) return block;
    return MapHugeBlock(bytes);
}

void FreeHugeBlock(void* block, std::size_t bytes) noexcept {
    if (block) UnmapHugeBlock(block, bytes);
}

CHugeBlockWarmer::CHugeBlockWarmer(int ahead) {
    CWarmStock::Get().Start(ahead);
}

CHugeBlockWarmer::~CHugeBlockWarmer() {
    CWarmStock::Get().Stop();
}

namespace {
constexpr bool kHaveHugeBlocks = true;
}  // namespace

#else

namespace {
constexpr bool kHaveHugeBlocks = false;
}  // namespace

void* AllocateHugeBlock(std::size_t) noexcept {
    return nullptr;
}
void FreeHugeBlock(void*, std::size_t) noexcept {}
CHugeBlockWarmer::CHugeBlockWarmer(int) {}
CHugeBlockWarmer::~CHugeBlockWarmer() {}

#endif

namespace {

// The whole huge blocks an array of `bytes` takes, or 0 for one from the heap.
std::size_t HugeArrayBytes(std::size_t bytes) {
    if (!kHaveHugeBlocks || bytes < kHugeBlockBytes) return 0;
    return (bytes + kHugeBlockBytes - 1) / kHugeBlockBytes * kHugeBlockBytes;
}

}  // namespace

void* AllocateArray(std::size_t bytes) {
    if (const std::size_t huge = HugeArrayBytes(bytes)) {
        void* block = AllocateHugeBlock(huge);  // fresh mappings read as zeros
        if (!block) throw std::bad_alloc();
        return block;
    }
    // calloc: a large array comes as fresh pages, untouched until used.
    void* array = std::calloc(bytes ? bytes : 1, 1);
    if (!array) throw std::bad_alloc();
    return array;
}

void FreeArray(void* array, std::size_t bytes) noexcept {
    if (const std::size_t huge = HugeArrayBytes(bytes)) {
        FreeHugeBlock(array, huge);
    } else {
        std::free(array);
    }
}

}  // namespace tessmeta
