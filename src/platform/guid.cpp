#include "platform/guid.h"

#include <pthread.h>
#include <sys/random.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kTextLength = 36;

// Fills `size` bytes from the kernel; false when the source is unavailable.
bool KernelRandom(unsigned char* out, size_t size) {
    size_t done = 0;
    while (done < size) {
        const ssize_t n = getrandom(out + done, size - done, 0);
        if (n < 0) {
            if (errno == EINTR) continue;
            break;
        }
        done += static_cast<size_t>(n);
    }
    if (done == size) return true;

    // Kernels without getrandom(2) still have the device.
    std::FILE* device = std::fopen("/dev/urandom", "rb");
    if (!device) return false;
    const bool ok = std::fread(out, 1, size, device) == size;
    std::fclose(device);
    return ok;
}

// GUIDs take their random bytes from a per-thread pool that one kernel call fills
// for 256 of them: a call per GUID was a tenth of generating a large model. Every
// byte is handed out once. A fork() child drops the pool it inherited, since the
// parent goes on handing out the same bytes: the child handler below moves a
// generation number that each pool compares with its own before use.
struct SRandomPool {
    unsigned char bytes[4096];
    std::size_t next = sizeof bytes;  // all used: filled on first use
    unsigned generation = 0;
};

std::atomic<unsigned> g_forkGeneration{0};
thread_local SRandomPool t_pool;

void CountFork() {
    g_forkGeneration.fetch_add(1, std::memory_order_relaxed);
}

bool PooledRandom(unsigned char* out, std::size_t size) {
    static const int registered = pthread_atfork(nullptr, nullptr, CountFork);
    if (registered != 0) return KernelRandom(out, size);  // no way to see a fork: no pool
    SRandomPool& pool = t_pool;
    const unsigned generation = g_forkGeneration.load(std::memory_order_relaxed);
    if (pool.generation != generation) {
        pool.next = sizeof pool.bytes;
        pool.generation = generation;
    }
    if (sizeof pool.bytes - pool.next < size) {
        if (!KernelRandom(pool.bytes, sizeof pool.bytes)) return false;
        pool.next = 0;
    }
    std::memcpy(out, pool.bytes + pool.next, size);
    pool.next += size;
    return true;
}

int HexValue(unsigned char ch) {
    if (ch >= '0' && ch <= '9') return ch - '0';
    if (ch >= 'a' && ch <= 'f') return ch - 'a' + 10;
    if (ch >= 'A' && ch <= 'F') return ch - 'A' + 10;
    return -1;
}

bool IsDashOffset(int i) {
    return i == 8 || i == 13 || i == 18 || i == 23;
}

}  // namespace

bool operator==(const GUID& a, const GUID& b) noexcept {
    return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}

RPC_STATUS UuidCreate(UUID* uuid) {
    if (!uuid) return RPC_S_INVALID_ARG;
    unsigned char bytes[sizeof(GUID)];
    if (!PooledRandom(bytes, sizeof bytes)) return RPC_S_UUID_NO_ADDRESS;
    GUID value;
    std::memcpy(&value, bytes, sizeof value);
    value.Data3 = static_cast<std::uint16_t>((value.Data3 & 0x0FFF) | 0x4000);
    value.Data4[0] = static_cast<std::uint8_t>((value.Data4[0] & 0x3F) | 0x80);
    *uuid = value;
    return RPC_S_OK;
}

RPC_STATUS UuidCreateNil(UUID* uuid) {
    if (!uuid) return RPC_S_INVALID_ARG;
    *uuid = GUID_NULL;
    return RPC_S_OK;
}

int UuidIsNil(UUID* uuid, RPC_STATUS* status) {
    if (status) *status = RPC_S_OK;
    return (!uuid || *uuid == GUID_NULL) ? TRUE : FALSE;
}

RPC_STATUS UuidFromStringA(RPC_CSTR text, UUID* uuid) {
    if (!uuid) return RPC_S_INVALID_ARG;
    if (!text) {
        *uuid = GUID_NULL;
        return RPC_S_OK;
    }
    // The 32 digits in text order; then the groups are read from them.
    unsigned char digits[32];
    int count = 0;
    for (int i = 0; i < kTextLength; ++i) {
        const unsigned char ch = text[i];
        if (IsDashOffset(i)) {
            if (ch != '-') return RPC_S_INVALID_STRING_UUID;
            continue;
        }
        const int value = HexValue(ch);  // also stops at an early NUL
        if (value < 0) return RPC_S_INVALID_STRING_UUID;
        digits[count++] = static_cast<unsigned char>(value);
    }
    if (text[kTextLength] != '\0') return RPC_S_INVALID_STRING_UUID;

    auto read = [&digits](int first, int n) {
        std::uint32_t value = 0;
        for (int i = first; i < first + n; ++i)
            value = (value << 4) | digits[i];
        return value;
    };
    GUID value;
    value.Data1 = read(0, 8);
    value.Data2 = static_cast<std::uint16_t>(read(8, 4));
    value.Data3 = static_cast<std::uint16_t>(read(12, 4));
    for (int i = 0; i < 8; ++i)
        value.Data4[i] = static_cast<std::uint8_t>(read(16 + 2 * i, 2));
    *uuid = value;
    return RPC_S_OK;
}

RPC_STATUS UuidToStringA(const UUID* uuid, RPC_CSTR* text) {
    if (!text) return RPC_S_INVALID_ARG;
    const GUID& g = uuid ? *uuid : GUID_NULL;
    char* buffer = static_cast<char*>(std::malloc(kTextLength + 1));
    if (!buffer) return RPC_S_OUT_OF_MEMORY;
    std::snprintf(buffer, kTextLength + 1, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x",
                  g.Data1, g.Data2, g.Data3, g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3],
                  g.Data4[4], g.Data4[5], g.Data4[6], g.Data4[7]);
    *text = reinterpret_cast<RPC_CSTR>(buffer);
    return RPC_S_OK;
}

RPC_STATUS RpcStringFreeA(RPC_CSTR* text) {
    if (!text) return RPC_S_INVALID_ARG;
    std::free(*text);
    *text = nullptr;
    return RPC_S_OK;
}
