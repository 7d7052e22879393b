#include "support/bench_support.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>

#include <filesystem>

namespace tessmeta::bench {
namespace {

struct Scratch {
    std::string path;
    Scratch() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "tessmeta-bench-XXXXXX").string();
        if (!mkdtemp(pattern.data())) std::abort();
        path = pattern;
    }
    ~Scratch() {
        std::error_code ec;
        std::filesystem::remove_all(path, ec);
    }
};

}  // namespace

const std::string& ScratchDir() {
    static Scratch scratch;
    return scratch.path;
}

std::string ScratchFile(const std::string& name) {
    return ScratchDir() + "/" + name;
}

std::vector<CUniqueObjectBase> MakeUniqueObjects(size_t count) {
    std::vector<CUniqueObjectBase> rows(count);
    char guid[40];
    for (size_t i = 0; i < count; ++i) {
        CUniqueObjectBase& r = rows[i];
        const auto k = static_cast<DWORD>(i + 1);
        r.Unique_Object_ID = k;
        r.Object_Type_ID = static_cast<LONG>(k % 75 + 1);
        r.Model_ID = 1;
        r.Object_Domain_ID = k % 7;
        r.Plex_ID_1 = static_cast<LONG>(k / 3);
        r.Plex_ID_2 = 0;
        r.Modification_Date = COleDateTime(45000.0 + k / 86400.0);
        r.Creation_Time = 1700000000u + k;
        r.Repository_Status = 1;
        std::snprintf(guid, sizeof guid, "%08x%024x", k, k * 2654435761u);
        r.Object_GUID = guid;
        std::snprintf(guid, sizeof guid, "%024x%08x", k * 40503u, k);
        r.Version_GUID = guid;
    }
    return rows;
}

std::unique_ptr<CZmfFile> CreateUniqueObjectFile(const std::string& name,
                                                 const std::vector<CUniqueObjectBase>& rows,
                                                 std::string& path) {
    path = ScratchFile(name);
    auto file = CZmfFile::Create(path);
    CTableBase* table = file->GetEmptyTable("UniqueObject");
    table->SetSizeEstimate(static_cast<LONG>(rows.size()));
    for (const auto& row : rows)
        table->Insert(&row);
    if (!file->Commit()) std::abort();
    return file;
}

sqlite3* OpenRaw(const std::string& path) {
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) !=
        SQLITE_OK)
        std::abort();
    sqlite3_exec(db,
                 "PRAGMA journal_mode=DELETE; PRAGMA synchronous=FULL; PRAGMA cache_size=-65536;",
                 nullptr, nullptr, nullptr);
    return db;
}

std::string FreshSaveTarget(const char* name) {
    std::string path = ScratchFile(name);
    std::filesystem::remove(path);
    CZmfFile::Create(path).reset();
    return path;
}

namespace {

void BindObject(sqlite3_stmt* stmt, int base, const CUniqueObjectBase& r) {
    sqlite3_bind_int64(stmt, base + 1, r.Unique_Object_ID);
    sqlite3_bind_int64(stmt, base + 2, static_cast<LONG>(r.Object_Type_ID));
    sqlite3_bind_int64(stmt, base + 3, r.Model_ID);
    sqlite3_bind_int64(stmt, base + 4, r.Object_Domain_ID);
    sqlite3_bind_int64(stmt, base + 5, static_cast<LONG>(r.Plex_ID_1));
    sqlite3_bind_int64(stmt, base + 6, static_cast<LONG>(r.Plex_ID_2));
    sqlite3_bind_double(stmt, base + 7, r.Modification_Date.GetValue().m_dt);
    sqlite3_bind_int64(stmt, base + 8, r.Creation_Time);
    sqlite3_bind_int64(stmt, base + 9, r.Repository_Status);
    sqlite3_bind_int64(stmt, base + 10, r.Reserved);
    sqlite3_bind_text(stmt, base + 11, r.Object_GUID, r.Object_GUID.GetLength(), SQLITE_STATIC);
    sqlite3_bind_text(stmt, base + 12, r.Version_GUID, r.Version_GUID.GetLength(), SQLITE_STATIC);
}

sqlite3_stmt* PrepareInsert(sqlite3* db, int rowsPerStatement) {
    std::string sql =
        "INSERT INTO UniqueObject (Unique_Object_ID, Object_Type_ID, Model_ID, Object_Domain_ID,"
        " Plex_ID_1, Plex_ID_2, Modification_Date, Creation_Time, Repository_Status, Reserved,"
        " Object_GUID, Version_GUID) VALUES ";
    for (int r = 0; r < rowsPerStatement; ++r)
        sql += r ? ",(?,?,?,?,?,?,?,?,?,?,?,?)" : "(?,?,?,?,?,?,?,?,?,?,?,?)";
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr);
    return stmt;
}

}  // namespace

