#include "zmflib/sqlite_file.h"

#include "platform/cstring.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "zmflib/db_object.h"
#include "zmflib/fields.h"

namespace {

// Bookkeeping tables of the store itself. Their names start with "zmf_" so that
// they can never collide with a catalogue table.
constexpr const char* kBookkeepingSchema =
    "CREATE TABLE IF NOT EXISTS zmf_meta (key TEXT PRIMARY KEY, value INTEGER NOT NULL);"
    "CREATE TABLE IF NOT EXISTS zmf_table_info (name TEXT PRIMARY KEY,"
    " size_estimate INTEGER NOT NULL);"
    "CREATE TABLE IF NOT EXISTS zmf_key_counter (kind INTEGER PRIMARY KEY,"
    " value INTEGER NOT NULL);";

// Layout version of the store's own tables, recorded in zmf_meta.
constexpr int kStoreLayoutVersion = 1;

// Rows per multi-row INSERT statement during a save (capped further by SQLite's
// bound-variable limit). See docs/decisions.md for the measurement behind it.
constexpr int kBatchRows = 64;

// A model file's connection is used by one thread only, so SQLite's per-call
// mutexes are left out (about 8% of a table scan).
constexpr int kOpenFlags = SQLITE_OPEN_NOMUTEX;

// Larger pages make big sequential saves and scans cheaper; see docs/decisions.md.
constexpr int kPageSize = 16384;

std::string Quote(const char* identifier) {
    return std::string("\"") + identifier + "\"";
}

std::string ColumnList(const SZmfTableDesc& desc) {
    std::string list;
    for (const SZmfColumnDesc& c : desc.columns) {
        if (!list.empty()) list += ',';
        list += Quote(c.name);
    }
    return list;
}

// The column list of a read: a column the stored table lacks (an added column, see
// catalogue.def) reads as its type's empty value.
std::string ReadColumnList(const SZmfTableDesc& desc, const CSqliteZmfFile& file) {
    std::string list;
    for (const SZmfColumnDesc& c : desc.columns) {
        if (!list.empty()) list += ',';
        if (!file.LacksColumn(desc.name, c.name)) {
            list += Quote(c.name);
            continue;
        }
        list += c.type == EZmfColumnType::String ? "''"
                : c.type == EZmfColumnType::Date ? "NULL"
                                                 : "0";
        list += " AS " + Quote(c.name);
    }
    return list;
}

const char* SqlType(EZmfColumnType type) {
    switch (type) {
        case EZmfColumnType::String:
            return "TEXT";
        case EZmfColumnType::Date:
            return "REAL";
        default:
            return "INTEGER";
    }
}

// Dates: a valid date is stored as REAL, a null date as SQL NULL and an invalid one
// as the text 'invalid', so that all three statuses survive a round trip.
constexpr const char* kInvalidDateText = "invalid";

// Reads the columns of the current result row of a statement into a row object.
class CStatementSource final : public IZmfColumnSource {
  public:
    CStatementSource(sqlite3_stmt* stmt, int firstColumn, CStringArena* texts = nullptr)
        : m_stmt(stmt), m_first(firstColumn), m_texts(texts) {}

    DWORD U32(int index) override {
        return static_cast<DWORD>(sqlite3_column_int64(m_stmt, m_first + index));
    }
    LONG Int(int index) override {
        return static_cast<LONG>(sqlite3_column_int64(m_stmt, m_first + index));
    }
    void String(int index, CZmfString& out) override {
        const int col = m_first + index;
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_stmt, col));
        const std::string_view view(text ? text : "",
                                    static_cast<size_t>(sqlite3_column_bytes(m_stmt, col)));
        if (m_texts)
            out = m_texts->Store(view);
        else
            out = view;
    }
    COleDateTime Date(int index) override {
        const int col = m_first + index;
        COleDateTime value;
        switch (sqlite3_column_type(m_stmt, col)) {
            case SQLITE_NULL:
                value.m_status = COleDateTime::null;
                break;
            case SQLITE_TEXT:
                value.m_status = COleDateTime::invalid;
                break;
            default:
                value.m_dt = sqlite3_column_double(m_stmt, col);
                break;
        }
        return value;
    }

  private:
    sqlite3_stmt* m_stmt;   // not owned
    int m_first;            // result column of the key
    CStringArena* m_texts;  // not owned; null: texts go to heap blocks
};

// Binds the columns of a row to consecutive parameters of a statement, starting
// at `firstParam`. Strings are bound as transient copies.
class CStatementSink final : public IZmfColumnSink {
  public:
    CStatementSink(sqlite3_stmt* stmt, int firstParam) : m_stmt(stmt), m_first(firstParam) {}

