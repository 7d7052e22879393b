#include "fault_vfs.h"

#include <sqlite3.h>

#include <atomic>
#include <cstring>

namespace tessmeta::test {
namespace {

// Set while disarmed; counted from the threads a load reads on.
struct SState {
    sqlite3_vfs* real = nullptr;
    EFault kind = EFault::Read;
    int armedAt = 0;  // 0: disarmed
    std::atomic<int> calls{0};
    std::atomic<bool> fired{false};
} g_state;

// Counts a call of `kind`; true when it must fail.
bool Fails(EFault kind) {
    if (!g_state.armedAt || kind != g_state.kind) return false;
    if (++g_state.calls < g_state.armedAt) return false;
    g_state.fired = true;
    return true;
}

struct SFile {
    sqlite3_file base;
    sqlite3_file* real;  // allocated after this struct
};

sqlite3_file* Real(sqlite3_file* f) {
    return reinterpret_cast<SFile*>(f)->real;
}

// The real file's method, for the calls that never fail.
template <auto Method, typename... Args>
int Forward(sqlite3_file* f, Args... args) {
    return (Real(f)->pMethods->*Method)(Real(f), args...);
}

// ... and for the calls that fail with `error` when armed for `kind`.
template <auto Method, EFault kind, int error, typename... Args>
int Failing(sqlite3_file* f, Args... args) {
    return Fails(kind) ? error : Forward<Method>(f, args...);
}

int Close(sqlite3_file* f) {
    const int rc = Real(f)->pMethods ? Real(f)->pMethods->xClose(Real(f)) : SQLITE_OK;
    f->pMethods = nullptr;
    return rc;
}
int Write(sqlite3_file* f, const void* data, int amount, sqlite3_int64 offset) {
    if (Fails(EFault::Write)) return SQLITE_IOERR_WRITE;
    if (Fails(EFault::DiskFull)) return SQLITE_FULL;
    return Real(f)->pMethods->xWrite(Real(f), data, amount, offset);
}

// Version 1: no shared memory (the library keeps a rollback journal) and no mmap.
const sqlite3_io_methods kMethods = {
    1,
    Close,
    Failing<&sqlite3_io_methods::xRead, EFault::Read, SQLITE_IOERR_READ, void*, int, sqlite3_int64>,
    Write,
    Forward<&sqlite3_io_methods::xTruncate, sqlite3_int64>,
    Failing<&sqlite3_io_methods::xSync, EFault::Sync, SQLITE_IOERR_FSYNC, int>,
    Forward<&sqlite3_io_methods::xFileSize, sqlite3_int64*>,
    Failing<&sqlite3_io_methods::xLock, EFault::Lock, SQLITE_IOERR_LOCK, int>,
    Forward<&sqlite3_io_methods::xUnlock, int>,
    Forward<&sqlite3_io_methods::xCheckReservedLock, int*>,
    Forward<&sqlite3_io_methods::xFileControl, int, void*>,
    Forward<&sqlite3_io_methods::xSectorSize>,
    Forward<&sqlite3_io_methods::xDeviceCharacteristics>,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr};

int Open(sqlite3_vfs* vfs, const char* name, sqlite3_file* f, int flags, int* outFlags) {
    auto* file = reinterpret_cast<SFile*>(f);
    file->base.pMethods = nullptr;
    file->real = reinterpret_cast<sqlite3_file*>(file + 1);
    std::memset(file->real, 0, static_cast<std::size_t>(g_state.real->szOsFile));
    if (Fails(EFault::Open)) return SQLITE_CANTOPEN;
    (void)vfs;
    const int rc = g_state.real->xOpen(g_state.real, name, file->real, flags, outFlags);
    if (file->real->pMethods) file->base.pMethods = &kMethods;
    return rc;
}

sqlite3_vfs g_vfs;

}  // namespace

CFaultVfs::CFaultVfs() {
    Arm(EFault::Read, 0);
    g_state.real = sqlite3_vfs_find(nullptr);
    g_vfs = *g_state.real;
    g_vfs.zName = "tessmeta-fault";
    g_vfs.szOsFile = static_cast<int>(sizeof(SFile)) + g_state.real->szOsFile;
    g_vfs.pNext = nullptr;
    g_vfs.xOpen = Open;
    sqlite3_vfs_register(&g_vfs, 1);
}

CFaultVfs::~CFaultVfs() {
    sqlite3_vfs_unregister(&g_vfs);
    sqlite3_vfs_register(g_state.real, 1);
}

void CFaultVfs::Arm(EFault kind, int n) {
    g_state.kind = kind;
    g_state.armedAt = n;
    g_state.calls = 0;
    g_state.fired = false;
}

bool CFaultVfs::Fired() const {
    return g_state.fired;
}

const char* FaultName(EFault kind) {
    constexpr const char* kNames[] = {"read", "write", "disk full", "sync", "lock", "open"};
    return kNames[static_cast<int>(kind)];
}

}  // namespace tessmeta::test
