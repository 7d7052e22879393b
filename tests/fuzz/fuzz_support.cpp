#include "fuzz_support.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <type_traits>

#include "model/model_check.h"
#include "model/model_generator.h"
#include "support/row_values.h"

namespace tessmeta::fuzz {
namespace {

// Every row of a manager's table, rendered through the catalogue.
template <typename Table>
void DigestRows(std::string& out, const Table& table) {
    POSITION pos = table.GetFirstRowPosition();
    using Row = std::remove_pointer_t<decltype(table.GetNextRow(pos))>;
    const SZmfTableDesc& desc = Row::Desc();
    out += desc.name;
    out += '\n';
    while (pos)
        out += test::RowText(desc, *table.GetNextRow(pos)) + '\n';
}

// The unique objects through their stored rows (the GUID columns left empty: the
// in-memory row keeps its GUIDs in binary and the digest never showed them).
void DigestRows(std::string& out, const CEnhUniqueObjectTable& table) {
    const SZmfTableDesc& desc = CUniqueObjectBase::Desc();
    out += desc.name;
    out += '\n';
    for (POSITION pos = table.GetFirstRowPosition(); pos;) {
        CUniqueObjectBase record;
        table.GetNextRow(pos)->StoreColumns(record);
        out += test::RowText(desc, record) + '\n';
    }
}

// Removed when the run ends normally; a finding leaves it for a look.
struct SScratch {
    std::string dir;
    SScratch() {
        const std::string base = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        dir = base + "/tessmeta-fuzz-XXXXXX";
        Require(mkdtemp(dir.data()) != nullptr, "cannot make a scratch folder");
    }
    ~SScratch() { std::filesystem::remove_all(dir); }
};

const std::string& ScratchDir() {
    static const SScratch scratch;
    return scratch.dir;
}

}  // namespace

std::string ScratchFile(const std::string& name) {
    return ScratchDir() + "/" + name;
}

void RemoveModelFile(const std::string& path) {
    unlink(path.c_str());
    unlink((path + "-journal").c_str());
}

void Require(bool condition, const std::string& what) {
    if (condition) return;
    std::fprintf(stderr, "FINDING: %s\n", what.c_str());
    std::abort();
}

std::string ModelDigest(CModelFile& model) {
    std::string out;
    CGuidMgr& guids = model.GetGuidMgr();
    DigestRows(out, *guids.GetUniqueObjectTable());
    DigestRows(out, *guids.GetEnhObjectDomainTable());
    DigestRows(out, *guids.GetObjectDefinitionTable());
    CNameSpaceMgr& names = model.GetNameSpaceMgr();
    DigestRows(out, names.GetStringUsageTable());
    DigestRows(out, names.GetStringUsageTypeTable());
    out += "strings\n";
    LONG id;
    CString text;
    for (POSITION pos = names.GetStringStartPosition(); pos;) {
        names.GetNextString(pos, id, text);
        out += std::to_string(id) + "=" + text.GetString() + '\n';
    }
    for (POSITION pos = guids.GetUniqueObjectStartPosition(); pos;) {
        const ULONG object = guids.GetNextUniqueObject(pos);
        CString type;
        guids.GetObjectType(object, type);
        out += std::to_string(object) + ":" + type.GetString() + ":" +
               std::to_string(guids.GetRepoStatus(object)) + '\n';
    }
    return out;
}

void OpenWalkSaveReopen(const std::string& path) {
    const std::string copy = path + ".saved";
    RemoveModelFile(copy);
    {
        std::string error;
        auto model = CModelFile::Open(path, &error);
        if (!model) {
            Require(!error.empty() && error.find(path) != std::string::npos,
                    "a refused open must name the file and the cause: '" + error + "'");
            return;
        }
        ModelDigest(*model);
        CheckModelFile(model->GetFile());
        SModelSaveOptions options;
        options.purgeStrings = 1;
        if (!model->SaveAs(copy, options)) {
            Require(!model->GetLastError().empty(), "a failed save must say why");
            return;
        }
    }
    std::string error;
    auto reopened = CModelFile::Open(copy, &error);
    Require(reopened != nullptr, "a file the library saved does not reopen: " + error);
    ModelDigest(*reopened);
    CheckModelFile(reopened->GetFile());
}

void WriteSmallModel(const std::string& path, std::uint64_t objects) {
    std::string error;
    auto model = CModelFile::Create(path, &error);
    Require(model != nullptr, "cannot create a model: " + error);
    SGenerateOptions options;
    options.objects = objects;
    GenerateModel(*model, options);
    Require(model->Save(), "cannot save a model: " + model->GetLastError());
}

}  // namespace tessmeta::fuzz