    void U32(int index, DWORD value) override {
        sqlite3_bind_int64(m_stmt, m_first + index, static_cast<sqlite3_int64>(value));
    }
    void Int(int index, LONG value) override {
        sqlite3_bind_int64(m_stmt, m_first + index, static_cast<sqlite3_int64>(value));
    }
    void String(int index, const CString& value) override {
        sqlite3_bind_text(m_stmt, m_first + index, value, value.GetLength(), SQLITE_TRANSIENT);
    }
    void Date(int index, const COleDateTime& value) override {
        const int param = m_first + index;
        if (value.m_status == COleDateTime::valid)
            sqlite3_bind_double(m_stmt, param, value.m_dt);
        else if (value.m_status == COleDateTime::invalid)
            sqlite3_bind_text(m_stmt, param, kInvalidDateText, -1, SQLITE_STATIC);
        else
            sqlite3_bind_null(m_stmt, param);
    }

  private:
    sqlite3_stmt* m_stmt;  // not owned
    int m_first;
};

// One buffered column value of a pending insert.
struct SPendingValue {
    enum class Kind { Integer, Real, Text, Null } kind = Kind::Null;
    sqlite3_int64 integer = 0;
    double real = 0;
    std::string text;  // capacity is reused from batch to batch
};

// Copies the columns of a row into a slot of the pending-insert buffer.
class CBufferSink final : public IZmfColumnSink {
  public:
    explicit CBufferSink(SPendingValue* slot) : m_slot(slot) {}

    void U32(int index, DWORD value) override { SetInteger(index, value); }
    void Int(int index, LONG value) override { SetInteger(index, value); }
    void String(int index, const CString& value) override {
        SPendingValue& v = m_slot[index];
        v.kind = SPendingValue::Kind::Text;
        v.text.assign(static_cast<const char*>(value), value.GetLength());
    }
    void Date(int index, const COleDateTime& value) override {
        SPendingValue& v = m_slot[index];
        if (value.m_status == COleDateTime::valid) {
            v.kind = SPendingValue::Kind::Real;
            v.real = value.m_dt;
        } else if (value.m_status == COleDateTime::invalid) {
            v.kind = SPendingValue::Kind::Text;
            v.text = kInvalidDateText;
        } else {
            v.kind = SPendingValue::Kind::Null;
        }
    }

  private:
    void SetInteger(int index, sqlite3_int64 value) {
        m_slot[index].kind = SPendingValue::Kind::Integer;
        m_slot[index].integer = value;
    }

    SPendingValue* m_slot;  // not owned: points into the table's buffer
};

void BindPending(sqlite3_stmt* stmt, int param, const SPendingValue& v) {
    switch (v.kind) {
        case SPendingValue::Kind::Integer:
            sqlite3_bind_int64(stmt, param, v.integer);
            break;
        case SPendingValue::Kind::Real:
            sqlite3_bind_double(stmt, param, v.real);
            break;
        case SPendingValue::Kind::Text:
            // The buffer is not touched until the statement has run: no copy needed.
            sqlite3_bind_text(stmt, param, v.text.data(), static_cast<int>(v.text.size()),
                              SQLITE_STATIC);
            break;
        case SPendingValue::Kind::Null:
            sqlite3_bind_null(stmt, param);
            break;
    }
}

struct StmtDeleter {
    void operator()(sqlite3_stmt* s) const { sqlite3_finalize(s); }
};
using Stmt = std::unique_ptr<sqlite3_stmt, StmtDeleter>;

// ---- table ------------------------------------------------------------------------

class CSqliteTable final : public CTableBase {
  public:
    CSqliteTable(CSqliteZmfFile* file, const SZmfTableDesc& desc)
        : CTableBase(file, desc),
          m_file(*file),
          m_columns(static_cast<int>(desc.columns.size())),
          m_columnList(ColumnList(desc)),
          m_readList(ReadColumnList(desc, *file)) {
        const int limit = sqlite3_limit(file->Db(), SQLITE_LIMIT_VARIABLE_NUMBER, -1);
        m_batchRows = std::max(1, std::min(kBatchRows, limit / m_columns));
        m_pending.resize(static_cast<size_t>(m_batchRows) * m_columns);
    }

    bool Clear() override {
        ResetPositional();
        m_pendingRows = 0;
        if (!m_file.EnsureTableExists(GetDesc()) || !AddLackingColumns()) return false;
        return m_file.Exec(("DELETE FROM " + Quote(GetName())).c_str(), "cannot empty table");
    }

    // Forgets rows not yet written (the save they belong to was abandoned).
    void DropPending() {
        m_pendingRows = 0;
        ResetPositional();
    }

    bool Flush() override {
        if (m_pendingRows == 0) return true;
        bool ok = true;
        int row = 0;
        if (m_pendingRows == m_batchRows) {
            ok = RunInsert(m_batchStmt, m_batchRows, 0);
            row = m_batchRows;
        }
        for (; ok && row < m_pendingRows; ++row)
            ok = RunInsert(m_singleStmt, 1, row);
        m_pendingRows = 0;
        return ok;
    }

  protected:
    int DoInsert(const CDbObjectBase* row) override {
        ResetPositional();
        // Once made, a table stays: the file's set of tables is not asked per row.
        if (!m_created && !(m_created = m_file.EnsureTableExists(GetDesc()))) return 0;
        if (!AddLackingColumns()) return 0;
        CBufferSink sink(&m_pending[static_cast<size_t>(m_pendingRows) * m_columns]);
        GetDesc().readRow(*row, sink);
        ++m_pendingRows;
        if (!m_file.IsSaving()) return m_file.WriteThrough(*this) ? 1 : 0;
        if (m_pendingRows == m_batchRows) return Flush() ? 1 : 0;
        return 1;
    }

