// The server backend on the 1,000,000-object model (`tessmeta gen --objects
// 1000000`), in the same run as its baselines:
//  - the record store: every table of the model read through the iterators, and
//    written through CTableBase::Insert + Commit, on the server and in a .zmf file,
//    against raw libpq binary COPY of the same rows into and out of tables of the
//    same columns (a hand-written loop over plain values, no record store);
//  - the whole model: CModelFile::Open and Save (every manager) on the server and
//    in a .zmf file.
// The server is a private PostgreSQL cluster with its default, durable settings
// (fsync on), started for the run on a Unix socket and removed at exit.
#include <benchmark/benchmark.h>
#include <libpq-fe.h>

#include <bit>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "model/model_file.h"
#include "model/model_generator.h"
#include "pg_server/pg_server.h"
#include "support/bench_support.h"
#include "zmflib/store_copy.h"

namespace {

// TESSMETA_BENCH_OBJECTS sets another size (for a quick look).
std::uint64_t Objects() {
    const char* text = std::getenv("TESSMETA_BENCH_OBJECTS");
    return text ? std::strtoull(text, nullptr, 10) : 1000000;
}
constexpr const char* kRawSchema = "raw_baseline";

void Die(const std::string& message) {
    std::fprintf(stderr, "bench_pg: %s\n", message.c_str());
    std::exit(1);
}

// One column value as a hand-written program would keep it.
struct SValue {
    enum class Kind : char { Int8, Int4, Bytes, Float8, Null } kind = Kind::Null;
    std::int64_t integer = 0;
    double real = 0;
    std::string bytes;
};

// Plain values of every row of a table, row after row.
struct STableRows {
    const SZmfTableDesc* desc = nullptr;
    std::size_t rows = 0;
    std::vector<SValue> values;                           // rows x columns
    std::vector<std::unique_ptr<CDbObjectBase>> objects;  // the same rows as row objects
};

class CValueSink final : public IZmfColumnSink {
  public:
    explicit CValueSink(SValue* out) : m_out(out) {}
    void U32(int i, DWORD v) override { m_out[i] = {SValue::Kind::Int8, v, 0, {}}; }
    void Int(int i, LONG v) override { m_out[i] = {SValue::Kind::Int4, v, 0, {}}; }
    void String(int i, const CString& v) override {
        m_out[i] = {SValue::Kind::Bytes, 0, 0, std::string(v.View())};
    }
    void Date(int i, const COleDateTime& v) override {
        if (v.m_status == COleDateTime::null)
            m_out[i] = {};
        else
            m_out[i] = {SValue::Kind::Float8,
                        0,
                        v.m_status == COleDateTime::valid ? v.m_dt : __builtin_nan(""),
                        {}};
    }

  private:
    SValue* m_out;
};

struct SWorld {
    std::unique_ptr<tessmeta::test::CPgServer> server;
    std::string file;  // the model as a .zmf file
    std::string uri;   // the same model on the server
    std::vector<STableRows> tables;
    std::size_t totalRows = 0;
};

PGconn* Connect(const SWorld& world) {
    PGconn* conn = PQconnectdb(world.server->ConnInfo().c_str());
    if (PQstatus(conn) != CONNECTION_OK) Die(PQerrorMessage(conn));
    return conn;
}

void Exec(PGconn* conn, const std::string& sql) {
    PGresult* r = PQexec(conn, sql.c_str());
    const auto status = PQresultStatus(r);
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK && status != PGRES_COPY_IN)
        Die(sql + ": " + PQerrorMessage(conn));
    PQclear(r);
}

std::string RawTable(const SZmfTableDesc& desc) {
    return std::string(kRawSchema) + ".\"" + desc.name + "\"";
}

std::string Columns(const SZmfTableDesc& desc) {
    std::string list;
    for (const SZmfColumnDesc& c : desc.columns) {
        list += list.empty() ? "\"" : ",\"";
        list += c.name;
        list += '"';
    }
    return list;
}