bool RawSaveUniqueObjects(const std::string& path, const std::vector<CUniqueObjectBase>& rows,
                          int batch) {
    sqlite3* db = OpenRaw(path);
    sqlite3_exec(db, "BEGIN IMMEDIATE; DELETE FROM UniqueObject;", nullptr, nullptr, nullptr);
    sqlite3_stmt* many = PrepareInsert(db, batch);
    sqlite3_stmt* one = PrepareInsert(db, 1);
    size_t i = 0;
    for (; i + static_cast<size_t>(batch) <= rows.size(); i += static_cast<size_t>(batch)) {
        for (int r = 0; r < batch; ++r)
            BindObject(many, r * 12, rows[i + static_cast<size_t>(r)]);
        sqlite3_step(many);
        sqlite3_reset(many);
    }
    for (; i < rows.size(); ++i) {
        BindObject(one, 0, rows[i]);
        sqlite3_step(one);
        sqlite3_reset(one);
    }
    sqlite3_finalize(many);
    sqlite3_finalize(one);
    const bool ok = sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(db);
    return ok;
}

namespace {

struct SRawObject {
    int64_t id, type, model, domain, plex1, plex2;
    double modified;
    int64_t created, status, reserved;
    std::string guid, version;
};

}  // namespace

CRawUniqueObjectScan::CRawUniqueObjectScan(const std::string& path) : m_db(OpenRaw(path)) {
    sqlite3_prepare_v2(m_db,
                       "SELECT Unique_Object_ID, Object_Type_ID, Model_ID, Object_Domain_ID,"
                       " Plex_ID_1, Plex_ID_2, Modification_Date, Creation_Time,"
                       " Repository_Status, Reserved, Object_GUID, Version_GUID"
                       " FROM UniqueObject ORDER BY rowid",
                       -1, &m_stmt, nullptr);
}

CRawUniqueObjectScan::~CRawUniqueObjectScan() {
    sqlite3_finalize(m_stmt);
    sqlite3_close(m_db);
}

size_t CRawUniqueObjectScan::Run() {
    SRawObject row;
    size_t n = 0;
    sqlite3_stmt* stmt = m_stmt;
    while (sqlite3_step(stmt) == SQLITE_ROW) {
        row.id = sqlite3_column_int64(stmt, 0);
        row.type = sqlite3_column_int64(stmt, 1);
        row.model = sqlite3_column_int64(stmt, 2);
        row.domain = sqlite3_column_int64(stmt, 3);
        row.plex1 = sqlite3_column_int64(stmt, 4);
        row.plex2 = sqlite3_column_int64(stmt, 5);
        row.modified = sqlite3_column_double(stmt, 6);
        row.created = sqlite3_column_int64(stmt, 7);
        row.status = sqlite3_column_int64(stmt, 8);
        row.reserved = sqlite3_column_int64(stmt, 9);
        row.guid.assign(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 10)),
                        sqlite3_column_bytes(stmt, 10));
        row.version.assign(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 11)),
                           sqlite3_column_bytes(stmt, 11));
        ++n;
    }
    sqlite3_reset(stmt);
    benchmark::DoNotOptimize(row);
    return n;
}

namespace {

std::string ColumnList(const SZmfTableDesc& desc) {
    std::string list;
    for (const SZmfColumnDesc& column : desc.columns)
        list += (list.empty() ? "" : ", ") + std::string(column.name);
    return list;
}

// Binds the columns of one row from parameter `base` + 1 on.
class CRawBinder final : public IZmfColumnSink {
  public:
    CRawBinder(sqlite3_stmt* stmt, int base) : m_stmt(stmt), m_base(base) {}
    void U32(int index, DWORD value) override {
        sqlite3_bind_int64(m_stmt, m_base + index + 1, value);
    }
    void Int(int index, LONG value) override {
        sqlite3_bind_int64(m_stmt, m_base + index + 1, value);
    }
    void String(int index, const CString& value) override {
        sqlite3_bind_text(m_stmt, m_base + index + 1, value, value.GetLength(), SQLITE_STATIC);
    }
    void Date(int index, const COleDateTime& value) override {
        sqlite3_bind_double(m_stmt, m_base + index + 1, value.m_dt);
    }