    int DoUpdate(const CDbObjectBase* row) override {
        if (!Flush() || !TableExists() || !AddLackingColumns()) return 0;
        ResetPositional();
        std::string sql = "UPDATE " + Quote(GetName()) + " SET ";
        for (int i = 0; i < m_columns; ++i) {
            if (i) sql += ',';
            sql += Quote(GetDesc().columns[i].name) + "=?" + std::to_string(i + 1);
        }
        sql += " WHERE rowid=(" + FirstRowidByKey() + ")";
        Stmt stmt(m_file.Prepare(sql, "cannot update"));
        if (!stmt) return 0;
        CStatementSink sink(stmt.get(), 1);
        GetDesc().readRow(*row, sink);
        return StepChanges(stmt.get(), "cannot update");
    }

    int DoDelete(const CDbObjectBase* row) override {
        if (!Flush() || !TableExists()) return 0;
        ResetPositional();
        Stmt stmt(m_file.Prepare(
            "DELETE FROM " + Quote(GetName()) + " WHERE rowid=(" + FirstRowidByKey() + ")",
            "cannot delete"));
        if (!stmt) return 0;
        sqlite3_bind_int64(stmt.get(), 1, KeyOf(*row));
        return StepChanges(stmt.get(), "cannot delete");
    }

    int DoGet(CDbObjectBase* row) override {
        if (!Flush() || !TableExists()) return 0;
        Stmt stmt(m_file.Prepare("SELECT " + m_readList + " FROM " + Quote(GetName()) +
                                     " WHERE rowid=(" + FirstRowidByKey() + ")",
                                 "cannot read"));
        if (!stmt) return 0;
        sqlite3_bind_int64(stmt.get(), 1, KeyOf(*row));
        const int rc = sqlite3_step(stmt.get());
        if (rc != SQLITE_ROW) {
            if (rc != SQLITE_DONE) m_file.SetDbError("cannot read");
            return 0;
        }
        CStatementSource source(stmt.get(), 0);
        GetDesc().writeRow(*row, source);
        return 1;
    }

    POSITION DoGetStartPosition() override {
        if (!Flush() || !TableExists()) return nullptr;
        return SeekPositional(1);
    }

    void DoGetNext(POSITION& pos, CDbObjectBase* row) override {
        const auto rowid = static_cast<sqlite3_int64>(reinterpret_cast<uintptr_t>(pos));
        if (!(m_posActive && m_posRowid == rowid) && !SeekPositional(rowid)) {
            pos = nullptr;
            return;
        }
        CStatementSource source(m_posStmt.get(), 1);
        GetDesc().writeRow(*row, source);
        pos = StepPositional();
    }

    ULONG DoGetCount() override {
        if (!Flush() || !TableExists()) return 0;
        Stmt stmt(m_file.PrepareRead("SELECT count(*) FROM " + Quote(GetName()), "cannot count"));
        if (!stmt || sqlite3_step(stmt.get()) != SQLITE_ROW) {
            if (stmt) m_file.SetDbError("cannot count");
            return 0;
        }
        return static_cast<ULONG>(sqlite3_column_int64(stmt.get(), 0));
    }

    std::unique_ptr<CZmfCursor> DoOpenCursor() override;

  private:
    friend class CSqliteCursor;

    bool TableExists() const { return m_file.TableExists(GetName()); }

    // Before the first write to a table stored without some added columns: adds
    // them, so that every column is written from now on.
    bool AddLackingColumns() {
        if (m_readList == m_columnList) return true;
        if (!m_file.AddLackingColumns(GetDesc())) return false;
        ResetPositional();
        m_posStmt.reset();
        m_readList = m_columnList;
        return true;
    }

    std::string FirstRowidByKey() const {
        return "SELECT rowid FROM " + Quote(GetName()) + " WHERE " +
               Quote(GetDesc().columns[0].name) + "=?1 ORDER BY rowid LIMIT 1";
    }

    DWORD KeyOf(const CDbObjectBase& row) const { return zmf::KeyOf(GetDesc(), row); }

    int StepChanges(sqlite3_stmt* stmt, const char* what) {
        if (sqlite3_step(stmt) != SQLITE_DONE) {
            m_file.SetDbError(what);
            return 0;
        }
        return sqlite3_changes(m_file.Db()) > 0 ? 1 : 0;
    }

    sqlite3_stmt* InsertStatement(Stmt& slot, int rows) {
        if (slot) return slot.get();
        std::string values = "(";
        for (int c = 0; c < m_columns; ++c)
            values += c ? ",?" : "?";
        values += ")";
        std::string sql = "INSERT INTO " + Quote(GetName()) + " (" + m_columnList + ") VALUES ";
        for (int r = 0; r < rows; ++r)
            sql += r ? "," + values : values;
        slot.reset(m_file.Prepare(sql, "cannot insert"));
        return slot.get();
    }