const SWorld& World() {
    static SWorld world = [] {
        SWorld w;
        std::string error;
        w.server = tessmeta::test::CPgServer::StartTemporary(true, error);
        if (!w.server) Die(error);
        w.file = tessmeta::bench::ScratchFile("model.zmf");
        w.uri = w.server->Uri("model");
        {
            auto model = tessmeta::CModelFile::CreateInMemory();
            tessmeta::GenerateModel(*model, {Objects(), 1});
            if (!model->SaveAs(w.file)) Die(model->GetLastError());
        }
        auto from = CZmfFile::Open(w.file, &error);
        auto to = CZmfFile::Create(w.uri, 530, &error);
        if (!from || !to || !zmf::CopyStore(*from, *to, error)) Die(error);

        // The rows, as row objects and as plain values, and tables of the same
        // columns for the raw baseline.
        PGconn* conn = Connect(w);
        Exec(conn, std::string("CREATE SCHEMA ") + kRawSchema);
        for (const SZmfTableDesc* desc : zmf::AllTables()) {
            std::string ddl = "CREATE TABLE " + RawTable(*desc) + " (";
            for (std::size_t i = 0; i < desc->columns.size(); ++i) {
                const EZmfColumnType type = desc->columns[i].type;
                ddl += i ? ", \"" : "\"";
                ddl += std::string(desc->columns[i].name) + "\" " +
                       (type == EZmfColumnType::Int      ? "integer"
                        : type == EZmfColumnType::String ? "bytea"
                        : type == EZmfColumnType::Date   ? "double precision"
                                                         : "bigint");
            }
            Exec(conn, ddl + ")");
            STableRows table;
            table.desc = desc;
            CIteratorBase it(from->GetTable(desc->name));
            const std::size_t columns = desc->columns.size();
            for (std::unique_ptr<CDbObjectBase> row(desc->createRow()); it.GetNext(row.get());
                 row.reset(desc->createRow())) {
                table.values.resize((table.rows + 1) * columns);
                CValueSink sink(&table.values[table.rows * columns]);
                desc->readRow(*row, sink);
                table.objects.push_back(std::move(row));
                ++table.rows;
            }
            w.totalRows += table.rows;
            if (table.rows) w.tables.push_back(std::move(table));
        }
        PQfinish(conn);
        return w;
    }();
    return world;
}

// ---- raw libpq baselines ---------------------------------------------------------

