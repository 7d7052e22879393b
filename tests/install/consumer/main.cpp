// Built against an installed tessmeta with find_package: creates a model file,
// writes a row, reopens it and checks the row; reads the macro templates copied
// beside it.
#include <tessmeta.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    std::remove(argv[1]);
    std::string error;
    auto file = CZmfFile::Create(argv[1], CZmfFile::kCurrentFormatVersion, &error);
    if (!file) return std::fprintf(stderr, "%s\n", error.c_str()), 1;
    CTableBase* table = file->GetEmptyTable("SmallString");
    CSmallStringBase row(7);
    row.Text = "installed";
    if (!table || !table->Insert(&row) || !file->Commit()) return 1;
    file.reset();

    auto reopened = CZmfFile::Open(argv[1], &error);
    if (!reopened) return std::fprintf(stderr, "%s\n", error.c_str()), 1;
    CSmallStringBase probe(7);
    CTableBase* again = reopened->GetTable("SmallString");
    if (!again || !again->Get(&probe) ||
        CString("installed") != static_cast<const char*>(probe.Text))
        return 1;
    CBalancedTree tree;
    tree.Init();
    tree.Insert(7, &probe);
    if (tree.GetFirst(7) != &probe) return 1;

    auto model = tessmeta::CModelFile::CreateInMemory();
    CList<DWORD, DWORD> libraries;
    model->GetDictObjectMgr().InsertSystemTriggerLibs(1, libraries);
    return libraries.GetCount() == 3 ? 0 : 1;
}
