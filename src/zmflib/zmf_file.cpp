#include "zmflib/zmf_file.h"

#include "zmflib/catalogue.h"
#include "zmflib/pg_file.h"
#include "zmflib/pg_uri.h"
#include "zmflib/sqlite_file.h"

CZmfFile::CZmfFile(std::string path, DWORD formatVersion, bool readOnly)
    : m_path(std::move(path)), m_formatVersion(formatVersion), m_readOnly(readOnly) {}

CZmfFile::~CZmfFile() = default;

namespace {
// The lane the thread has entered; not owned.
thread_local CZmfReadLane* t_enteredLane = nullptr;
}  // namespace

void CZmfFile::SetError(const std::string& cause) {
    CZmfReadLane* lane = CurrentLane();
    (lane ? lane->m_error : m_lastError) = m_path + ": " + cause;
}

CZmfReadLane* CZmfFile::CurrentLane() const {
    if (m_lanesOpen.load(std::memory_order_relaxed) == 0) return nullptr;
    CZmfReadLane* lane = t_enteredLane;
    return lane && &lane->m_file == this ? lane : nullptr;
}

namespace {
// Rows a lane counts before it hands them to its file.
constexpr std::uint64_t kLaneRowStep = 4096;
}  // namespace

bool CZmfFile::CountOnLane() {
    CZmfReadLane* lane = CurrentLane();
    if (!lane) return false;
    if (++lane->m_rows == kLaneRowStep) {
        m_laneRows.fetch_add(kLaneRowStep, std::memory_order_relaxed);
        lane->m_rows = 0;
    }
    return true;
}

std::unique_ptr<CZmfReadLane> CZmfFile::OpenReadLane() {
    if (m_saving) return nullptr;
    return DoOpenReadLane();
}

CZmfReadLane::CZmfReadLane(CZmfFile& file) : m_file(file) {
    m_file.m_lanesOpen.fetch_add(1);
}

CZmfReadLane::~CZmfReadLane() {
    m_file.m_lanesOpen.fetch_sub(1);
    m_file.CountRows(m_rows + m_file.m_laneRows.exchange(0, std::memory_order_relaxed));
    if (!m_error.empty()) m_file.m_lastError = m_error;
}

CZmfReadLane::CEntry::CEntry(CZmfReadLane& lane) {
    t_enteredLane = &lane;
}

CZmfReadLane::CEntry::~CEntry() {
    t_enteredLane = nullptr;
}

CTableBase* CZmfFile::TableFor(const char* name) {
    const SZmfTableDesc* desc = zmf::FindTableByName(name);
    if (!desc) {
        SetError(std::string("unknown table \"") + (name ? name : "(null)") + "\"");
        return nullptr;
    }
    const std::lock_guard lock(m_tablesLock);
    auto& slot = m_tables[desc];
    if (!slot) slot = CreateTable(*desc);
    return slot.get();
}

CTableBase* CZmfFile::GetTable(const char* name) {
    return TableFor(name);
}

CTableBase* CZmfFile::GetEmptyTable(const char* name) {
    CTableBase* table = TableFor(name);
    if (!table) return nullptr;
    if (m_readOnly) {
        SetError("cannot save: the file is read-only");
        return nullptr;
    }
    if (!m_saving) {
        if (!BeginSave()) return nullptr;
        m_saving = true;
    }
    return table->Clear() ? table : nullptr;
}

int CZmfFile::ReleaseTable(CTableBase** table, int /*flag*/) {
    if (!table || !*table) return 0;
    CTableBase* t = *table;
    {
        const std::lock_guard lock(m_tablesLock);
        auto it = m_tables.find(&t->GetDesc());
        if (it == m_tables.end() || it->second.get() != t) return 0;
    }
    *table = nullptr;
    return t->Flush() ? 1 : 0;
}

const char* CZmfFile::GetTableName(int tableId) const {
    const SZmfTableDesc* desc = zmf::FindTableByNumber(tableId);
    return desc ? desc->name : nullptr;
}

void CZmfFile::SetFormatVersion(DWORD version) {
    if (version == m_formatVersion) return;
    m_formatVersion = version;
    m_versionDirty = true;
}

bool CZmfFile::Commit() {
    if (m_readOnly) {
        if (!m_versionDirty) return true;
        SetError("cannot save: the file is read-only");
        return false;
    }
    const bool ok = CommitSave();
    m_saving = false;
    return ok;
}

void CZmfFile::Rollback() {
    if (!m_saving) return;
    AbandonSave();
    m_saving = false;
}

std::unique_ptr<CZmfFile> CZmfFile::Create(const std::string& path, DWORD formatVersion,
                                           std::string* error) {
    if (zmf::IsServerUri(path)) return CPgZmfFile::CreateModel(path, formatVersion, error);
    return CSqliteZmfFile::CreateFile(path, formatVersion, error);
}

std::unique_ptr<CZmfFile> CZmfFile::Open(const std::string& path, std::string* error) {
    if (zmf::IsServerUri(path)) return CPgZmfFile::OpenModel(path, error);
    return CSqliteZmfFile::OpenFile(path, error);
}

void CZmfFile::SetProgressHook(ProgressHook hook, std::uint64_t every) {
    m_progress = std::move(hook);
    m_progressEvery = every ? every : 1;
    m_untilProgress = m_progressEvery;
}