void PutBig(std::string& out, std::uint64_t value, int bytes) {
    for (int i = bytes - 1; i >= 0; --i)
        out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

// Replaces every table's rows in one transaction: TRUNCATE, binary COPY ... FREEZE
// from the plain values, COMMIT.
void RawSave(PGconn* conn, const SWorld& world) {
    std::string truncate;
    for (const STableRows& t : world.tables) {
        if (!truncate.empty()) truncate += ',';
        truncate += RawTable(*t.desc);
    }
    Exec(conn, "BEGIN; TRUNCATE " + truncate);
    static const char kHeader[19] = {'P', 'G', 'C', 'O', 'P', 'Y', '\n', '\xFF', '\r', '\n', 0};
    std::string buffer;
    for (const STableRows& t : world.tables) {
        Exec(conn, "COPY " + RawTable(*t.desc) + " (" + Columns(*t.desc) +
                       ") FROM STDIN (FORMAT binary, FREEZE)");
        buffer.assign(kHeader, sizeof kHeader);
        const std::size_t columns = t.desc->columns.size();
        for (std::size_t r = 0; r < t.rows; ++r) {
            PutBig(buffer, columns, 2);
            for (std::size_t c = 0; c < columns; ++c) {
                const SValue& v = t.values[r * columns + c];
                switch (v.kind) {
                    case SValue::Kind::Int8:
                        PutBig(buffer, 8, 4);
                        PutBig(buffer, static_cast<std::uint64_t>(v.integer), 8);
                        break;
                    case SValue::Kind::Int4:
                        PutBig(buffer, 4, 4);
                        PutBig(buffer, static_cast<std::uint32_t>(v.integer), 4);
                        break;
                    case SValue::Kind::Float8:
                        PutBig(buffer, 8, 4);
                        PutBig(buffer, std::bit_cast<std::uint64_t>(v.real), 8);
                        break;
                    case SValue::Kind::Bytes:
                        PutBig(buffer, v.bytes.size(), 4);
                        buffer += v.bytes;
                        break;
                    case SValue::Kind::Null:
                        PutBig(buffer, 0xFFFFFFFFu, 4);
                        break;
                }
            }
            if (buffer.size() >= (1u << 20)) {
                PQputCopyData(conn, buffer.data(), static_cast<int>(buffer.size()));
                buffer.clear();
            }
        }
        PutBig(buffer, 0xFFFF, 2);
        PQputCopyData(conn, buffer.data(), static_cast<int>(buffer.size()));
        PQputCopyEnd(conn, nullptr);
        while (PGresult* r = PQgetResult(conn)) {
            if (PQresultStatus(r) != PGRES_COMMAND_OK) Die(PQerrorMessage(conn));
            PQclear(r);
        }
    }
    Exec(conn, "COMMIT");
}

std::uint64_t GetBig(const char* p, int bytes) {
    std::uint64_t v = 0;
    for (int i = 0; i < bytes; ++i)
        v = (v << 8) | static_cast<unsigned char>(p[i]);
    return v;
}

// Reads every table with binary COPY into plain values (one reused row of them),
// as a hand-written loader would; returns the number of rows.
std::size_t RawLoad(PGconn* conn, const SWorld& world) {
    std::size_t rows = 0;
    std::vector<SValue> row;
    for (const STableRows& t : world.tables) {
        PGresult* r = PQexec(conn, ("COPY " + RawTable(*t.desc) + " (" + Columns(*t.desc) +
                                    ") TO STDOUT (FORMAT binary)")
                                       .c_str());
        if (PQresultStatus(r) != PGRES_COPY_OUT) Die(PQerrorMessage(conn));
        PQclear(r);
        row.resize(t.desc->columns.size());
        bool header = true;
        char* data = nullptr;
        int size;
        while ((size = PQgetCopyData(conn, &data, 0)) > 0) {
            const char* p = data + (header ? 19 : 0);
            header = false;
            if (static_cast<std::int16_t>(GetBig(p, 2)) != -1) {
                p += 2;
                for (std::size_t c = 0; c < row.size(); ++c) {
                    const auto length = static_cast<std::int32_t>(GetBig(p, 4));
                    p += 4;
                    SValue& v = row[c];
                    const EZmfColumnType type = t.desc->columns[c].type;
                    if (length < 0)
                        v.kind = SValue::Kind::Null;
                    else if (type == EZmfColumnType::String)
                        v.bytes.assign(p, static_cast<std::size_t>(length));
                    else if (type == EZmfColumnType::Date)
                        v.real = std::bit_cast<double>(GetBig(p, 8));
                    else
                        v.integer = static_cast<std::int64_t>(GetBig(p, length));
                    p += std::max(length, 0);
                }
                ++rows;
            }
            PQfreemem(data);
        }
        while (PGresult* end = PQgetResult(conn))
            PQclear(end);
    }
    return rows;
}

// ---- benchmarks -------------------------------------------------------------------

void Report(benchmark::State& state, std::size_t rows) {
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * rows));
}

