#include "zmflib/pg_file.h"

#include <libpq-fe.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <thread>
#include <unordered_map>

#include "zmflib/db_object.h"
#include "zmflib/pg_codec.h"

namespace zmf::pg {

void SResultDeleter::operator()(PGresult* result) const {
    PQclear(result);
}

namespace {

// Layout version of the store's own tables, recorded in each model's zmf_meta.
constexpr int kStoreLayoutVersion = 1;

// Rows of a save are sent to the server in pieces of about this size; a table's
// rows stay in memory until then (small tables until the commit).
constexpr std::size_t kSendBytes = std::size_t{1} << 20;

// The registry of the models in a database, created with the first model.
constexpr const char* kRegistrySchema =
    "CREATE SCHEMA IF NOT EXISTS zmf;"
    "CREATE TABLE IF NOT EXISTS zmf.models ("
    " id bigserial PRIMARY KEY,"
    " name text NOT NULL UNIQUE,"
    " schema_name text GENERATED ALWAYS AS ('zmf_model_' || id::text) STORED,"
    " version bigint NOT NULL DEFAULT 1,"
    " generation bigint NOT NULL DEFAULT 1,"
    " created_at timestamptz NOT NULL DEFAULT now(),"
    " saved_at timestamptz);";

// Serialises the creation of the registry (CREATE ... IF NOT EXISTS is not safe
// against a concurrent creation): an advisory lock of ours, held to the commit.
constexpr const char* kRegistryLock = "SELECT pg_advisory_xact_lock(7368038, 1);";

// A model's own advisory lock, held to the end of a transaction: shared by reads,
// exclusive for saves and write-through changes, so that no table is read
// half-way through a save. (Advisory locks write nothing: a read stays a
// transaction without writes, which commits without waiting for the disk.)
std::string ModelLock(std::int64_t modelId, bool shared) {
    return std::string("SELECT pg_advisory_xact_lock") + (shared ? "_shared" : "") + "(7368039, " +
           std::to_string(modelId) + ");";
}

// A model is kept waiting at most this long for another user's save (unless the
// URI sets lock_timeout itself, e.g. options=-c%20lock_timeout%3D5s).
constexpr const char* kLockWait = "30s";

// The undefined-table and undefined-schema states, and the ones of a unique
// violation and a lock wait that timed out.
constexpr const char* kUndefinedTable = "42P01";
constexpr const char* kUndefinedSchema = "3F000";
constexpr const char* kUniqueViolation = "23505";
constexpr const char* kLockNotAvailable = "55P03";

bool HasState(const PGresult* result, const char* state) {
    const char* s = result ? PQresultErrorField(result, PG_DIAG_SQLSTATE) : nullptr;
    return s && std::strcmp(s, state) == 0;
}

std::int64_t Int64Value(const PGresult* result, int row, int column) {
    return std::strtoll(PQgetvalue(result, row, column), nullptr, 10);
}

std::string Quoted(const std::string& model) {
    return "\"" + model + "\"";
}

// Message parts of the concurrency checks.
// `saved`: only a save by another user can have caused it.
std::string ChangedText(const std::string& model, bool saved) {
    return "model " + Quoted(model) + " changed since it was opened (another user " +
           (saved ? "saved it" : "saved or changed it") + "); reopen it to see the changes";
}
std::string GoneText(const std::string& model) {
    return "model " + Quoted(model) + " no longer exists on the server";
}
std::string BusyText(const std::string& model, const std::string& cause) {
    return "model " + Quoted(model) +
           " is busy: another user is saving or reading it; try again later (" + cause + ")";
}

struct SFreeCopyData {
    void operator()(char* data) const { PQfreemem(data); }
};
using CopyData = std::unique_ptr<char, SFreeCopyData>;

}  // namespace

// ---- cursor -------------------------------------------------------------------------

// Streams the rows of a COPY ... TO STDOUT (FORMAT binary). The connection carries
// one COPY at a time: when it is needed for something else while this cursor
// streams, Detach reads the remaining rows into memory and the cursor goes on from
// there. Rows must come in increasing ordinal order; a row out of order ends the
// read with an error rather than handing out rows in the wrong order.
class CPgCursor final : public CZmfCursor {
  public:
    // `sql` empty: a table absent from the server, which yields nothing.
    CPgCursor(CPgZmfFile* file, const SZmfTableDesc& desc, std::string sql)
        : m_file(file),
          m_desc(desc),
          m_sql(std::move(sql)),
          m_fieldCount(static_cast<int>(desc.columns.size()) + 1) {
        m_file->AddCursor(this);
    }

    ~CPgCursor() override {
        if (!m_file) return;
        if (m_state == EState::Streaming) Drain(false);
        m_file->RemoveCursor(this);
    }

    int Next(CDbObjectBase* row) override {
        if (m_state == EState::Pending && !Start()) return 0;
        for (;;) {
            if (m_at < m_end) {
                switch (m_fields.Parse(m_at, m_end, m_fieldCount)) {
                    case CTupleFields::EParse::Row: {
                        const std::int64_t ordinal = m_fields.Int8At(m_fieldCount - 1);
                        if (ordinal <= m_ordinal) {
                            Abandon(std::string("table \"") + m_desc.name +
                                    "\": rows are out of their stored order");
                            return 0;
                        }
                        m_ordinal = ordinal;
                        m_desc.writeRow(*row, m_fields);
                        return 1;
                    }
                    case CTupleFields::EParse::End:
                        m_at = m_end;
                        break;
                    case CTupleFields::EParse::Malformed:
                        Abandon(std::string("cannot read table \"") + m_desc.name +
                                "\": malformed row data from the server");
                        return 0;
                }
            }
            if (!NextMessage()) return 0;
        }
    }

    // The ordinal of the row Next returned last.
    std::int64_t Ordinal() const { return m_ordinal; }

    // Reads the rest of the stream into memory and frees the connection.
    void Detach() { Drain(true); }

    // The file is going away: the cursor yields nothing more.
    void Orphan() {
        m_file = nullptr;
        m_state = EState::Done;
        m_queue.clear();
        m_message.reset();
        m_at = m_end = nullptr;
    }

  private:
    enum class EState { Pending, Streaming, Buffered, Done };
    struct SMessage {
        CopyData data;
        int size = 0;
    };

    std::string What() const { return std::string("cannot read table \"") + m_desc.name + "\""; }