    // Inserts `rows` buffered rows starting at buffered row `first` with one statement.
    bool RunInsert(Stmt& slot, int rows, int first) {
        sqlite3_stmt* stmt = InsertStatement(slot, rows);
        if (!stmt) return false;
        const SPendingValue* values = &m_pending[static_cast<size_t>(first) * m_columns];
        const int count = rows * m_columns;
        for (int i = 0; i < count; ++i)
            BindPending(stmt, i + 1, values[i]);
        const int rc = sqlite3_step(stmt);
        sqlite3_reset(stmt);
        if (rc != SQLITE_DONE) {
            m_file.SetDbError("cannot insert");
            return false;
        }
        return true;
    }

    void ResetPositional() {
        if (m_posStmt) sqlite3_reset(m_posStmt.get());
        m_posActive = false;
    }

    // Positions the positional statement on the first row with rowid >= `rowid`.
    POSITION SeekPositional(sqlite3_int64 rowid) {
        if (!m_posStmt) {
            m_posStmt.reset(m_file.Prepare("SELECT rowid," + m_readList + " FROM " +
                                               Quote(GetName()) + " WHERE rowid>=?1 ORDER BY rowid",
                                           "cannot read"));
            if (!m_posStmt) return nullptr;
        }
        sqlite3_reset(m_posStmt.get());
        sqlite3_bind_int64(m_posStmt.get(), 1, rowid);
        return StepPositional();
    }

    POSITION StepPositional() {
        const int rc = sqlite3_step(m_posStmt.get());
        if (rc != SQLITE_ROW) {
            if (rc != SQLITE_DONE) m_file.SetDbError("cannot read");
            ResetPositional();
            return nullptr;
        }
        m_posActive = true;
        m_posRowid = sqlite3_column_int64(m_posStmt.get(), 0);
        return reinterpret_cast<POSITION>(static_cast<uintptr_t>(m_posRowid));
    }

    CSqliteZmfFile& m_file;  // not owned: the file owns this table
    const int m_columns;
    const std::string m_columnList;
    bool m_created = false;  // the SQL table is known to exist
    std::string m_readList;  // m_columnList, unless the stored table lacks added columns
    int m_batchRows = 1;
    std::vector<SPendingValue> m_pending;  // m_batchRows x m_columns values
    int m_pendingRows = 0;
    Stmt m_batchStmt;
    Stmt m_singleStmt;
    Stmt m_posStmt;
    bool m_posActive = false;
    sqlite3_int64 m_posRowid = 0;
};

class CSqliteCursor final : public CZmfCursor {
  public:
    CSqliteCursor(CSqliteZmfFile& file, const SZmfTableDesc& desc, sqlite3_stmt* stmt)
        : m_file(file), m_desc(desc), m_stmt(stmt) {}

    int Next(CDbObjectBase* row) override {
        if (!m_stmt) return 0;
        const int rc = sqlite3_step(m_stmt.get());
        if (rc == SQLITE_ROW) {
            CStatementSource source(m_stmt.get(), 0, m_texts);
            m_desc.writeRow(*row, source);
            return 1;
        }
        if (rc != SQLITE_DONE) m_file.SetDbError("cannot read table");
        m_stmt.reset();
        return 0;
    }

  private:
    CSqliteZmfFile& m_file;  // not owned
    const SZmfTableDesc& m_desc;
    Stmt m_stmt;  // null once the rows are exhausted
};

std::unique_ptr<CZmfCursor> CSqliteTable::DoOpenCursor() {
    sqlite3_stmt* stmt = nullptr;
    if (Flush() && TableExists()) {
        stmt = m_file.PrepareRead(
            "SELECT " + m_readList + " FROM " + Quote(GetName()) + " ORDER BY rowid",
            "cannot read table");
    }
    return std::make_unique<CSqliteCursor>(m_file, GetDesc(), stmt);
}

std::string ErrorText(sqlite3* db, const char* what) {
    return std::string(what) + ": " + (db ? sqlite3_errmsg(db) : "out of memory");
}

void Fail(std::string* error, const std::string& path, const std::string& cause) {
    if (error) *error = path + ": " + cause;
}

void ConfigureConnection(sqlite3* db) {
    sqlite3_extended_result_codes(db, 1);
    // A model file comes from anywhere: no schema edits through SQL, no functions
    // or virtual tables run from views or triggers stored in the file.
    sqlite3_db_config(db, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(db, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_busy_timeout(db, 5000);
}

}  // namespace

// ---- file -------------------------------------------------------------------------

CSqliteZmfFile::CSqliteZmfFile(std::string path, DWORD formatVersion, bool readOnly, sqlite3* db)
    : CZmfFile(std::move(path), formatVersion, readOnly), m_db(db) {}

CSqliteZmfFile::~CSqliteZmfFile() {
    // An unfinished save is rolled back: the previous content stays.
    if (IsSaving()) sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close_v2(m_db);
}

std::unique_ptr<CTableBase> CSqliteZmfFile::CreateTable(const SZmfTableDesc& desc) {
    return std::make_unique<CSqliteTable>(this, desc);
}

namespace {

// A read lane: a read-only connection of its own to the same file.
class CSqliteReadLane final : public CZmfReadLane {
  public:
    CSqliteReadLane(CZmfFile& file, sqlite3* db) : CZmfReadLane(file), m_db(db) {}
    ~CSqliteReadLane() override { sqlite3_close_v2(m_db); }
    sqlite3* Db() const { return m_db; }

  private:
    sqlite3* m_db;  // owned
};

sqlite3_stmt* PrepareOn(sqlite3* db, const std::string& sql) {
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v3(db, sql.c_str(), static_cast<int>(sql.size()) + 1,
                           SQLITE_PREPARE_PERSISTENT, &stmt, nullptr) != SQLITE_OK) {
        sqlite3_finalize(stmt);
        return nullptr;
    }
    return stmt;
}

}  // namespace

