// A valid model whose stored rows are rewritten at the SQL level from the input:
// each step picks a table, a row and a column and writes a hostile value (NULL,
// zero, negative or maximal integers, texts in integer columns, empty or 1 MB
// texts, blobs, another row's value: duplicate keys, dangling ids), or copies or
// deletes a row. The model must then open (or be refused clearly), walk, check,
// save and reopen.
#include <sqlite3.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz_support.h"

using namespace tessmeta::fuzz;

namespace {

struct STable {
    std::string name;
    std::vector<std::string> columns;
};

std::string Quote(const std::string& name) {
    return "\"" + name + "\"";
}

struct SBase {
    std::vector<char> bytes;
    std::vector<STable> tables;
};

const SBase& Base() {
    static const SBase base = [] {
        SBase b;
        const std::string path = ScratchFile("base.zmf");
        RemoveModelFile(path);
        WriteSmallModel(path, 40);
        sqlite3* db = nullptr;
        Require(sqlite3_open(path.c_str(), &db) == SQLITE_OK, "cannot open the base model");
        sqlite3_stmt* stmt = nullptr;
        sqlite3_prepare_v2(db, "SELECT name FROM sqlite_master WHERE type='table' ORDER BY name",
                           -1, &stmt, nullptr);
        while (sqlite3_step(stmt) == SQLITE_ROW)
            b.tables.push_back({reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0)), {}});
        sqlite3_finalize(stmt);
        for (STable& table : b.tables) {
            sqlite3_prepare_v2(db, ("PRAGMA table_info(" + Quote(table.name) + ")").c_str(), -1,
                               &stmt, nullptr);
            while (sqlite3_step(stmt) == SQLITE_ROW)
                table.columns.push_back(
                    reinterpret_cast<const char*>(sqlite3_column_text(stmt, 1)));
            sqlite3_finalize(stmt);
        }
        sqlite3_close(db);
        std::ifstream in(path, std::ios::binary);
        b.bytes.assign(std::istreambuf_iterator<char>(in), {});
        return b;
    }();
    return base;
}

class CInput {
  public:
    CInput(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
    bool More() const { return m_at < m_size; }
    unsigned Byte() { return m_at < m_size ? m_data[m_at++] : 0; }
    sqlite3_int64 Int64() {
        sqlite3_uint64 v = 0;
        for (int i = 0; i < 8; ++i)
            v = (v << 8) | Byte();
        return static_cast<sqlite3_int64>(v);
    }

  private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_at = 0;
};

// The value of one step, bound as parameter 1: NULL, an edge integer, any integer,
// a small id (dangling or duplicate), a text in place of a number, an empty text,
// or an oversized, binary or non-UTF-8 value.
void BindValue(sqlite3_stmt* stmt, CInput& in) {
    static constexpr sqlite3_int64 kEdges[] = {0,         -1,       0x7FFFFFFF, 0xFFFFFFFFll,
                                               INT64_MAX, INT64_MIN};
    static const std::string big(1 << 20, 'x');
    const unsigned kind = in.Byte() % 12;
    if (kind == 0)
        sqlite3_bind_null(stmt, 1);
    else if (kind <= 6)
        sqlite3_bind_int64(stmt, 1, kEdges[kind - 1]);
    else if (kind == 7)
        sqlite3_bind_int64(stmt, 1, in.Int64());
    else if (kind == 8)
        sqlite3_bind_int64(stmt, 1, in.Byte());
    else if (kind == 9 || kind == 10)
        sqlite3_bind_text(stmt, 1, kind == 9 ? "text" : "", -1, SQLITE_STATIC);
    else if (const unsigned large = in.Byte() % 3; large == 0)
        sqlite3_bind_text(stmt, 1, big.data(), static_cast<int>(big.size()), SQLITE_STATIC);
    else if (large == 1)
        sqlite3_bind_blob(stmt, 1, big.data(), 7, SQLITE_STATIC);
    else
        sqlite3_bind_text(stmt, 1, "\xff\xfe\x00z", 4, SQLITE_STATIC);  // not UTF-8
}

void Apply(sqlite3* db, CInput& in) {
    const auto& tables = Base().tables;
    while (in.More()) {
        const STable& table = tables[in.Byte() % tables.size()];
        const unsigned op = in.Byte() % 4;
        const std::string column = Quote(table.columns[in.Byte() % table.columns.size()]);
        const std::string row = std::to_string(in.Byte() % 8);
        const std::string name = Quote(table.name);
        const std::string pick = " WHERE rowid=(SELECT rowid FROM " + name +
                                 " ORDER BY rowid LIMIT 1 OFFSET " + row + ")";
        std::string sql;
        if (op == 0 || op == 1)
            sql = "UPDATE " + name + " SET " + column + "=?1" + pick;
        else if (op == 2)  // a copy of a row (duplicate keys), with one column changed
            sql = "INSERT INTO " + name + " SELECT * FROM " + name + pick;
        else
            sql = "DELETE FROM " + name + pick;
        sqlite3_stmt* stmt = nullptr;
        if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) continue;
        if (op < 2) BindValue(stmt, in);
        sqlite3_step(stmt);
        sqlite3_finalize(stmt);
        if (op == 2) {
            sqlite3_stmt* update = nullptr;
            const std::string last = "UPDATE " + name + " SET " + column + "=?1 WHERE rowid=" +
                                     std::to_string(sqlite3_last_insert_rowid(db));
            if (sqlite3_prepare_v2(db, last.c_str(), -1, &update, nullptr) == SQLITE_OK) {
                BindValue(update, in);
                sqlite3_step(update);
            }
            sqlite3_finalize(update);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const SBase& base = Base();
    const std::string path = ScratchFile("input.zmf");
    RemoveModelFile(path);
    {
        std::ofstream out(path, std::ios::binary);
        out.write(base.bytes.data(), static_cast<std::streamsize>(base.bytes.size()));
    }
    sqlite3* db = nullptr;
    Require(sqlite3_open(path.c_str(), &db) == SQLITE_OK, "cannot open the input model");
    sqlite3_exec(db, "PRAGMA synchronous=OFF; BEGIN", nullptr, nullptr, nullptr);
    CInput in(data, size);
    Apply(db, in);
    sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_close(db);
    OpenWalkSaveReopen(path);
    return 0;
}