    bool Start() {
        m_state = EState::Done;
        if (!m_file || m_sql.empty()) return false;
        if (!m_file->Idle() || !m_file->BeginRead(What())) return false;
        Result result(PQexec(m_file->Conn(), m_sql.c_str()));
        if (PQresultStatus(result.get()) != PGRES_COPY_OUT) {
            m_file->RecordFailure(What(), result.get());
            m_file->EndRead();
            return false;
        }
        m_state = EState::Streaming;
        m_file->SetStreaming(this);
        return true;
    }

    // Moves to the next message of the stream; false at the end or on failure.
    bool NextMessage() {
        m_message.reset();
        m_at = m_end = nullptr;
        if (m_state == EState::Buffered) {
            if (m_queue.empty()) {
                m_state = EState::Done;
                return false;
            }
            m_message = std::move(m_queue.front().data);
            m_end = m_message.get() + m_queue.front().size;
            m_queue.pop_front();
        } else if (m_state == EState::Streaming) {
            char* data = nullptr;
            const int size = PQgetCopyData(m_file->Conn(), &data, 0);
            if (size <= 0) {
                EndStream(size == -1);
                return false;
            }
            m_message.reset(data);
            m_end = data + size;
        } else {
            return false;
        }
        m_at = m_message.get();
        if (!m_headerSeen) {
            m_headerSeen = true;
            const std::size_t available = static_cast<std::size_t>(m_end - m_at);
            if (available < kCopyHeaderSize || std::memcmp(m_at, kCopyHeader, 11) != 0) {
                Abandon(What() + ": malformed COPY header from the server");
                return false;
            }
            const auto extension = static_cast<std::size_t>(
                (static_cast<unsigned char>(m_at[15]) << 24) |
                (static_cast<unsigned char>(m_at[16]) << 16) |
                (static_cast<unsigned char>(m_at[17]) << 8) | static_cast<unsigned char>(m_at[18]));
            if (available < kCopyHeaderSize + extension) {
                Abandon(What() + ": malformed COPY header from the server");
                return false;
            }
            m_at += kCopyHeaderSize + extension;
        }
        return true;
    }

    // Reads what is left of the stream, into the queue when `keep`.
    void Drain(bool keep) {
        if (m_state != EState::Streaming) return;
        for (;;) {
            char* data = nullptr;
            const int size = PQgetCopyData(m_file->Conn(), &data, 0);
            if (size <= 0) {
                const bool ok = EndStream(size == -1);
                if (ok && keep) m_state = EState::Buffered;
                return;
            }
            if (keep)
                m_queue.push_back({CopyData(data), size});
            else
                PQfreemem(data);
        }
    }

    // Collects the COPY's final result and gives the connection back.
    bool EndStream(bool complete) {
        m_state = EState::Done;
        m_file->SetStreaming(nullptr);
        bool ok = complete;
        Result failure;
        while (PGresult* raw = PQgetResult(m_file->Conn())) {
            Result result(raw);
            if (PQresultStatus(raw) != PGRES_COMMAND_OK && !failure) {
                ok = false;
                failure = std::move(result);
            }
        }
        if (!ok) {
            m_file->RecordFailure(What(), failure.get());
            m_queue.clear();
        }
        m_file->EndRead();
        return ok;
    }

    // Stops reading after a fault in the data, with `message` as the file's error.
    void Abandon(const std::string& message) {
        const bool streaming = m_state == EState::Streaming;
        if (streaming) Drain(false);
        m_state = EState::Done;
        m_queue.clear();
        m_at = m_end = nullptr;
        m_file->SetError(message);
    }

    CPgZmfFile* m_file;  // not owned; null once the file is gone
    const SZmfTableDesc& m_desc;
    const std::string m_sql;
    const int m_fieldCount;
    EState m_state = EState::Pending;
    std::deque<SMessage> m_queue;  // the rest of the stream, after Detach
    CopyData m_message;            // the message being read
    const char* m_at = nullptr;
    const char* m_end = nullptr;
    bool m_headerSeen = false;
    CTupleFields m_fields;
    std::int64_t m_ordinal = 0;
};

// ---- table --------------------------------------------------------------------------

class CPgTable final : public CTableBase {
  public:
    CPgTable(CPgZmfFile* file, const SZmfTableDesc& desc)
        : CTableBase(file, desc),
          m_file(*file),
          m_table(file->Schema() + "." + QuoteIdent(desc.name)),
          m_columns(ColumnList(desc, false)),
          m_key(QuoteIdent(desc.columns[0].name)) {}

    // ---- save -------------------------------------------------------------------
    bool Clear() override {
        ResetPositional();
        m_buffer.clear();
        if (m_file.CopyingInto(this) && !m_file.EndCopyIn()) return false;
        if (!m_file.TableExists(GetName())) {
            if (!m_file.EnsureTableExists(GetDesc())) return false;
        } else {
            m_file.QueueTruncate(*this);
        }
        m_fresh = true;
        m_nextOrdinal = 1;
        m_inOrder = true;
        return true;
    }

    // At ReleaseTable: a table whose rows stream ends its COPY; the rows of a small
    // table wait for the commit (so that its TRUNCATE joins the others').
    bool Flush() override { return m_file.CopyingInto(this) ? SendRows(true) : true; }

    // Sends the buffered rows; with `end`, also ends this table's COPY.
    bool SendRows(bool end) {
        if (m_file.ChangeBroken()) return false;
        if (!m_buffer.empty()) {
            if (!m_file.CopyingInto(this) && !m_file.StartCopyIn(*this, m_fresh)) return false;
            if (PQputCopyData(m_file.Conn(), m_buffer.data(), static_cast<int>(m_buffer.size())) !=
                1) {
                m_file.RecordFailure(SaveWhat(), nullptr);
                return false;
            }
            m_buffer.clear();
        }
        return end && m_file.CopyingInto(this) ? m_file.EndCopyIn() : true;
    }

    const std::string& QualifiedName() const { return m_table; }

    // After a commit, and after an abandoned change (whose effects are gone).
    void Committed() {
        m_fresh = false;
        m_inOrderStored = m_inOrder;
    }
    void Abandoned() {
        m_buffer.clear();
        m_fresh = false;
        m_inOrder = m_inOrderStored;
        m_nextOrdinal = 0;
        ResetPositional();
    }