sqlite3* CSqliteZmfFile::ReadDb() const {
    const CZmfReadLane* lane = CurrentLane();
    return lane ? static_cast<const CSqliteReadLane*>(lane)->Db() : m_db;
}

sqlite3_stmt* CSqliteZmfFile::Prepare(const std::string& sql, const char* what) {
    sqlite3_stmt* stmt = PrepareOn(m_db, sql);
    if (!stmt) SetDbError(what);
    return stmt;
}

sqlite3_stmt* CSqliteZmfFile::PrepareRead(const std::string& sql, const char* what) {
    sqlite3_stmt* stmt = PrepareOn(ReadDb(), sql);
    if (!stmt) SetDbError(what);
    return stmt;
}

void CSqliteZmfFile::SetDbError(const char* what) {
    SetError(ErrorText(ReadDb(), what));
}

void CSqliteZmfFile::RememberFileIdentity() {
    struct stat st;
    if (::stat(GetPath().c_str(), &st) != 0) return;
    m_device = static_cast<std::uint64_t>(st.st_dev);
    m_inode = static_cast<std::uint64_t>(st.st_ino);
}

bool CSqliteZmfFile::IsStillTheFile() const {
    struct stat st;
    return m_inode != 0 && ::stat(GetPath().c_str(), &st) == 0 &&
           static_cast<std::uint64_t>(st.st_dev) == m_device &&
           static_cast<std::uint64_t>(st.st_ino) == m_inode;
}

std::unique_ptr<CZmfReadLane> CSqliteZmfFile::DoOpenReadLane() {
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(GetPath().c_str(), &db, kOpenFlags | SQLITE_OPEN_READONLY, nullptr) !=
            SQLITE_OK ||
        !IsStillTheFile()) {
        sqlite3_close_v2(db);
        return nullptr;
    }
    ConfigureConnection(db);
    sqlite3_exec(db, "PRAGMA cache_size=-2048", nullptr, nullptr, nullptr);
    return std::make_unique<CSqliteReadLane>(*this, db);
}

bool CSqliteZmfFile::Exec(const char* sql, const char* what) {
    if (sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) == SQLITE_OK) return true;
    SetDbError(what);
    return false;
}

bool CSqliteZmfFile::EnsureTableExists(const SZmfTableDesc& desc) {
    if (TableExists(desc.name)) return true;
    std::string sql = "CREATE TABLE IF NOT EXISTS " + Quote(desc.name) + " (";
    for (size_t i = 0; i < desc.columns.size(); ++i) {
        if (i) sql += ", ";
        sql += Quote(desc.columns[i].name) + " " + SqlType(desc.columns[i].type);
    }
    sql += ")";
    if (!Exec(sql.c_str(), "cannot create table")) return false;
    m_existing.insert(desc.name);
    return true;
}

bool CSqliteZmfFile::LacksColumn(const char* table, const char* column) const {
    auto it = m_lacking.find(table);
    return it != m_lacking.end() && it->second.count(column) != 0;
}

bool CSqliteZmfFile::AddLackingColumns(const SZmfTableDesc& desc) {
    auto it = m_lacking.find(desc.name);
    if (it == m_lacking.end()) return true;
    for (const SZmfColumnDesc& c : desc.columns) {
        if (!it->second.count(c.name)) continue;
        const char* fill = c.type == EZmfColumnType::String ? " DEFAULT ''"
                           : c.type == EZmfColumnType::Date ? ""
                                                            : " DEFAULT 0";
        const std::string sql = "ALTER TABLE " + Quote(desc.name) + " ADD COLUMN " + Quote(c.name) +
                                " " + SqlType(c.type) + fill;
        if (!Exec(sql.c_str(), "cannot add column")) return false;
        it->second.erase(c.name);
    }
    m_lacking.erase(it);
    return true;
}

bool CSqliteZmfFile::Configure() {
    ConfigureConnection(m_db);
    // Rollback journal with full syncs: a commit is durable once it returns, and a
    // process killed mid-save leaves a hot journal that the next open rolls back.
    // See docs/decisions.md for the measurements behind these settings.
    if (!Exec("PRAGMA journal_mode=DELETE; PRAGMA synchronous=FULL; PRAGMA temp_store=MEMORY;",
              "cannot configure"))
        return false;
    UseSmallCache(false);
    return true;
}

