// The tessmeta command: creates and inspects model files.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <string>

#include "zmflib.h"

namespace {

constexpr int kExitBadInput = 2;

// Lists every catalogue table of a model file with its row count.
int ListTables(CZmfFile& file) {
    std::printf("%s: format version %u\n", file.GetPath().c_str(), file.GetFormatVersion());
    std::printf("%-26s %6s %8s %10s\n", "table", "number", "key kind", "rows");
    for (const SZmfTableDesc* desc : zmf::AllTables()) {
        CTableBase* table = file.GetTable(desc->name);
        const ULONG rows = table ? table->GetCount() : 0;
        std::printf("%-26s %6d %8d %10u\n", desc->name, desc->tableNumber, desc->keyKind, rows);
        file.ReleaseTable(&table, 0);
    }
    if (file.HasError()) {
        std::fprintf(stderr, "%s\n", file.GetLastError().c_str());
        return 1;
    }
    return 0;
}

// Writes a few object definitions and unique objects, saves, reopens and lists.
int Demo(const std::string& path) {
    std::string error;
    auto file = CZmfFile::Create(path, CZmfFile::kCurrentFormatVersion, &error);
    if (!file) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return kExitBadInput;
    }
    const char* types[] = {"Diagram", "Model", "Entity", "Attribute", "Relationship"};
    CTableBase* defs = file->GetEmptyTable("ObjectDefinition");
    CTableBase* objects = file->GetEmptyTable("UniqueObject");
    if (!defs || !objects) {
        std::fprintf(stderr, "%s\n", file->GetLastError().c_str());
        return 1;
    }
    LONG typeId = 0;
    for (const char* name : types) {
        CObjectDefinitionBase def(static_cast<ULONG>(++typeId));
        def.Name = name;
        defs->Insert(&def);
    }
    defs->SetSizeEstimate(typeId);
    CIdentityMgr* keys = file->GetIdentityMgr();
    for (int i = 0; i < 100; ++i) {
        CUniqueObjectBase row(keys->AllocKeyValue(CUniqueObjectBase::Desc().keyKind));
        row.Object_Type_ID = 1 + i % typeId;
        row.Modification_Date = COleDateTime::GetCurrentTime();
        row.Repository_Status = 1;
        objects->Insert(&row);
    }
    objects->SetSizeEstimate(100);
    if (!file->Commit()) {
        std::fprintf(stderr, "%s\n", file->GetLastError().c_str());
        return 1;
    }
    file.reset();

    auto reopened = CZmfFile::Open(path, &error);
    if (!reopened) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    if (!reopened->Verify()) {
        std::fprintf(stderr, "%s\n", reopened->GetLastError().c_str());
        return 1;
    }
    return ListTables(*reopened);
}

int Tables(const std::string& path) {
    std::string error;
    auto file = CZmfFile::Open(path, &error);
    if (!file) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return kExitBadInput;
    }
    return ListTables(*file);
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"tessmeta: create and inspect model files (.zmf)"};
    app.require_subcommand(1);

    std::string demoPath;
    auto* demo = app.add_subcommand("demo", "Create a small model file, reopen it and list it");
    demo->add_option("FILE", demoPath, "the .zmf file to create (must not exist)")->required();

    std::string tablesPath;
    auto* tables = app.add_subcommand("tables", "List the tables of a model file");
    tables->add_option("FILE", tablesPath, "an existing .zmf file")->required();

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        const int rc = app.exit(e);
        return rc == 0 ? 0 : kExitBadInput;
    }
    if (*demo) return Demo(demoPath);
    return Tables(tablesPath);
}
