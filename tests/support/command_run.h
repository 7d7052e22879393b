// Running the built tessmeta program, and reading or changing a model file with SQL
// behind the library's back, for the tests that drive the command.
#pragma once

#include <sqlite3.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace tessmeta::test {

struct SRun {
    int status = -1;
    std::string out, err;
};

inline std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// `program args`, its output captured in files of `folder`, with no input.
inline SRun RunProgram(const std::string& program, const std::string& args,
                       const std::string& folder) {
    const std::string out = folder + "/stdout", err = folder + "/stderr";
    const int raw =
        std::system((program + " " + args + " >" + out + " 2>" + err + " </dev/null").c_str());
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, ReadText(out), ReadText(err)};
}

// Runs `sql` on the file; returns SQLite's error message, empty on success.
inline std::string Sql(const std::string& path, const std::string& sql) {
    sqlite3* db = nullptr;
    std::string error;
    if (sqlite3_open(path.c_str(), &db) != SQLITE_OK ||
        sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        error = sqlite3_errmsg(db);
    sqlite3_close(db);
    return error;
}

// The first column of the first row `sql` gives, as text; empty when there is none.
inline std::string SqlValue(const std::string& path, const std::string& sql) {
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    sqlite3_stmt* stmt = nullptr;
    std::string value;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) == SQLITE_OK &&
        sqlite3_step(stmt) == SQLITE_ROW && sqlite3_column_text(stmt, 0))
        value = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
    sqlite3_finalize(stmt);
    sqlite3_close(db);
    return value;
}

}  // namespace tessmeta::test
