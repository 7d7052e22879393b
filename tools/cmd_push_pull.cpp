// tessmeta push / pull: copy a model between a .zmf file and a server.
#include <unistd.h>

#include <cstdio>

#include "command.h"
#include "progress.h"
#include "zmflib/store_copy.h"

namespace tessmeta::tool {
namespace {

std::uint64_t StoredRows(CZmfFile& file) {
    std::uint64_t rows = 0;
    for (const SZmfTableDesc* desc : zmf::AllTables()) {
        CTableBase* table = file.GetTable(desc->name);
        if (table && table->HasStoredSizeEstimate())
            rows += static_cast<std::uint64_t>(table->GetSizeEstimate());
        file.ReleaseTable(&table, 0);
    }
    return rows;
}

// Copies `from` into `to` with a progress bar; prints the outcome.
int Copy(CZmfFile& from, CZmfFile& to, const char* verb) {
    // Each row counts twice: once read, once written.
    CProgressBar bar(verb, 2 * StoredRows(from));
    auto hook = [&](std::uint64_t) { bar.Update(from.GetRowsMoved() + to.GetRowsMoved()); };
    from.SetProgressHook(hook, 4096);
    to.SetProgressHook(hook, 4096);
    std::string error;
    const bool ok = zmf::CopyStore(from, to, error);
    bar.Finish();
    if (!ok) return Fail(error, kExitProblems);
    std::printf("%s: %s %s, format version %u, %llu rows\n", to.GetPath().c_str(), verb,
                from.GetPath().c_str(), to.GetFormatVersion(),
                static_cast<unsigned long long>(to.GetRowsMoved()));
    return kExitOk;
}

}  // namespace

int RunPush(const std::string& file, const std::string& uri, bool replace) {
    std::string error;
    auto from = CZmfFile::Open(file, &error);
    if (!from) return Fail(error);
    auto to = replace ? CZmfFile::Open(uri, &error) : nullptr;
    if (!to) to = CZmfFile::Create(uri, from->GetFormatVersion(), &error);
    if (!to && error.find("already exists") != std::string::npos) error += " (use --replace)";
    if (!to) return Fail(error);
    return Copy(*from, *to, "pushed from");
}

int RunPull(const std::string& uri, const std::string& file) {
    std::string error;
    auto from = CZmfFile::Open(uri, &error);
    if (!from) return Fail(error);
    auto to = CZmfFile::Create(file, from->GetFormatVersion(), &error);
    if (!to) return Fail(error);
    const int status = Copy(*from, *to, "pulled from");
    // A file that did not receive the model is not left behind half-made.
    if (status != kExitOk && !zmf::IsServerUri(file)) {
        to.reset();
        ::unlink(file.c_str());
    }
    return status;
}

}  // namespace tessmeta::tool
