#include "fault_vfs.h"

#include <sqlite3.h>

#include <cstring>

namespace tessmeta::test {
namespace {

struct SState {
    sqlite3_vfs* real = nullptr;
    EFault kind = EFault::Read;
    int armedAt = 0;  // 0: disarmed
    int calls = 0;
    bool fired = false;
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

int Close(sqlite3_file* f) {
    const int rc = Real(f)->pMethods ? Real(f)->pMethods->xClose(Real(f)) : SQLITE_OK;
    f->pMethods = nullptr;
    return rc;
}
int Read(sqlite3_file* f, void* out, int amount, sqlite3_int64 offset) {
    if (Fails(EFault::Read)) return SQLITE_IOERR_READ;
    return Real(f)->pMethods->xRead(Real(f), out, amount, offset);
}
int Write(sqlite3_file* f, const void* data, int amount, sqlite3_int64 offset) {
    if (Fails(EFault::Write)) return SQLITE_IOERR_WRITE;
    if (Fails(EFault::DiskFull)) return SQLITE_FULL;
    return Real(f)->pMethods->xWrite(Real(f), data, amount, offset);
}
int Truncate(sqlite3_file* f, sqlite3_int64 size) {
    return Real(f)->pMethods->xTruncate(Real(f), size);
}
int Sync(sqlite3_file* f, int flags) {
    if (Fails(EFault::Sync)) return SQLITE_IOERR_FSYNC;
    return Real(f)->pMethods->xSync(Real(f), flags);
}
int FileSize(sqlite3_file* f, sqlite3_int64* size) {
    return Real(f)->pMethods->xFileSize(Real(f), size);
}
int Lock(sqlite3_file* f, int level) {
    if (Fails(EFault::Lock)) return SQLITE_IOERR_LOCK;
    return Real(f)->pMethods->xLock(Real(f), level);
}
int Unlock(sqlite3_file* f, int level) {
    return Real(f)->pMethods->xUnlock(Real(f), level);
}
int CheckReservedLock(sqlite3_file* f, int* out) {
    return Real(f)->pMethods->xCheckReservedLock(Real(f), out);
}
int FileControl(sqlite3_file* f, int op, void* arg) {
    return Real(f)->pMethods->xFileControl(Real(f), op, arg);
}
int SectorSize(sqlite3_file* f) {
    return Real(f)->pMethods->xSectorSize(Real(f));
}
int DeviceCharacteristics(sqlite3_file* f) {
    return Real(f)->pMethods->xDeviceCharacteristics(Real(f));
}

// Version 1: no shared memory (the library keeps a rollback journal) and no mmap.
const sqlite3_io_methods kMethods = {1,
                                     Close,
                                     Read,
                                     Write,
                                     Truncate,
                                     Sync,
                                     FileSize,
                                     Lock,
                                     Unlock,
                                     CheckReservedLock,
                                     FileControl,
                                     SectorSize,
                                     DeviceCharacteristics,
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
    g_state = SState{};
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