    // Whether a plain scan returns the rows in stored order (see LoadInOrder).
    bool InOrderChanged() const { return m_inOrder != m_inOrderStored; }
    bool InOrder() const { return m_inOrder; }
    void LoadInOrder(bool inOrder) { m_inOrder = m_inOrderStored = inOrder; }

  protected:
    int DoInsert(const CDbObjectBase* row) override {
        ResetPositional();
        if (!m_file.IsSaving())
            return m_file.WriteThrough(WriteWhat(), [&] { return InsertNow(*row); }) > 0 ? 1 : 0;
        if (m_file.ChangeBroken() || !m_file.EnsureTableExists(GetDesc())) return 0;
        if (m_nextOrdinal == 0 && !LoadNextOrdinal()) return 0;
        // Rows added to a table this save did not empty may land anywhere in it.
        if (!m_fresh) m_inOrder = false;
        CTupleWriter(m_buffer).Write(GetDesc(), *row, m_nextOrdinal++);
        if (m_buffer.size() >= kSendBytes && !SendRows(false)) return 0;
        return 1;
    }

    int DoUpdate(const CDbObjectBase* row) override {
        return Change("cannot update", [&] {
            CRowParams params(GetDesc(), *row, 0);
            std::string sql = "UPDATE " + m_table + " SET ";
            for (std::size_t i = 0; i < GetDesc().columns.size(); ++i) {
                if (i) sql += ',';
                sql += QuoteIdent(GetDesc().columns[i].name) + "=$" + std::to_string(i + 1);
            }
            sql += " WHERE " + std::string(kOrdinalColumn) + "=(" + FirstOrdinalByKey() + ")";
            const int changed = RunChange(sql, params.Count() - 1, params, "cannot update");
            // An updated row moves within the table's storage.
            if (changed > 0) m_inOrder = false;
            return changed;
        });
    }

    int DoDelete(const CDbObjectBase* row) override {
        return Change("cannot delete", [&] {
            CRowParams params(GetDesc(), *row, 0);
            const std::string sql = "DELETE FROM " + m_table + " WHERE " + kOrdinalColumn + "=(" +
                                    FirstOrdinalByKey() + ")";
            return RunChange(sql, 1, params, "cannot delete");
        });
    }

    int DoGet(CDbObjectBase* row) override {
        if (!Settle() || !m_file.TableExists(GetName())) return 0;
        if (!m_file.BeginRead(ReadWhat())) return 0;
        CRowParams params(GetDesc(), *row, 0);
        Result result = m_file.ExecParams("SELECT " + m_columns + " FROM " + m_table + " WHERE " +
                                              m_key + "=$1 ORDER BY " + kOrdinalColumn + " LIMIT 1",
                                          1, params.Values(), params.Lengths(), params.Formats(), 1,
                                          ReadWhat());
        m_file.EndRead();
        if (!result || PQntuples(result.get()) == 0) return 0;
        CTupleFields fields;
        fields.Resize(PQnfields(result.get()));
        for (int i = 0; i < PQnfields(result.get()); ++i) {
            fields.Set(i, PQgetvalue(result.get(), 0, i),
                       PQgetisnull(result.get(), 0, i) ? -1 : PQgetlength(result.get(), 0, i));
        }
        GetDesc().writeRow(*row, fields);
        return 1;
    }

    POSITION DoGetStartPosition() override {
        ResetPositional();
        m_posCursor = NewCursor("");
        return ReadAhead();
    }

    void DoGetNext(POSITION& pos, CDbObjectBase* row) override {
        const auto ordinal = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(pos));
        if (!m_posCursor || m_posOrdinal != ordinal) {
            ResetPositional();
            m_posCursor =
                NewCursor(std::string(" WHERE ") + kOrdinalColumn + ">=" + std::to_string(ordinal));
            if (!ReadAhead()) {
                pos = nullptr;
                return;
            }
        }
        row->Copy(m_posRow.get());
        pos = ReadAhead();
    }

    ULONG DoGetCount() override {
        if (!Settle() || !m_file.TableExists(GetName())) return 0;
        if (!m_file.BeginRead(ReadWhat())) return 0;
        Result result = m_file.Exec("SELECT count(*) FROM " + m_table, ReadWhat());
        m_file.EndRead();
        return result ? static_cast<ULONG>(Int64Value(result.get(), 0, 0)) : 0;
    }

    std::unique_ptr<CZmfCursor> DoOpenCursor() override { return NewCursor(""); }

  private:
    std::string SaveWhat() const { return std::string("cannot save table \"") + GetName() + "\""; }
    std::string WriteWhat() const {
        return std::string("cannot write table \"") + GetName() + "\"";
    }
    std::string ReadWhat() const { return std::string("cannot read table \"") + GetName() + "\""; }

    std::string FirstOrdinalByKey() const {
        return std::string("SELECT ") + kOrdinalColumn + " FROM " + m_table + " WHERE " + m_key +
               "=$1 ORDER BY " + kOrdinalColumn + " LIMIT 1";
    }

    // Makes the stored rows current (this table's buffered rows sent, the
    // connection free) before a statement reads or changes them.
    bool Settle() {
        if (m_file.InChange() && (!m_buffer.empty() || m_file.CopyingInto(this)) && !SendRows(true))
            return false;
        return m_file.Idle() && m_file.FlushTruncate(*this);
    }

    // An update or delete: inside the open save, or written through at once.
    int Change(const char* what, const std::function<int()>& change) {
        ResetPositional();
        auto run = [&] {
            if (!Settle()) return -1;
            return m_file.TableExists(GetName()) ? change() : 0;
        };
        if (m_file.IsSaving()) {
            if (m_file.ChangeBroken()) return 0;
            return run() > 0 ? 1 : 0;
        }
        return m_file.WriteThrough(std::string(what) + " table \"" + GetName() + "\"", run) > 0 ? 1
                                                                                                : 0;
    }

    // Runs an UPDATE or DELETE: 1 when a row changed, 0 when none matched, -1 on
    // failure.
    int RunChange(const std::string& sql, int count, const CRowParams& params, const char* what) {
        Result result =
            m_file.ExecParams(sql, count, params.Values(), params.Lengths(), params.Formats(), 0,
                              std::string(what) + " table \"" + GetName() + "\"");
        if (!result) return -1;
        return std::atoi(PQcmdTuples(result.get())) > 0 ? 1 : 0;
    }