// Every table of the model through the record store's iterators.
void LoadStore(benchmark::State& state, const std::string& where) {
    const SWorld& world = World();
    for (auto _ : state) {
        auto file = CZmfFile::Open(where);
        std::size_t rows = 0;
        for (const STableRows& t : world.tables) {
            std::unique_ptr<CDbObjectBase> row(t.desc->createRow());
            CIteratorBase it(file->GetTable(t.desc->name));
            while (it.GetNext(row.get()))
                ++rows;
        }
        if (rows != world.totalRows || file->HasError()) state.SkipWithError("row count");
    }
    Report(state, world.totalRows);
}

// Every table of the model rewritten through CTableBase::Insert, then Commit.
void SaveStore(benchmark::State& state, const std::string& where) {
    const SWorld& world = World();
    for (auto _ : state) {
        auto file = CZmfFile::Open(where);
        for (const STableRows& t : world.tables) {
            CTableBase* table = file->GetEmptyTable(t.desc->name);
            table->SetSizeEstimate(static_cast<LONG>(t.rows));
            for (const auto& row : t.objects)
                table->Insert(row.get());
            file->ReleaseTable(&table, 0);
        }
        if (!file->Commit()) state.SkipWithError(file->GetLastError().c_str());
    }
    Report(state, world.totalRows);
}

void BM_LoadStore_Server(benchmark::State& s) {
    LoadStore(s, World().uri);
}
void BM_LoadStore_File(benchmark::State& s) {
    LoadStore(s, World().file);
}
void BM_LoadRawCopy(benchmark::State& state) {
    const SWorld& world = World();
    PGconn* conn = Connect(world);
    RawSave(conn, world);  // the raw tables hold the rows
    for (auto _ : state)
        if (RawLoad(conn, world) != world.totalRows) state.SkipWithError("row count");
    PQfinish(conn);
    Report(state, world.totalRows);
}

void BM_SaveStore_Server(benchmark::State& s) {
    SaveStore(s, World().uri);
}
void BM_SaveStore_File(benchmark::State& s) {
    SaveStore(s, World().file);
}
void BM_SaveRawCopy(benchmark::State& state) {
    const SWorld& world = World();
    PGconn* conn = Connect(world);
    for (auto _ : state)
        RawSave(conn, world);
    PQfinish(conn);
    Report(state, world.totalRows);
}

// The whole model, every manager.
void OpenModel(benchmark::State& state, const std::string& where) {
    for (auto _ : state) {
        std::string error;
        auto model = tessmeta::CModelFile::Open(where, &error);
        if (!model) state.SkipWithError(error.c_str());
        state.PauseTiming();
        model.reset();
        state.ResumeTiming();
    }
    Report(state, World().totalRows);
}

void SaveModel(benchmark::State& state, const std::string& where) {
    std::string error;
    auto model = tessmeta::CModelFile::Open(where, &error);
    if (!model) Die(error);
    for (auto _ : state)
        if (!model->Save()) state.SkipWithError(model->GetLastError().c_str());
    Report(state, World().totalRows);
}

void BM_OpenModel_Server(benchmark::State& s) {
    OpenModel(s, World().uri);
}
void BM_OpenModel_File(benchmark::State& s) {
    OpenModel(s, World().file);
}
void BM_SaveModel_Server(benchmark::State& s) {
    SaveModel(s, World().uri);
}
void BM_SaveModel_File(benchmark::State& s) {
    SaveModel(s, World().file);
}

#define TESS_PG_BENCH(name) \
    BENCHMARK(name)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime()

TESS_PG_BENCH(BM_LoadStore_Server);
TESS_PG_BENCH(BM_LoadRawCopy);
TESS_PG_BENCH(BM_LoadStore_File);
TESS_PG_BENCH(BM_SaveStore_Server);
TESS_PG_BENCH(BM_SaveRawCopy);
TESS_PG_BENCH(BM_SaveStore_File);
TESS_PG_BENCH(BM_OpenModel_Server);
TESS_PG_BENCH(BM_OpenModel_File);
TESS_PG_BENCH(BM_SaveModel_Server);
TESS_PG_BENCH(BM_SaveModel_File);

}  // namespace
