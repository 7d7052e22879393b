// tessmeta sysmacros: creates the system trigger libraries and triggers of a
// database platform in a model from the macro templates, or refreshes their bodies;
// saves the model and prints the keys of the items it created.
#include <cstdio>

#include "command.h"

namespace tessmeta::tool {
namespace {

// The SQL dialect the templates of a platform code are written for.
const char* DialectOf(int platform) {
    switch (platform) {
        case 1:
            return "Transact-SQL";
        case 2:
            return "PL/SQL";
        default:
            return "SQL PL";
    }
}

// Prints the new keys of one sort; returns how many there are.
int PrintNew(const char* sort, const CList<DWORD, DWORD>& keys, CDictObjectMgr& dictionary,
             bool triggers) {
    for (POSITION pos = keys.GetHeadPosition(); pos;) {
        const DWORD key = keys.GetNext(pos);
        CString name;
        if (triggers)
            dictionary.GetTriggerName(key, name);
        else
            dictionary.GetLibraryName(key, name);
        std::printf("new %-8s %8u  %s\n", sort, key, name.GetString());
    }
    return keys.GetCount();
}

}  // namespace

int RunSysMacros(const std::string& path, int platform) {
    auto model = OpenModel(path);
    if (!model) return kExitBadInput;
    CDictObjectMgr& dictionary = model->GetDictObjectMgr();
    std::printf("platform %d (%s), templates in %s\n", platform, DialectOf(platform),
                dictionary.GetMacroFolder().GetString());
    CList<DWORD, DWORD> libraries, triggers;
    dictionary.InsertSystemTriggerLibs(platform, libraries);
    dictionary.InsertSystemTriggers(platform, triggers);
    const int created = PrintNew("library", libraries, dictionary, false) +
                        PrintNew("trigger", triggers, dictionary, true);

    // What the model holds now: an item whose template was missing is absent.
    static constexpr const char* kNames[3][6] = {
        {CDictObjectMgr::SSUPDTRIGLIBNAME, CDictObjectMgr::SSDELTRIGLIBNAME,
         CDictObjectMgr::SSINSTRIGLIBNAME, CDictObjectMgr::SSUPDTRIGNAME,
         CDictObjectMgr::SSDELTRIGNAME, CDictObjectMgr::SSINSTRIGNAME},
        {CDictObjectMgr::ORAUPDTRIGLIBNAME, CDictObjectMgr::ORADELTRIGLIBNAME,
         CDictObjectMgr::ORAINSTRIGLIBNAME, CDictObjectMgr::ORAUPDTRIGNAME,
         CDictObjectMgr::ORADELTRIGNAME, CDictObjectMgr::ORAINSTRIGNAME},
        {CDictObjectMgr::DB2UPDTRIGLIBNAME, CDictObjectMgr::DB2DELTRIGLIBNAME,
         CDictObjectMgr::DB2INSTRIGLIBNAME, CDictObjectMgr::DB2UPDTRIGNAME,
         CDictObjectMgr::DB2DELTRIGNAME, CDictObjectMgr::DB2INSTRIGNAME}};
    int present = 0;
    for (int i = 0; i < 6; ++i) {
        CString body;
        const char* name = kNames[platform - 1][i];
        present +=
            i < 3 ? dictionary.FindSystemLib(name, body) : dictionary.FindSystemTrigger(name, body);
    }
    if (!SaveModel(*model)) return kExitProblems;
    std::printf("%s: %d created, %d refreshed, %d missing\n", zmf::ShownLocation(path).c_str(),
                created, present - created, 6 - present);
    return present == 6 ? kExitOk : kExitProblems;
}

}  // namespace tessmeta::tool