// A load reads each page once and a save writes each page once: a cache of 2 MiB
// instead of 64 holds what either needs, and its buffers are recycled instead of
// fresh memory being touched for every page (docs/decisions.md). Other work (edits
// written through, reads by position) keeps the large cache.
void CSqliteZmfFile::UseSmallCache(bool small) {
    sqlite3_exec(m_db, small ? "PRAGMA cache_size=-2048" : "PRAGMA cache_size=-65536", nullptr,
                 nullptr, nullptr);
}

void CSqliteZmfFile::BeginBulkRead() {
    UseSmallCache(true);
}

void CSqliteZmfFile::EndBulkRead() {
    UseSmallCache(false);
}

bool CSqliteZmfFile::CreateSchema() {
    if (!Exec(("PRAGMA page_size=" + std::to_string(kPageSize)).c_str(), "cannot configure"))
        return false;
    if (!Exec("BEGIN", "cannot create") || !Exec(kBookkeepingSchema, "cannot create")) return false;
    for (const SZmfTableDesc* desc : zmf::AllTables())
        if (!EnsureTableExists(*desc)) return false;
    const std::string meta = "INSERT INTO zmf_meta VALUES ('format_version', " +
                             std::to_string(GetFormatVersion()) + "), ('store_layout', " +
                             std::to_string(kStoreLayoutVersion) + ")";
    return Exec(meta.c_str(), "cannot create") && Exec("COMMIT", "cannot create");
}

bool CSqliteZmfFile::LoadBookkeeping() {
    Stmt info(Prepare("SELECT name, size_estimate FROM zmf_table_info", "cannot read"));
    if (!info) return false;
    int rc;
    while ((rc = sqlite3_step(info.get())) == SQLITE_ROW) {
        const auto* name = reinterpret_cast<const char*>(sqlite3_column_text(info.get(), 0));
        if (!zmf::FindTableByName(name)) continue;
        CTableBase* table = GetTable(name);
        if (table) table->LoadSizeEstimate(static_cast<LONG>(sqlite3_column_int64(info.get(), 1)));
    }
    if (rc != SQLITE_DONE) return SetDbError("cannot read"), false;

    Stmt keys(Prepare("SELECT kind, value FROM zmf_key_counter", "cannot read"));
    if (!keys) return false;
    while ((rc = sqlite3_step(keys.get())) == SQLITE_ROW) {
        GetIdentityMgr()->SetKeyValue(static_cast<int>(sqlite3_column_int64(keys.get(), 0)),
                                      static_cast<ULONG>(sqlite3_column_int64(keys.get(), 1)));
    }
    if (rc != SQLITE_DONE) return SetDbError("cannot read"), false;
    GetIdentityMgr()->ClearDirty();
    return ReadSaveGeneration(m_saveGeneration);
}

bool CSqliteZmfFile::ReadSaveGeneration(long long& generation) {
    Stmt stmt(Prepare("SELECT value FROM zmf_meta WHERE key='save_generation'", "cannot read"));
    if (!stmt) return false;
    const int rc = sqlite3_step(stmt.get());
    if (rc != SQLITE_ROW && rc != SQLITE_DONE) return SetDbError("cannot read"), false;
    generation = rc == SQLITE_ROW ? sqlite3_column_int64(stmt.get(), 0) : 0;
    return true;
}

// Records which catalogue tables the file holds and checks that each has every
// column of the catalogue (extra columns are ignored).
bool CSqliteZmfFile::CheckTables() {
    Stmt names(Prepare("SELECT name FROM sqlite_master WHERE type='table'", "cannot read schema"));
    if (!names) return false;
    int rc;
    while ((rc = sqlite3_step(names.get())) == SQLITE_ROW) {
        const auto* name = reinterpret_cast<const char*>(sqlite3_column_text(names.get(), 0));
        if (name && zmf::FindTableByName(name)) m_existing.insert(name);
    }
    if (rc != SQLITE_DONE) return SetDbError("cannot read schema"), false;

    for (const std::string& name : m_existing) {
        const SZmfTableDesc* desc = zmf::FindTableByName(name.c_str());
        Stmt info(Prepare("PRAGMA table_info(" + Quote(name.c_str()) + ")", "cannot read schema"));
        if (!info) return false;
        std::unordered_set<std::string> present;
        while (sqlite3_step(info.get()) == SQLITE_ROW)
            present.insert(reinterpret_cast<const char*>(sqlite3_column_text(info.get(), 1)));
        for (const SZmfColumnDesc& c : desc->columns) {
            if (!present.count(c.name) && zmf::IsAddedColumn(*desc, c.name)) {
                m_lacking[name].insert(c.name);
            } else if (!present.count(c.name)) {
                SetError("damaged: table \"" + name + "\" has no column \"" + c.name + "\"");
                return false;
            }
        }
    }
    return true;
}