    // A write-through insert: the row goes after every stored row.
    int InsertNow(const CDbObjectBase& row) {
        if (!m_file.EnsureTableExists(GetDesc())) return -1;
        if (m_nextOrdinal == 0 && !LoadNextOrdinal()) return -1;
        CRowParams params(GetDesc(), row, m_nextOrdinal);
        std::string values;
        for (int i = 1; i <= params.Count(); ++i)
            values += (i > 1 ? ",$" : "$") + std::to_string(i);
        Result result = m_file.ExecParams("INSERT INTO " + m_table + " (" + m_columns + "," +
                                              kOrdinalColumn + ") VALUES (" + values + ")",
                                          params.Count(), params.Values(), params.Lengths(),
                                          params.Formats(), 0, WriteWhat());
        if (!result) return -1;
        ++m_nextOrdinal;
        // A row inserted into a table that has seen deletes may fill a gap.
        m_inOrder = false;
        return 1;
    }

    bool LoadNextOrdinal() {
        if (!m_file.Idle()) return false;
        Result result = m_file.Exec(
            "SELECT coalesce(max(" + std::string(kOrdinalColumn) + "),0)+1 FROM " + m_table,
            WriteWhat());
        if (!result) return false;
        m_nextOrdinal = Int64Value(result.get(), 0, 0);
        return true;
    }

    // A cursor over the stored rows from the ordinal `where` names (empty: all).
    // A table known to be in stored order is read by a plain scan; otherwise the
    // rows are sorted by their ordinals.
    std::unique_ptr<CPgCursor> NewCursor(const std::string& where) {
        std::string sql;
        if (Settle() && m_file.TableExists(GetName())) {
            const std::string columns = ColumnList(GetDesc(), true);
            if (where.empty() && m_inOrder)
                sql = "COPY " + m_table + " (" + columns + ") TO STDOUT (FORMAT binary)";
            else
                sql = "COPY (SELECT " + columns + " FROM " + m_table + where + " ORDER BY " +
                      kOrdinalColumn + ") TO STDOUT (FORMAT binary)";
        }
        return std::make_unique<CPgCursor>(&m_file, GetDesc(), std::move(sql));
    }

    POSITION ReadAhead() {
        if (!m_posRow) m_posRow.reset(GetDesc().createRow());
        if (!m_posCursor || !m_posCursor->Next(m_posRow.get())) {
            ResetPositional();
            return nullptr;
        }
        m_posOrdinal = m_posCursor->Ordinal();
        return reinterpret_cast<POSITION>(static_cast<std::uintptr_t>(m_posOrdinal));
    }

    void ResetPositional() {
        m_posCursor.reset();
        m_posOrdinal = 0;
    }

    CPgZmfFile& m_file;           // not owned: the file owns this table
    const std::string m_table;    // schema-qualified, quoted
    const std::string m_columns;  // catalogue columns, quoted
    const std::string m_key;
    std::string m_buffer;            // rows of the save not yet sent, as binary tuples
    bool m_fresh = false;            // emptied or created by the open save
    std::int64_t m_nextOrdinal = 0;  // 0: not known yet
    bool m_inOrder = true;
    bool m_inOrderStored = true;
    std::unique_ptr<CPgCursor> m_posCursor;   // the positional walk
    std::unique_ptr<CDbObjectBase> m_posRow;  // the row at the walk's position
    std::int64_t m_posOrdinal = 0;
};

}  // namespace zmf::pg

using namespace zmf::pg;

// ---- file: connection and errors ------------------------------------------------------

CPgZmfFile::CPgZmfFile(zmf::SPgLocation location)
    : CZmfFile(location.shown, kCurrentFormatVersion, false), m_location(std::move(location)) {}

CPgZmfFile::~CPgZmfFile() {
    for (CPgCursor* cursor : m_cursors)
        cursor->Orphan();
    m_cursors.clear();
    // Closing the connection rolls back whatever transaction is open.
    if (m_conn) PQfinish(m_conn);
}

void CPgZmfFile::RemoveCursor(CPgCursor* cursor) {
    m_cursors.erase(cursor);
    if (m_streaming == cursor) m_streaming = nullptr;
}

std::unique_ptr<CTableBase> CPgZmfFile::CreateTable(const SZmfTableDesc& desc) {
    return std::make_unique<CPgTable>(this, desc);
}

template <class F>
void CPgZmfFile::ForEachPgTable(F&& f) {
    ForEachTable([&](CTableBase& table) { f(static_cast<CPgTable&>(table)); });
}

void CPgZmfFile::Fail(const std::string& message) {
    SetError(zmf::Scrub(message, m_location.secrets));
}

std::string CPgZmfFile::Cause(const PGresult* result) const {
    const char* primary = result ? PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY) : nullptr;
    std::string text = primary ? primary : (m_conn ? PQerrorMessage(m_conn) : "out of memory");
    // libpq's own messages span lines; one line reads better after a file name.
    while (!text.empty() && (text.back() == '\n' || text.back() == ' '))
        text.pop_back();
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at))
        text.replace(at, 1, "; ");
    if (text.empty()) text = "unknown failure";
    return text;
}

void CPgZmfFile::OnConnectionLost() {
    if (m_streaming) m_streaming = nullptr;
    m_copyIn = nullptr;
    if (m_txn == ETxn::Read) m_txn = ETxn::None;
}

void CPgZmfFile::RecordFailure(const std::string& what, const PGresult* result) {
    std::string message = what + ": " + Cause(result);
    const bool lost = m_conn && PQstatus(m_conn) != CONNECTION_OK;
    if (lost) OnConnectionLost();
    if (m_txn == ETxn::Change) {
        if (lost) {
            message += IsSaving() ? " (the connection to the server was lost during the save: "
                                    "nothing of it was kept, the previous model is intact)"
                                  : " (the connection to the server was lost: the change was "
                                    "not made)";
        }
        // The first failure of a change is the one to report.
        if (m_changeBroken) return;
        m_changeBroken = true;
    } else if (lost) {
        message += " (the connection to the server was lost)";
    }
    Fail(message);
}

zmf::pg::Result CPgZmfFile::Exec(const std::string& sql, const std::string& what) {
    Result result(PQexec(m_conn, sql.c_str()));
    const ExecStatusType status = PQresultStatus(result.get());
    if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK) return result;
    RecordFailure(what, result.get());
    return nullptr;
}

