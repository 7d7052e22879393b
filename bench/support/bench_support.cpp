#include "support/bench_support.h"

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

sqlite3* OpenRaw(const std::string& path) {
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK)
        std::abort();
    sqlite3_exec(db,
                 "PRAGMA journal_mode=DELETE; PRAGMA synchronous=FULL; PRAGMA cache_size=-65536;",
                 nullptr, nullptr, nullptr);
    return db;
}

}  // namespace tessmeta::bench