bool CSqliteZmfFile::PersistBookkeeping() {
    if (IsVersionDirty()) {
        const std::string sql = "INSERT OR REPLACE INTO zmf_meta VALUES ('format_version', " +
                                std::to_string(GetFormatVersion()) + ")";
        if (!Exec(sql.c_str(), "cannot save")) return false;
    }
    bool ok = true;
    if (GetIdentityMgr()->IsDirty()) {
        Stmt stmt(Prepare("INSERT OR REPLACE INTO zmf_key_counter VALUES (?1, ?2)", "cannot save"));
        if (!stmt) return false;
        GetIdentityMgr()->ForEachCounter([&](int kind, ULONG value) {
            sqlite3_bind_int64(stmt.get(), 1, kind);
            sqlite3_bind_int64(stmt.get(), 2, value);
            if (ok && sqlite3_step(stmt.get()) != SQLITE_DONE) ok = false;
            sqlite3_reset(stmt.get());
        });
        if (!ok) return SetDbError("cannot save"), false;
    }
    Stmt info(Prepare("INSERT OR REPLACE INTO zmf_table_info VALUES (?1, ?2)", "cannot save"));
    if (!info) return false;
    ForEachTable([&](CTableBase& table) {
        if (!ok || !table.IsSizeEstimateDirty()) return;
        sqlite3_bind_text(info.get(), 1, table.GetName(), -1, SQLITE_STATIC);
        sqlite3_bind_int64(info.get(), 2, table.GetSizeEstimate());
        ok = sqlite3_step(info.get()) == SQLITE_DONE;
        sqlite3_reset(info.get());
    });
    if (!ok) return SetDbError("cannot save"), false;
    return true;
}

bool CSqliteZmfFile::FlushAll() {
    bool ok = true;
    ForEachTable([&](CTableBase& table) { ok = table.Flush() && ok; });
    return ok;
}

// A save writes only what changed since the model was read (strings, for one),
// so a save over another program's save would leave a mixture of two models. Every
// save counts itself in zmf_meta; a write that finds another count than the one
// read at open is refused, and the file keeps the other program's model.
bool CSqliteZmfFile::StartWriting(const char* what) {
    if (!Exec("BEGIN IMMEDIATE", what)) return false;
    long long stored = 0;
    if (ReadSaveGeneration(stored) && stored == m_saveGeneration) return true;
    if (stored != m_saveGeneration)
        SetError(std::string(what) + ": another program saved the file after it was opened");
    sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
    return false;
}

bool CSqliteZmfFile::BeginSave() {
    if (!StartWriting("cannot start saving")) return false;
    UseSmallCache(true);
    return true;
}

bool CSqliteZmfFile::CommitSave() {
    const bool wasSaving = IsSaving();
    if (!wasSaving && !StartWriting("cannot save")) return false;
    const bool flushed = FlushAll();
    const std::string counted = "INSERT OR REPLACE INTO zmf_meta VALUES ('save_generation', " +
                                std::to_string(m_saveGeneration + 1) + ")";
    if (!PersistBookkeeping() || !Exec(counted.c_str(), "cannot save") ||
        !Exec("COMMIT", "cannot commit")) {
        sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
        UseSmallCache(false);
        return false;
    }
    UseSmallCache(false);
    ++m_saveGeneration;
    ForEachTable([](CTableBase& t) { t.ClearSizeEstimateDirty(); });
    GetIdentityMgr()->ClearDirty();
    ClearVersionDirty();
    return flushed;
}

void CSqliteZmfFile::AbandonSave() {
    sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
    UseSmallCache(false);
    ForEachTable([](CTableBase& t) { static_cast<CSqliteTable&>(t).DropPending(); });
    // Tables the save created are gone with it.
    m_existing.clear();
    CheckTables();
}

bool CSqliteZmfFile::WriteThrough(CTableBase& table) {
    if (!StartWriting("cannot write")) return false;
    if (!table.Flush() || !PersistBookkeeping() || !Exec("COMMIT", "cannot write")) {
        sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
        return false;
    }
    GetIdentityMgr()->ClearDirty();
    return true;
}

bool CSqliteZmfFile::Verify() {
    Stmt stmt(Prepare("PRAGMA quick_check", "cannot check"));
    if (!stmt) return false;
    std::string problems;
    int rc;
    while ((rc = sqlite3_step(stmt.get())) == SQLITE_ROW) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt.get(), 0));
        if (text && std::string(text) != "ok")
            problems += (problems.empty() ? "" : "; ") + std::string(text);
    }
    if (rc != SQLITE_DONE) return SetDbError("damaged"), false;
    if (!problems.empty()) return SetError("damaged: " + problems), false;
    return true;
}

// ---- opening and creating ----------------------------------------------------------

std::unique_ptr<CZmfFile> CSqliteZmfFile::CreateFile(const std::string& path, DWORD formatVersion,
                                                     std::string* error) {
    struct stat st;
    if (::stat(path.c_str(), &st) == 0) {
        Fail(error, path, "cannot create: the file already exists");
        return nullptr;
    }
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(path.c_str(), &db, kOpenFlags | SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                        nullptr) != SQLITE_OK) {
        Fail(error, path, ErrorText(db, "cannot create"));
        sqlite3_close_v2(db);
        return nullptr;
    }
    std::unique_ptr<CSqliteZmfFile> file(new CSqliteZmfFile(path, formatVersion, false, db));
    if (!file->Configure() || !file->CreateSchema()) {
        if (error) *error = file->GetLastError();
        file.reset();
        ::unlink(path.c_str());
        return nullptr;
    }
    file->RememberFileIdentity();
    return file;
}