zmf::pg::Result CPgZmfFile::ExecParams(const std::string& sql, int count, const char* const* values,
                                       const int* lengths, const int* formats, int resultFormat,
                                       const std::string& what) {
    Result result(
        PQexecParams(m_conn, sql.c_str(), count, nullptr, values, lengths, formats, resultFormat));
    const ExecStatusType status = PQresultStatus(result.get());
    if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK) return result;
    RecordFailure(what, result.get());
    return nullptr;
}

bool CPgZmfFile::Connect(std::string* error) {
    // Keywords before "dbname" are defaults that the URI may override.
    const char* keywords[] = {"connect_timeout", "fallback_application_name", "dbname", nullptr};
    const char* values[] = {"10", "tessmeta", m_location.conninfo.c_str(), nullptr};
    m_conn = PQconnectdbParams(keywords, values, 1);
    if (!m_conn || PQstatus(m_conn) != CONNECTION_OK) {
        const std::string message = GetPath() + ": cannot connect: " + Cause(nullptr);
        if (error) *error = zmf::Scrub(message, m_location.secrets);
        return false;
    }
    if (Configure()) return true;
    if (error) *error = GetLastError();
    return false;
}

// Session settings: a plain scan must return rows in storage order (no scan that
// joins another one half-way, no parallel workers), notices stay quiet, and a
// save waits a bounded time for another user's.
bool CPgZmfFile::Configure() {
    PQsetNoticeProcessor(
        m_conn, [](void*, const char*) {}, nullptr);
    m_backendPid = PQbackendPID(m_conn);
    return static_cast<bool>(
        Exec(std::string("SET synchronize_seqscans = off; SET max_parallel_workers_per_gather = 0;"
                         " SET client_min_messages = warning;"
                         " SELECT set_config('lock_timeout', '") +
                 kLockWait + "', false) WHERE current_setting('lock_timeout') = '0'",
             "cannot configure the connection"));
}

bool CPgZmfFile::EnsureConnected(const std::string& what) {
    if (PQstatus(m_conn) == CONNECTION_OK) return true;
    OnConnectionLost();
    PQreset(m_conn);
    if (PQstatus(m_conn) != CONNECTION_OK) {
        Fail(what + ": cannot reach the server again: " + Cause(nullptr));
        return false;
    }
    return Configure();
}

// ---- file: transactions ---------------------------------------------------------------

bool CPgZmfFile::Idle() {
    if (m_streaming) m_streaming->Detach();
    return !m_copyIn || EndCopyIn();
}

// A read or change that could not take the model's lock or read its numbers: a
// lock wait that timed out says that another user holds the model.
void CPgZmfFile::FailToStart(const std::string& what, const PGresult* result) {
    if (HasState(result, kLockNotAvailable))
        Fail(what + ": " + BusyText(GetModelName(), Cause(result)));
    else
        RecordFailure(what, result);
}

bool CPgZmfFile::BeginRead(const std::string& what) {
    if (m_txn != ETxn::None) return m_txn == ETxn::Read || !m_changeBroken;
    if (!EnsureConnected(what)) return false;
    Result result(
        PQexec(m_conn, ("BEGIN;" + ModelLock(m_modelId, true) +
                        "SELECT generation FROM zmf.models WHERE id = " + std::to_string(m_modelId))
                           .c_str()));
    const bool read = PQresultStatus(result.get()) == PGRES_TUPLES_OK;
    if (read && PQntuples(result.get()) == 1 && Int64Value(result.get(), 0, 0) == m_generation) {
        m_txn = ETxn::Read;
        return true;
    }
    if (read)
        Fail(what + ": " +
             (PQntuples(result.get()) ? ChangedText(GetModelName(), true)
                                      : GoneText(GetModelName())));
    else
        FailToStart(what, result.get());
    if (PQstatus(m_conn) == CONNECTION_OK) PQclear(PQexec(m_conn, "ROLLBACK"));
    return false;
}

void CPgZmfFile::EndRead() {
    if (m_txn != ETxn::Read || m_streaming) return;
    m_txn = ETxn::None;
    if (PQstatus(m_conn) == CONNECTION_OK) PQclear(PQexec(m_conn, "COMMIT"));
}

// Opens a change: a transaction that bumps the model's version. A save requires
// the version this file knows (no change by anyone since) and also bumps the
// generation; a write-through change requires only the generation (no save by
// anyone since). Waits for another user's save to end (at most the lock timeout),
// and then sees its new numbers.
bool CPgZmfFile::BeginChange(const std::string& what, bool save) {
    if (m_txn == ETxn::Read) {
        if (m_streaming) m_streaming->Detach();
        EndRead();
    }
    m_changeBroken = false;
    if (!EnsureConnected(what)) return false;
    const std::string sql =
        "BEGIN;" + ModelLock(m_modelId, false) + "UPDATE zmf.models SET version = version + 1" +
        std::string(save ? ", generation = generation + 1, saved_at = now()" : "") +
        " WHERE id = " + std::to_string(m_modelId) +
        (save ? " AND version = " + std::to_string(m_version)
              : " AND generation = " + std::to_string(m_generation)) +
        " RETURNING version, generation, txid_current()";
    Result result(PQexec(m_conn, sql.c_str()));
    if (PQresultStatus(result.get()) == PGRES_TUPLES_OK && PQntuples(result.get()) == 1) {
        m_newVersion = Int64Value(result.get(), 0, 0);
        m_newGeneration = Int64Value(result.get(), 0, 1);
        m_txid = Int64Value(result.get(), 0, 2);
        m_changeIsSave = save;
        m_txn = ETxn::Change;
        return true;
    }
    if (PQresultStatus(result.get()) == PGRES_TUPLES_OK) {
        PQclear(PQexec(m_conn, "ROLLBACK"));
        Result row(PQexec(
            m_conn, ("SELECT 1 FROM zmf.models WHERE id = " + std::to_string(m_modelId)).c_str()));
        const bool exists = PQresultStatus(row.get()) == PGRES_TUPLES_OK && PQntuples(row.get());
        Fail(what + ": " +
             (exists ? ChangedText(GetModelName(), !save) : GoneText(GetModelName())));
        return false;
    }
    FailToStart(what, result.get());
    if (PQstatus(m_conn) == CONNECTION_OK) PQclear(PQexec(m_conn, "ROLLBACK"));
    return false;
}

bool CPgZmfFile::BookkeepingDirty() {
    bool dirty = IsVersionDirty() || GetIdentityMgr()->IsDirty();
    ForEachPgTable([&](CPgTable& t) { dirty = dirty || t.IsSizeEstimateDirty(); });
    return dirty;
}