  private:
    sqlite3_stmt* m_stmt;
    int m_base;
};

sqlite3_stmt* PrepareRowsInsert(sqlite3* db, const SZmfTableDesc& desc, int rowsPerStatement) {
    std::string tuple = "(";
    for (size_t c = 0; c < desc.columns.size(); ++c)
        tuple += c ? ",?" : "?";
    tuple += ")";
    std::string sql =
        "INSERT INTO " + std::string(desc.name) + " (" + ColumnList(desc) + ") VALUES ";
    for (int r = 0; r < rowsPerStatement; ++r)
        sql += (r ? "," : "") + tuple;
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) std::abort();
    return stmt;
}

}  // namespace

CRawTableScan::CRawTableScan(const std::string& path, const SZmfTableDesc& desc)
    : m_desc(desc), m_db(OpenRaw(path)) {
    const std::string sql =
        "SELECT " + ColumnList(desc) + " FROM " + std::string(desc.name) + " ORDER BY rowid";
    if (sqlite3_prepare_v2(m_db, sql.c_str(), -1, &m_stmt, nullptr) != SQLITE_OK) std::abort();
}

CRawTableScan::~CRawTableScan() {
    sqlite3_finalize(m_stmt);
    sqlite3_close(m_db);
}

size_t CRawTableScan::Run() {
    const size_t columns = m_desc.columns.size();
    std::vector<int64_t> integers(columns);
    std::vector<double> dates(columns);
    std::vector<std::string> texts(columns);
    size_t n = 0;
    while (sqlite3_step(m_stmt) == SQLITE_ROW) {
        for (size_t c = 0; c < columns; ++c) {
            const int i = static_cast<int>(c);
            switch (m_desc.columns[c].type) {
                case EZmfColumnType::String:
                    texts[c].assign(reinterpret_cast<const char*>(sqlite3_column_text(m_stmt, i)),
                                    static_cast<size_t>(sqlite3_column_bytes(m_stmt, i)));
                    break;
                case EZmfColumnType::Date:
                    dates[c] = sqlite3_column_double(m_stmt, i);
                    break;
                default:
                    integers[c] = sqlite3_column_int64(m_stmt, i);
            }
        }
        ++n;
    }
    sqlite3_reset(m_stmt);
    benchmark::DoNotOptimize(integers.data());
    benchmark::DoNotOptimize(texts.data());
    return n;
}

bool RawSaveRows(const std::string& path, const SZmfTableDesc& desc,
                 const std::vector<const CDbObjectBase*>& rows, int batch) {
    sqlite3* db = OpenRaw(path);
    // The cache the record store saves with: a small one that is recycled beats a
    // large one whose fresh pages are touched once (docs/decisions.md).
    sqlite3_exec(db, "PRAGMA cache_size=-2048", nullptr, nullptr, nullptr);
    const std::string clear = "BEGIN IMMEDIATE; DELETE FROM " + std::string(desc.name) + ";";
    sqlite3_exec(db, clear.c_str(), nullptr, nullptr, nullptr);
    sqlite3_stmt* many = PrepareRowsInsert(db, desc, batch);
    sqlite3_stmt* one = PrepareRowsInsert(db, desc, 1);
    const int width = static_cast<int>(desc.columns.size());
    size_t i = 0;
    for (; i + static_cast<size_t>(batch) <= rows.size(); i += static_cast<size_t>(batch)) {
        for (int r = 0; r < batch; ++r) {
            CRawBinder binder(many, r * width);
            desc.readRow(*rows[i + static_cast<size_t>(r)], binder);
        }
        sqlite3_step(many);
        sqlite3_reset(many);
    }
    for (; i < rows.size(); ++i) {
        CRawBinder binder(one, 0);
        desc.readRow(*rows[i], binder);
        sqlite3_step(one);
        sqlite3_reset(one);
    }
    sqlite3_finalize(many);
    sqlite3_finalize(one);
    const bool ok = sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(db);
    return ok;
}

std::string CreateTableFile(const std::string& name, const SZmfTableDesc& desc,
                            const std::vector<const CDbObjectBase*>& rows) {
    const std::string path = FreshSaveTarget(name.c_str());
    auto file = CZmfFile::Open(path);
    CTableBase* table = file->GetEmptyTable(desc.name);
    table->SetSizeEstimate(static_cast<LONG>(rows.size()));
    for (const CDbObjectBase* row : rows)
        table->Insert(row);
    if (!file->Commit()) std::abort();
    return path;
}

}  // namespace tessmeta::bench