namespace {

// A file that no one may write (by its permission bits) is opened read-only, even
// for a user who could override the bits: saving over it would surprise its owner.
bool IsWritable(const std::string& path, const struct stat& st) {
    return (st.st_mode & 0222) != 0 && ::access(path.c_str(), W_OK) == 0;
}

}  // namespace

std::unique_ptr<CZmfFile> CSqliteZmfFile::OpenFile(const std::string& path, std::string* error) {
    struct stat st;
    if (::stat(path.c_str(), &st) != 0) {
        Fail(error, path, "cannot open: no such file");
        return nullptr;
    }
    if (!S_ISREG(st.st_mode)) {
        Fail(error, path, "cannot open: not a regular file");
        return nullptr;
    }
    const bool readOnly = !IsWritable(path, st);
    sqlite3* db = nullptr;
    const int flags = kOpenFlags | (readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
    if (sqlite3_open_v2(path.c_str(), &db, flags, nullptr) != SQLITE_OK) {
        Fail(error, path, ErrorText(db, "cannot open"));
        sqlite3_close_v2(db);
        return nullptr;
    }

    // The format version comes first: it also tells a model file from other files.
    sqlite3_stmt* stmt = nullptr;
    int rc = sqlite3_prepare_v2(db, "SELECT value FROM zmf_meta WHERE key='format_version'", -1,
                                &stmt, nullptr);
    if (rc == SQLITE_OK) rc = sqlite3_step(stmt);
    if (rc != SQLITE_ROW) {
        const int code = sqlite3_errcode(db) & 0xFF;
        std::string cause;
        if (code == SQLITE_NOTADB)
            cause = "not a model file (not an SQLite database)";
        else if (code == SQLITE_CORRUPT)
            cause = std::string("damaged: ") + sqlite3_errmsg(db);
        else if (rc == SQLITE_DONE)
            cause = "not a model file (no format version)";
        else if (code == SQLITE_ERROR)
            cause = std::string("not a model file (") + sqlite3_errmsg(db) + ")";
        else
            cause = ErrorText(db, "cannot open");
        sqlite3_finalize(stmt);
        sqlite3_close_v2(db);
        Fail(error, path, cause);
        return nullptr;
    }
    const sqlite3_int64 stored = sqlite3_column_int64(stmt, 0);
    sqlite3_finalize(stmt);
    // A newer library's file would lose what this one does not know at the next save.
    if (stored < 0 || stored > kCurrentFormatVersion) {
        sqlite3_close_v2(db);
        Fail(error, path,
             "cannot open: format version " + std::to_string(stored) +
                 " is not one this library reads (newest: " +
                 std::to_string(kCurrentFormatVersion) + ")");
        return nullptr;
    }
    const auto version = static_cast<DWORD>(stored);

    std::unique_ptr<CSqliteZmfFile> file(new CSqliteZmfFile(path, version, readOnly, db));
    if (!file->Configure() || !file->CheckTables() || !file->LoadBookkeeping()) {
        if (error) *error = file->GetLastError();
        return nullptr;
    }
    if (!file->CheckLength()) {
        if (error) *error = file->GetLastError();
        return nullptr;
    }
    file->RememberFileIdentity();
    return file;
}

// A file cut short may still open in SQLite (it then sizes the database by the
// file). The header records the size of the last committed database; a file
// shorter than that lost its tail.
bool CSqliteZmfFile::CheckLength() {
    unsigned char header[100];
    std::FILE* f = std::fopen(GetPath().c_str(), "rb");
    const bool read = f && std::fread(header, 1, sizeof header, f) == sizeof header;
    if (f) std::fclose(f);
    if (!read) return SetError("damaged: the file is truncated (no complete header)"), false;
    auto be32 = [&](int at) {
        return (std::uint32_t(header[at]) << 24) | (std::uint32_t(header[at + 1]) << 16) |
               (std::uint32_t(header[at + 2]) << 8) | std::uint32_t(header[at + 3]);
    };
    const std::uint32_t rawPageSize = (std::uint32_t(header[16]) << 8) | header[17];
    const std::uint64_t pageSize = rawPageSize == 1 ? 65536 : rawPageSize;
    const std::uint64_t pages = be32(28);
    // The size field is only meaningful when written by the same commit as the
    // change counter.
    if (pages == 0 || be32(24) != be32(92)) return true;
    struct stat st;
    if (::stat(GetPath().c_str(), &st) != 0) return SetError("cannot open: file vanished"), false;
    const std::uint64_t expected = pages * pageSize;
    if (static_cast<std::uint64_t>(st.st_size) < expected) {
        SetError("damaged: the file is truncated (" + std::to_string(st.st_size) + " of " +
                 std::to_string(expected) + " bytes)");
        return false;
    }
    return true;
}
