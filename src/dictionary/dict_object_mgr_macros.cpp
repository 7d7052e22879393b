// The manager's system libraries and triggers, made from the macro template files.
#include <span>

#include "dictionary/dict_object_mgr.h"
#include "dictionary/macro_files.h"

namespace {

// One system item of a platform: its name and the file it is read from.
struct SSystemMacro {
    const char* name;
    const char* file;
    DWORD event;  // the trigger's statement; 0 for a library
};

using M = CDictObjectMgr;
using tessmeta::kTriggerOnDelete;
using tessmeta::kTriggerOnInsert;
using tessmeta::kTriggerOnUpdate;

// By platform code 1, 2, 3, in the order they are processed: update, delete, insert.
// The names and the file names differ on purpose ("...TrigLib" / "...TrigLib.bas",
// "...Trigger" / "...Trig.bas").
constexpr SSystemMacro kLibraries[3][3] = {
    {{M::SSUPDTRIGLIBNAME, "SSUpdtTrigLib.bas", 0},
     {M::SSDELTRIGLIBNAME, "SSDelTrigLib.bas", 0},
     {M::SSINSTRIGLIBNAME, "SSInsTrigLib.bas", 0}},
    {{M::ORAUPDTRIGLIBNAME, "OraUpdtTrigLib.bas", 0},
     {M::ORADELTRIGLIBNAME, "OraDelTrigLib.bas", 0},
     {M::ORAINSTRIGLIBNAME, "OraInsTrigLib.bas", 0}},
    {{M::DB2UPDTRIGLIBNAME, "Db2UpdtTrigLib.bas", 0},
     {M::DB2DELTRIGLIBNAME, "Db2DelTrigLib.bas", 0},
     {M::DB2INSTRIGLIBNAME, "Db2InsTrigLib.bas", 0}},
};
constexpr SSystemMacro kTriggers[3][3] = {
    {{M::SSUPDTRIGNAME, "SSUpdtTrig.bas", kTriggerOnUpdate},
     {M::SSDELTRIGNAME, "SSDelTrig.bas", kTriggerOnDelete},
     {M::SSINSTRIGNAME, "SSInsTrig.bas", kTriggerOnInsert}},
    {{M::ORAUPDTRIGNAME, "OraUpdtTrig.bas", kTriggerOnUpdate},
     {M::ORADELTRIGNAME, "OraDelTrig.bas", kTriggerOnDelete},
     {M::ORAINSTRIGNAME, "OraInsTrig.bas", kTriggerOnInsert}},
    {{M::DB2UPDTRIGNAME, "Db2UpdtTrig.bas", kTriggerOnUpdate},
     {M::DB2DELTRIGNAME, "Db2DelTrig.bas", kTriggerOnDelete},
     {M::DB2INSTRIGNAME, "Db2InsTrig.bas", kTriggerOnInsert}},
};

// The platform's items of one sort; empty for an unknown platform code.
std::span<const SSystemMacro> SystemMacros(int platformCode, bool triggers) {
    if (platformCode < 1 || platformCode > 3) return {};
    return triggers ? kTriggers[platformCode - 1] : kLibraries[platformCode - 1];
}

}  // namespace

CString CDictObjectMgr::GetMacroFolder() const {
    return m_macroFolder.IsEmpty() ? tessmeta::DefaultMacroFolder() : m_macroFolder;
}

void CDictObjectMgr::SetMacroFolder(const CString& folder) {
    m_macroFolder = folder;
    if (!m_macroFolder.IsEmpty() && m_macroFolder[m_macroFolder.GetLength() - 1] != '/')
        m_macroFolder += '/';
}

bool CDictObjectMgr::ReadMacroFile(CString& path, CString& text) {
    return tessmeta::ReadMacroText(path, text);
}