bool CPgZmfFile::PersistBookkeeping(const std::string& what) {
    std::string sql;
    if (IsVersionDirty()) {
        sql += "INSERT INTO " + m_schemaSql + ".zmf_meta VALUES ('format_version', " +
               std::to_string(GetFormatVersion()) +
               ") ON CONFLICT (key) DO UPDATE SET value = EXCLUDED.value;";
    }
    if (GetIdentityMgr()->IsDirty()) {
        std::string values;
        GetIdentityMgr()->ForEachCounter([&](int kind, ULONG value) {
            values += (values.empty() ? "(" : ",(") + std::to_string(kind) + "," +
                      std::to_string(value) + ")";
        });
        if (!values.empty())
            sql += "INSERT INTO " + m_schemaSql + ".zmf_key_counter VALUES " + values +
                   " ON CONFLICT (kind) DO UPDATE SET value = EXCLUDED.value;";
    }
    std::string info;
    ForEachPgTable([&](CPgTable& t) {
        if (!t.IsSizeEstimateDirty() && !t.InOrderChanged()) return;
        const std::string estimate =
            t.HasStoredSizeEstimate() ? std::to_string(t.GetSizeEstimate()) : "NULL";
        info += (info.empty() ? "(" : ",(") + QuoteLiteral(t.GetName()) + "," + estimate + "," +
                (t.InOrder() ? "true" : "false") + ")";
    });
    if (!info.empty())
        sql += "INSERT INTO " + m_schemaSql + ".zmf_table_info VALUES " + info +
               " ON CONFLICT (name) DO UPDATE SET size_estimate = EXCLUDED.size_estimate,"
               " in_order = EXCLUDED.in_order;";
    return sql.empty() || Exec(sql, what);
}

bool CPgZmfFile::FinishChange(const std::string& what) {
    if (m_changeBroken || !Idle() || !EmptyRemainingTables() || !PersistBookkeeping(what)) {
        AbortChange();
        return false;
    }
    Result result(PQexec(m_conn, "COMMIT"));
    const bool committed = PQresultStatus(result.get()) == PGRES_COMMAND_OK &&
                           std::strcmp(PQcmdStatus(result.get()), "COMMIT") == 0;
    if (!committed) {
        const bool lost = PQstatus(m_conn) != CONNECTION_OK;
        if (!lost || !ResolveLostCommit(what)) {
            if (!lost) RecordFailure(what, result.get());
            AbortChange();
            return false;
        }
    }
    m_txn = ETxn::None;
    // A write-through change that followed another user's keeps this file's
    // version behind: its next save must still be refused.
    if (m_changeIsSave || m_newVersion == m_version + 1) m_version = m_newVersion;
    m_generation = m_newGeneration;
    m_createdInTxn.clear();
    ForEachPgTable([](CPgTable& t) {
        t.Committed();
        t.ClearSizeEstimateDirty();
    });
    GetIdentityMgr()->ClearDirty();
    ClearVersionDirty();
    return true;
}

