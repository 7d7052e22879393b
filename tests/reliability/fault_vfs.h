// An SQLite VFS of the tests' own that passes every call to the default one but
// fails the Nth call of a chosen kind (reads, writes, syncs, locks, opens, or
// writes that find the disk full). While installed it is the default VFS, so the
// library opens files through it without knowing.
#pragma once

namespace tessmeta::test {

enum class EFault { Read, Write, DiskFull, Sync, Lock, Open };

class CFaultVfs {
  public:
    CFaultVfs();   // installs the shim as the default VFS
    ~CFaultVfs();  // puts the previous default back
    CFaultVfs(const CFaultVfs&) = delete;
    CFaultVfs& operator=(const CFaultVfs&) = delete;

    // Fails the `n`th call (from 1) of `kind` from now on, and every later one of
    // that kind: a failing disk stays failed. `n` 0 disarms.
    void Arm(EFault kind, int n);
    // Whether an armed fault has fired since Arm.
    bool Fired() const;
};

const char* FaultName(EFault kind);

}  // namespace tessmeta::test