template <class Apply>
void CDictObjectMgr::ApplySystemMacros(int platformCode, bool triggers, CList<DWORD, DWORD>& newIds,
                                       Apply&& apply) {
    const std::span<const SSystemMacro> items = SystemMacros(platformCode, triggers);
    if (items.empty()) return;
    const CString folder = GetMacroFolder();
    for (const SSystemMacro& item : items) {
        CString path = folder + item.file;
        CString text;
        if (!ReadMacroFile(path, text)) continue;
        if (const DWORD key = apply(item.name, text, item.event)) newIds.AddTail(key);
    }
}

BOOL CDictObjectMgr::InsertSystemTriggerLibs(int platformCode, CList<DWORD, DWORD>& newIds) {
    ApplySystemMacros(platformCode, false, newIds, [this](const char* name, CString& text, DWORD) {
        return InsertOrUpdateSysLib(name, text);
    });
    return TRUE;
}

BOOL CDictObjectMgr::InsertSystemTriggers(int platformCode, CList<DWORD, DWORD>& newIds) {
    ApplySystemMacros(platformCode, true, newIds,
                      [this](const char* name, CString& text, DWORD event) {
                          return InsertOrUpdateSysTrigger(name, text, event);
                      });
    return TRUE;
}

DWORD CDictObjectMgr::ExactLibrary(const char* name, CString& description, int& integerField,
                                   CString& body) {
    DWORD key = 0, dictObjectId = 0;
    CString found;
    for (BOOL more = GetFirstLibrary(key, found, description, integerField, body, dictObjectId);
         more; more = GetNextLibrary(key, found, description, integerField, body, dictObjectId))
        if (found == name) return key;
    return 0;
}

DWORD CDictObjectMgr::ExactTrigger(const char* name, CString& description,
                                   SDictTriggerNumbers& numbers, CString& body) {
    DWORD key = 0, dictObjectId = 0;
    CString found;
    SDictTriggerNumbers& n = numbers;
    for (BOOL more = GetFirstTrigger(key, found, description, n.integerField, n.firstAttribute,
                                     n.event, body, n.secondAttribute, dictObjectId);
         more; more = GetNextTrigger(key, found, description, n.integerField, n.firstAttribute,
                                     n.event, body, n.secondAttribute, dictObjectId))
        if (found == name) return key;
    return 0;
}

DWORD CDictObjectMgr::InsertOrUpdateSysLib(const char* name, CString& text) {
    CString libraryName(name), description, body;
    int integerField = 0;
    if (const DWORD key = ExactLibrary(name, description, integerField, body)) {
        UpdateLibrary(key, libraryName, description, integerField, text);
        return 0;
    }
    CString none;
    DWORD dictObjectId = 0;
    return InsertLibrary(libraryName, none, 1, text, GetDiagramSpecificData_Dictionary_ID(),
                         dictObjectId, FALSE);
}

DWORD CDictObjectMgr::InsertOrUpdateSysTrigger(const char* name, CString& text, DWORD event) {
    CString triggerName(name), description, body;
    SDictTriggerNumbers n;
    if (const DWORD key = ExactTrigger(name, description, n, body)) {
        UpdateTrigger(key, triggerName, description, n.integerField, n.firstAttribute, n.event,
                      text, n.secondAttribute);
        return 0;
    }
    CString none;
    DWORD dictObjectId = 0;
    return InsertTrigger(triggerName, none, 1, 1, event, text, 0,
                         GetDiagramSpecificData_Dictionary_ID(), dictObjectId, FALSE);
}

BOOL CDictObjectMgr::FindSystemLib(const char* name, CString& text) {
    CString description, body;
    int integerField = 0;
    if (!ExactLibrary(name, description, integerField, body)) return FALSE;
    text = body;
    return TRUE;
}

BOOL CDictObjectMgr::FindSystemTrigger(const char* name, CString& text) {
    CString description, body;
    SDictTriggerNumbers numbers;
    if (!ExactTrigger(name, description, numbers, body)) return FALSE;
    text = body;
    return TRUE;
}