// The connection broke while the COMMIT was on its way: the transaction may or may
// not have committed. A new connection asks the server. True when it committed.
bool CPgZmfFile::ResolveLostCommit(const std::string& what) {
    const std::string cause = Cause(nullptr);
    const int oldPid = m_backendPid;
    OnConnectionLost();
    const std::string lost =
        what + ": the connection to the server was lost while committing (" + cause + "); ";
    PQreset(m_conn);
    if (PQstatus(m_conn) != CONNECTION_OK || !Configure()) {
        Fail(lost +
             "the server cannot be reached to tell whether the save was kept: reopen the model "
             "to see");
        return false;
    }
    const std::string query = "SELECT txid_status(" + std::to_string(m_txid) + ")";
    for (int attempt = 0; attempt < 50; ++attempt) {
        Result result(PQexec(m_conn, query.c_str()));
        const char* status =
            PQresultStatus(result.get()) == PGRES_TUPLES_OK && !PQgetisnull(result.get(), 0, 0)
                ? PQgetvalue(result.get(), 0, 0)
                : "";
        if (std::strcmp(status, "committed") == 0) return true;
        if (std::strcmp(status, "aborted") == 0) {
            Fail(lost + "the server rolled the save back: the previous model is intact");
            return false;
        }
        if (std::strcmp(status, "in progress") != 0) break;
        // The old session still runs on the server: end it, which rolls it back.
        if (attempt == 0)
            PQclear(PQexec(
                m_conn, ("SELECT pg_terminate_backend(" + std::to_string(oldPid) + ")").c_str()));
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    Fail(lost + "the server cannot tell whether the save was kept: reopen the model to see");
    return false;
}

void CPgZmfFile::AbortChange() {
    if (m_streaming) m_streaming->Detach();
    if (m_copyIn && PQstatus(m_conn) == CONNECTION_OK) {
        PQputCopyEnd(m_conn, "the save was abandoned");
        while (PGresult* r = PQgetResult(m_conn))
            PQclear(r);
    }
    m_copyIn = nullptr;
    if (PQstatus(m_conn) == CONNECTION_OK) PQclear(PQexec(m_conn, "ROLLBACK"));
    m_txn = ETxn::None;
    m_truncates.clear();
    for (const std::string& name : m_createdInTxn)
        m_existing.erase(name);
    m_createdInTxn.clear();
    ForEachPgTable([](CPgTable& t) { t.Abandoned(); });
}

int CPgZmfFile::WriteThrough(const std::string& what, const std::function<int()>& change) {
    if (!BeginChange(what, false)) return -1;
    const int done = change();
    if (done <= 0) {
        AbortChange();
        return done;
    }
    return FinishChange(what) ? 1 : -1;
}

bool CPgZmfFile::BeginSave() {
    if (!BeginChange("cannot save", true)) return false;
    return true;
}

bool CPgZmfFile::CommitSave() {
    if (!IsSaving()) {
        // A commit without a save: only bookkeeping (format version, counters) to
        // write, if anything changed.
        if (!BookkeepingDirty()) return true;
        if (!BeginChange("cannot save", true)) return false;
        return FinishChange("cannot save");
    }
    if (m_txn != ETxn::Change) return false;
    bool ok = !m_changeBroken;
    ForEachPgTable([&](CPgTable& t) { ok = ok && t.SendRows(true); });
    return ok ? FinishChange("cannot save") : (AbortChange(), false);
}

void CPgZmfFile::AbandonSave() {
    if (m_txn == ETxn::Change) AbortChange();
}

// ---- file: COPY into tables ---------------------------------------------------------

bool CPgZmfFile::StartCopyIn(CPgTable& table, bool freeze) {
    if (!Idle() || !FlushTruncate(table)) return false;
    // FREEZE writes the rows as already visible to everyone, which spares every
    // later reader the work of checking them; the server allows it only for a
    // table emptied or created in this transaction.
    const std::string sql = "COPY " + table.QualifiedName() + " (" +
                            ColumnList(table.GetDesc(), true) + ") FROM STDIN (FORMAT binary" +
                            (freeze ? ", FREEZE" : "") + ")";
    const std::string what = std::string("cannot save table \"") + table.GetName() + "\"";
    Result result(PQexec(m_conn, sql.c_str()));
    if (PQresultStatus(result.get()) != PGRES_COPY_IN) {
        RecordFailure(what, result.get());
        return false;
    }
    m_copyIn = &table;
    if (PQputCopyData(m_conn, kCopyHeader, static_cast<int>(kCopyHeaderSize)) != 1) {
        RecordFailure(what, nullptr);
        return false;
    }
    return true;
}

bool CPgZmfFile::EndCopyIn() {
    CPgTable* table = m_copyIn;
    m_copyIn = nullptr;
    const std::string what = std::string("cannot save table \"") + table->GetName() + "\"";
    if (PQputCopyData(m_conn, kCopyTrailer, 2) != 1 || PQputCopyEnd(m_conn, nullptr) != 1) {
        RecordFailure(what, nullptr);
        return false;
    }
    bool ok = true;
    while (PGresult* raw = PQgetResult(m_conn)) {
        Result result(raw);
        if (ok && PQresultStatus(raw) != PGRES_COMMAND_OK) {
            RecordFailure(what, raw);
            ok = false;
        }
    }
    return ok;
}

void CPgZmfFile::QueueTruncate(CPgTable& table) {
    for (CPgTable* queued : m_truncates)
        if (queued == &table) return;
    m_truncates.push_back(&table);
}

bool CPgZmfFile::FlushTruncate(CPgTable& table) {
    for (auto it = m_truncates.begin(); it != m_truncates.end(); ++it) {
        if (*it != &table) continue;
        m_truncates.erase(it);
        return static_cast<bool>(Exec("TRUNCATE " + table.QualifiedName(), "cannot save"));
    }
    return true;
}

// Tables the save emptied and left empty: a DELETE of their (usually no) rows is
// far cheaper than a TRUNCATE, which gives every table new files.
bool CPgZmfFile::EmptyRemainingTables() {
    std::string sql;
    for (CPgTable* table : m_truncates)
        sql += "DELETE FROM " + table->QualifiedName() + ";";
    m_truncates.clear();
    return sql.empty() || Exec(sql, "cannot save");
}

bool CPgZmfFile::EnsureTableExists(const SZmfTableDesc& desc) {
    if (TableExists(desc.name)) return true;
    std::string sql = "CREATE TABLE " + m_schemaSql + "." + QuoteIdent(desc.name) + " (";
    for (const SZmfColumnDesc& c : desc.columns)
        sql += QuoteIdent(c.name) + " " + SqlType(c.type) + ", ";
    sql += std::string(kOrdinalColumn) + " bigint NOT NULL)";
    if (!Idle() || !Exec(sql, std::string("cannot create table \"") + desc.name + "\""))
        return false;
    m_existing.insert(desc.name);
    m_createdInTxn.push_back(desc.name);
    return true;
}

// ---- file: creating and opening ----------------------------------------------------------

bool CPgZmfFile::CreateInServer(DWORD formatVersion) {
    const std::string what = "cannot create";
    if (!Exec(std::string("BEGIN;") + kRegistryLock + kRegistrySchema, what)) return false;
    const char* values[] = {m_location.model.c_str()};
    Result result(PQexecParams(m_conn,
                               "INSERT INTO zmf.models (name) VALUES ($1)"
                               " RETURNING id, version, generation",
                               1, nullptr, values, nullptr, nullptr, 0));
    if (PQresultStatus(result.get()) != PGRES_TUPLES_OK) {
        if (HasState(result.get(), kUniqueViolation))
            Fail(what + ": model " + Quoted(GetModelName()) + " already exists");
        else
            RecordFailure(what, result.get());
        return false;
    }
    m_modelId = Int64Value(result.get(), 0, 0);
    m_version = Int64Value(result.get(), 0, 1);
    m_generation = Int64Value(result.get(), 0, 2);
    m_schemaName = "zmf_model_" + std::to_string(m_modelId);
    m_schemaSql = QuoteIdent(m_schemaName);

    std::string sql = "CREATE SCHEMA " + m_schemaSql + ";";
    sql +=
        "CREATE TABLE " + m_schemaSql + ".zmf_meta (key text PRIMARY KEY, value bigint NOT NULL);";
    sql += "CREATE TABLE " + m_schemaSql +
           ".zmf_table_info (name text PRIMARY KEY, size_estimate bigint,"
           " in_order boolean NOT NULL DEFAULT true);";
    sql += "CREATE TABLE " + m_schemaSql +
           ".zmf_key_counter (kind integer PRIMARY KEY, value bigint NOT NULL);";
    sql += "INSERT INTO " + m_schemaSql + ".zmf_meta VALUES ('format_version', " +
           std::to_string(formatVersion) + "), ('store_layout', " +
           std::to_string(kStoreLayoutVersion) + ");";
    if (!Exec(sql, what)) return false;
    for (const SZmfTableDesc* desc : zmf::AllTables())
        if (!EnsureTableExists(*desc)) return false;
    m_createdInTxn.clear();
    if (!Exec("COMMIT", what)) return false;
    SetFormatVersion(formatVersion);
    ClearVersionDirty();
    return true;
}

bool CPgZmfFile::LoadFromServer() {
    const std::string what = "cannot open";
    const char* values[] = {m_location.model.c_str()};
    Result result(PQexecParams(m_conn, "SELECT id FROM zmf.models WHERE name = $1", 1, nullptr,
                               values, nullptr, nullptr, 0));
    if (PQresultStatus(result.get()) != PGRES_TUPLES_OK) {
        if (HasState(result.get(), kUndefinedTable) || HasState(result.get(), kUndefinedSchema))
            Fail(what + ": no model named " + Quoted(GetModelName()) +
                 " (the database holds no models)");
        else
            RecordFailure(what, result.get());
        return false;
    }
    if (PQntuples(result.get()) != 1) {
        Fail(what + ": no model named " + Quoted(GetModelName()));
        return false;
    }
    m_modelId = Int64Value(result.get(), 0, 0);
    m_schemaName = "zmf_model_" + std::to_string(m_modelId);
    m_schemaSql = QuoteIdent(m_schemaName);
    // The model as it stands between saves: its numbers and bookkeeping under the
    // shared lock.
    Result numbers = Exec(
        "BEGIN;" + ModelLock(m_modelId, true) +
            "SELECT version, generation FROM zmf.models WHERE id = " + std::to_string(m_modelId),
        what);
    if (!numbers) return false;
    if (PQntuples(numbers.get()) != 1) {
        Fail(what + ": no model named " + Quoted(GetModelName()));
        return false;
    }
    m_version = Int64Value(numbers.get(), 0, 0);
    m_generation = Int64Value(numbers.get(), 0, 1);
    m_txn = ETxn::Read;
    const bool ok = CheckTables(what) && LoadBookkeeping();
    m_txn = ETxn::None;
    return ok && Exec("COMMIT", what);
}

// Records which catalogue tables the model has and checks that each has every
// column of the catalogue and the ordinal (extra columns are ignored).
bool CPgZmfFile::CheckTables(const std::string& what) {
    const char* values[] = {m_schemaName.c_str()};
    Result result = ExecParams(
        "SELECT c.relname, a.attname FROM pg_catalog.pg_class c"
        " JOIN pg_catalog.pg_namespace n ON n.oid = c.relnamespace"
        " JOIN pg_catalog.pg_attribute a ON a.attrelid = c.oid"
        " WHERE n.nspname = $1 AND c.relkind IN ('r', 'p') AND a.attnum > 0"
        " AND NOT a.attisdropped",
        1, values, nullptr, nullptr, 0, what);
    if (!result) return false;
    std::unordered_map<std::string, std::unordered_set<std::string>> columns;
    for (int row = 0; row < PQntuples(result.get()); ++row)
        columns[PQgetvalue(result.get(), row, 0)].insert(PQgetvalue(result.get(), row, 1));
    if (!columns.count("zmf_meta")) {
        Fail(what + ": damaged: the tables of model " + Quoted(GetModelName()) + " (schema " +
             m_schemaName + ") are missing");
        return false;
    }
    m_existing.clear();
    for (const auto& [name, present] : columns) {
        const SZmfTableDesc* desc = zmf::FindTableByName(name.c_str());
        if (!desc) continue;
        m_existing.insert(name);
        for (const SZmfColumnDesc& c : desc->columns) {
            if (!present.count(c.name)) {
                Fail(what + ": damaged: table \"" + name + "\" has no column \"" + c.name + "\"");
                return false;
            }
        }
        if (!present.count(kOrdinalColumn)) {
            Fail(what + ": damaged: table \"" + name + "\" has no column \"" + kOrdinalColumn +
                 "\"");
            return false;
        }
    }
    return true;
}

bool CPgZmfFile::LoadBookkeeping() {
    const std::string what = "cannot open";
    Result meta =
        Exec("SELECT value FROM " + m_schemaSql + ".zmf_meta WHERE key = 'format_version'", what);
    if (!meta) return false;
    if (PQntuples(meta.get()) != 1) {
        Fail(what + ": damaged: model " + Quoted(GetModelName()) + " has no format version");
        return false;
    }
    SetFormatVersion(static_cast<DWORD>(Int64Value(meta.get(), 0, 0)));
    ClearVersionDirty();

    Result info =
        Exec("SELECT name, size_estimate, in_order FROM " + m_schemaSql + ".zmf_table_info", what);
    if (!info) return false;
    for (int row = 0; row < PQntuples(info.get()); ++row) {
        const char* name = PQgetvalue(info.get(), row, 0);
        if (!zmf::FindTableByName(name)) continue;
        auto* table = static_cast<CPgTable*>(GetTable(name));
        if (!PQgetisnull(info.get(), row, 1))
            table->LoadSizeEstimate(static_cast<LONG>(Int64Value(info.get(), row, 1)));
        table->LoadInOrder(PQgetvalue(info.get(), row, 2)[0] == 't');
    }

    Result keys = Exec("SELECT kind, value FROM " + m_schemaSql + ".zmf_key_counter", what);
    if (!keys) return false;
    for (int row = 0; row < PQntuples(keys.get()); ++row) {
        GetIdentityMgr()->SetKeyValue(static_cast<int>(Int64Value(keys.get(), row, 0)),
                                      static_cast<ULONG>(Int64Value(keys.get(), row, 1)));
    }
    GetIdentityMgr()->ClearDirty();
    return true;
}

bool CPgZmfFile::Verify() {
    if (!Idle() || !BeginRead("cannot check")) return false;
    const bool ok = CheckTables("cannot check");
    EndRead();
    return ok;
}

namespace {

std::unique_ptr<CZmfFile> Refuse(std::string* error, const std::string& uri,
                                 const std::string& cause) {
    if (error) *error = zmf::ShownLocation(uri) + ": " + cause;
    return nullptr;
}

}  // namespace

std::unique_ptr<CZmfFile> CPgZmfFile::CreateModel(const std::string& uri, DWORD formatVersion,
                                                  std::string* error) {
    zmf::SPgLocation location;
    std::string cause;
    if (!zmf::ParsePgLocation(uri, location, cause))
        return Refuse(error, uri, "cannot create: " + cause);
    std::unique_ptr<CPgZmfFile> file(new CPgZmfFile(std::move(location)));
    if (!file->Connect(error)) return nullptr;
    if (!file->CreateInServer(formatVersion)) {
        if (error) *error = file->GetLastError();
        return nullptr;
    }
    return file;
}

std::unique_ptr<CZmfFile> CPgZmfFile::OpenModel(const std::string& uri, std::string* error) {
    zmf::SPgLocation location;
    std::string cause;
    if (!zmf::ParsePgLocation(uri, location, cause))
        return Refuse(error, uri, "cannot open: " + cause);
    std::unique_ptr<CPgZmfFile> file(new CPgZmfFile(std::move(location)));
    if (!file->Connect(error)) return nullptr;
    if (!file->LoadFromServer()) {
        if (error) *error = file->GetLastError();
        return nullptr;
    }
    return file;
}
