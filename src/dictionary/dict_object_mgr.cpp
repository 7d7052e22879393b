// The manager's tables, persistence, kinds, registry and upgrades. The operations of
// each kind of item live in files of their own (dict_object_mgr_*.cpp).
#include "dictionary/dict_object_mgr.h"

#include <vector>

using tessmeta::kDictObjectKindCount;

CDictObjectMgr::CDictObjectMgr(CNameSpaceMgr* names, CGuidMgr* guids, CZmfFile* file,
                               CRefObjectMgr* refs, ULONG fileVersion)
    : m_pNames(names),
      m_pGuids(guids),
      m_pFile(file),
      m_pRefs(refs),
      m_nFileVersion(fileVersion),
      m_nDictObjectTypeId(guids ? guids->GetObjectTypeId(CString("Dictionary Object")) : 0),
      m_pDataDictionaries(
          std::make_unique<CEnhDataDictionaryTable>(fileVersion, names, guids, file)),
      m_pKinds(std::make_unique<CEnhDictObjectTypeTable>(nullptr, file)),
      m_pRegistry(std::make_unique<CEnhDictObjectTable>(nullptr, file)),
      m_pLibraries(std::make_unique<CEnhDictLibraryTbl>(this, names, file, guids)),
      m_pTriggers(std::make_unique<CEnhDictTriggerTbl>(this, names, file, guids)),
      m_pProcedures(std::make_unique<CEnhReusableProcTbl>(this, names, file, guids)),
      m_pReferenceValues(std::make_unique<CEnhReferenceValueTable>(names, nullptr, guids, file)),
      m_pAttachmentTypes(std::make_unique<CEnhAttachmentTypeTable>(names, nullptr, guids, file)),
      m_pValidAttachmentTypes(std::make_unique<CEnhValidAttachmentTypeTable>(nullptr, guids, file)),
      m_pAttachments(std::make_unique<CEnhAttachmentTable>(names, nullptr, guids, file)),
      m_pLinks(std::make_unique<CEnhDictionaryObjectLinkTable>(names, nullptr, guids, file)) {}

CDictObjectMgr::~CDictObjectMgr() = default;

template <class F>
void CDictObjectMgr::ForEachTable(F&& f) const {
    f(*m_pDataDictionaries);
    f(*m_pKinds);
    f(*m_pRegistry);
    f(*m_pLibraries);
    f(*m_pTriggers);
    f(*m_pProcedures);
    f(*m_pReferenceValues);
    f(*m_pAttachmentTypes);
    f(*m_pValidAttachmentTypes);
    f(*m_pAttachments);
    f(*m_pLinks);
}

template <class F>
bool CDictObjectMgr::WithKindTable(DWORD code, F&& f) const {
    switch (code) {
        case tessmeta::kDictTrigger:
            f(*m_pTriggers);
            return true;
        case tessmeta::kDictLibrary:
            f(*m_pLibraries);
            return true;
        case tessmeta::kDictProcedure:
            f(*m_pProcedures);
            return true;
        case tessmeta::kDictReferenceValue:
            f(*m_pReferenceValues);
            return true;
        case tessmeta::kDictAttachmentType:
            f(*m_pAttachmentTypes);
            return true;
        case tessmeta::kDictValidAttachmentType:
            f(*m_pValidAttachmentTypes);
            return true;
        case tessmeta::kDictAttachment:
            f(*m_pAttachments);
            return true;
        case tessmeta::kDictObjectLink:
            f(*m_pLinks);
            return true;
        default:
            return false;
    }
}

// ---- persistence -----------------------------------------------------------------------

int CDictObjectMgr::Init() {
    if (m_nFileVersion < 530 && m_pGuids) {
        m_pGuids->CheckInValidDictionaryObjectIDs(true);
        m_pGuids->ClearInValidDictionaryObjectIDs();
    }
    ForEachTable([](CEnhTableBase& table) { table.Init(0); });
    m_pKinds->CompleteKinds();
    if (m_nFileVersion <= 502) UpdateDictObjectGlobalUserIDs();
    if (m_pGuids && m_pGuids->CheckInValidDictionaryObjectIDs())
        CollectInvalidDictionaryObjectIDs();
    return 1;
}

void CDictObjectMgr::InitConstantTables() {
    m_pKinds->Init(0);
    m_pKinds->CompleteKinds();
}

int CDictObjectMgr::SaveConstantTables(CZmfFile* file) {
    return m_pKinds->Save(file);
}

int CDictObjectMgr::Save(CZmfFile* file) {
    m_pFile = file;
    int saved = 1;
    ForEachTable([&](auto& table) {
        if (!table.Save(file)) saved = 0;
    });
    return saved;
}

void CDictObjectMgr::ReleaseStorageTables() {
    ForEachTable([](CEnhTableBase& table) {
        CTableBase** handle = table.GetTablePtrAddr();
        if (*handle && table.GetFile()) table.GetFile()->ReleaseTable(handle, 0);
    });
}

CTableBase* CDictObjectMgr::GetTablePtr(int tableId) const {
    CTableBase* found = nullptr;
    ForEachTable([&](auto& table) {
        using Row = typename std::remove_reference_t<decltype(table)>::Row;
        if (Row::Desc().tableNumber == tableId &&
            tableId != CDictionary_Object_TypeBase::Desc().tableNumber)
            found = table;
    });
    return found;
}

// ---- kinds and the registry ---------------------------------------------------------------

DWORD CDictObjectMgr::GetDictObjectType(DWORD dictObjectId) const {
    const CKelDictObject* row = m_pRegistry->GetRow(dictObjectId);
    const CKelDictObjectType* kind =
        row ? m_pKinds->GetRow(row->Dictionary_Object_Type_ID) : nullptr;
    return kind ? kind->Kind_Code : 0;
}

DWORD CDictObjectMgr::GetDictObjectTypeFromEnum(DWORD code) const {
    const char* name = tessmeta::DictObjectKindName(code);
    const CKelDictObjectType* kind = name ? m_pKinds->GetRowByName(name) : nullptr;
    return kind ? kind->Dictionary_Object_Type_ID : 0;
}

DWORD CDictObjectMgr::GetData_Dictionary_ID(DWORD dictObjectId) const {
    const CKelDictObject* row = m_pRegistry->GetRow(dictObjectId);
    return row ? row->Data_Dictionary_ID : 0;
}

DWORD CDictObjectMgr::GetGlobalIDUsingDictID(DWORD dictObjectId) const {
    const CKelDictObject* row = m_pRegistry->GetRow(dictObjectId);
    return row ? row->Global_User_ID : 0;
}

BOOL CDictObjectMgr::IsDictionaryObjectIDValid(DWORD dictObjectId) const {
    return m_pRegistry->GetRow(dictObjectId) ? TRUE : FALSE;
}

bool CDictObjectMgr::DataDictionaryOf(DWORD dictObjectId, DWORD& dataDictionaryId) const {
    const CKelDictObject* row = m_pRegistry->GetRow(dictObjectId);
    if (!row) return false;
    dataDictionaryId = row->Data_Dictionary_ID;
    return true;
}

int CDictObjectMgr::GetDictObjectCount(DWORD code) {
    int count = 0;
    for (DWORD id = FirstOfKind(code); id; id = NextOfKind())
        ++count;
    return count;
}

int CDictObjectMgr::GetDictObjectCountIn(DWORD dataDictionaryId) const {
    int count = 0;
    for (POSITION pos = m_pRegistry->GetFirstRowPosition(); pos;)
        count += m_pRegistry->GetNextRow(pos)->Data_Dictionary_ID == dataDictionaryId;
    return count;
}

BOOL CDictObjectMgr::GetBoundDictObject(DWORD dictObjectId, int& kindCode, DWORD& rowKey) {
    const DWORD code = GetDictObjectType(dictObjectId);
    if (code < 1 || code > kDictObjectKindCount) return FALSE;
    DWORD key = 0;
    const bool hasRow =
        code <= tessmeta::kDictProcedure ||
        (code >= tessmeta::kDictReferenceValue && code <= tessmeta::kDictAttachment);
    if (hasRow) {
        WithKindTable(code, [&](auto& table) {
            if (const auto* row = table.GetDictObjIDFKRow(dictObjectId)) key = row->GetTechKey();
        });
        if (!key) return FALSE;
    }
    kindCode = static_cast<int>(code);
    rowKey = key;
    return TRUE;
}

DWORD CDictObjectMgr::InsertBodyless(DWORD code, DWORD dataDictionaryId, DWORD globalUserId) {
    const DWORD kindId = GetDictObjectTypeFromEnum(code);
    return kindId ? m_pRegistry->Insert(dataDictionaryId, kindId, globalUserId, 0) : 0;
}

DWORD CDictObjectMgr::InsertDefault(DWORD dataDictionaryId, DWORD globalUserId) {
    return InsertBodyless(tessmeta::kDictDefault, dataDictionaryId, globalUserId);
}
DWORD CDictObjectMgr::InsertRule(DWORD dataDictionaryId, DWORD globalUserId) {
    return InsertBodyless(tessmeta::kDictRule, dataDictionaryId, globalUserId);
}
DWORD CDictObjectMgr::InsertUserDatatype(DWORD dataDictionaryId, DWORD globalUserId) {
    return InsertBodyless(tessmeta::kDictUserDatatype, dataDictionaryId, globalUserId);
}
DWORD CDictObjectMgr::InsertDomain(DWORD dataDictionaryId, DWORD globalUserId) {
    return InsertBodyless(tessmeta::kDictDomain, dataDictionaryId, globalUserId);
}

DWORD CDictObjectMgr::FirstOfKind(DWORD code) {
    const DWORD kindId = GetDictObjectTypeFromEnum(code);
    m_bKindWalk = kindId != 0;
    if (!m_bKindWalk) return 0;
    return NextOfKindFrom(m_pRegistry->GetFirstFKRow(kindId));
}

DWORD CDictObjectMgr::NextOfKind() {
    return m_bKindWalk ? NextOfKindFrom(m_pRegistry->GetNextFKRow()) : 0;
}

DWORD CDictObjectMgr::NextOfKindFrom(const CKelDictObject* row) {
    if (!row) m_bKindWalk = false;
    return row ? row->Dictionary_Object_ID : 0;
}

BOOL CDictObjectMgr::UpdateDictObj(DWORD dictObjectId, DWORD globalUserId) {
    CKelDictObject* row = m_pRegistry->GetRow(dictObjectId);
    if (!row) return FALSE;
    row->Global_User_ID = globalUserId;  // no index depends on it
    return TRUE;
}

BOOL CDictObjectMgr::DeleteDictObj(DWORD dictObjectId) {
    return m_pRegistry->Delete(dictObjectId) ? TRUE : FALSE;
}

// ---- upgrades -------------------------------------------------------------------------------

void CDictObjectMgr::UpdateDictObjectGlobalUserIDs() {
    if (!m_pGuids) return;
    for (DWORD code : {tessmeta::kDictTrigger, tessmeta::kDictProcedure, tessmeta::kDictLibrary,
                       tessmeta::kDictReferenceValue, tessmeta::kDictAttachmentType,
                       tessmeta::kDictValidAttachmentType, tessmeta::kDictAttachment})
        WithKindTable(code, [&](auto& table) { ShareGlobalIds(code, table); });
}

// For each registry row of the kind with a global id: while that id is still typed
// as a generic dictionary object it becomes the item's own (retyped to the kind,
// filed in the data dictionary's domain, taking over the item's texts; the item's
// former object is deleted); otherwise the registry row takes the item's id.
template <class Table>
void CDictObjectMgr::ShareGlobalIds(DWORD code, Table& table) {
    const DWORD kindId = GetDictObjectTypeFromEnum(code);
    if (!kindId) return;
    std::vector<CKelDictObject*> rows;  // collected: the walk's cursor is shared
    for (CKelDictObject* row = m_pRegistry->GetFirstFKRow(kindId); row;
         row = m_pRegistry->GetNextFKRow())
        rows.push_back(row);
    for (CKelDictObject* registry : rows) {
        const DWORD globalId = registry->Global_User_ID;
        if (!globalId) continue;
        auto* item = table.GetDictObjIDFKRow(registry->Dictionary_Object_ID);
        const bool generic =
            m_nDictObjectTypeId != 0 && m_pGuids->GetObjectTypeId(globalId) == m_nDictObjectTypeId;
        if (generic) {
            m_pGuids->SetObjectTypeId(globalId, table.GetObjectTypeId());
            AssignDictObjToObjectDomain(registry->Dictionary_Object_ID, globalId);
            if (item && item->Global_User_ID != globalId) {
                const DWORD former = item->Global_User_ID;
                if (former) m_pGuids->DeleteObject(static_cast<int>(former), TRUE);
                table.AdoptGlobalId(*item, globalId);
            }
        } else if (item) {
            registry->Global_User_ID = item->Global_User_ID;
        }
    }
}

void CDictObjectMgr::CollectInvalidDictionaryObjectIDs() {
    for (POSITION pos = m_pRegistry->GetFirstRowPosition(); pos;) {
        const CKelDictObject* row = m_pRegistry->GetNextRow(pos);
        const DWORD id = row->Dictionary_Object_ID;
        const CKelDictObjectType* kind = m_pKinds->GetRow(row->Dictionary_Object_Type_ID);
        bool carried = false;  // some kind's table holds the item's row
        auto holds = [&](auto& table) { carried = carried || table.GetDictObjIDFKRow(id); };
        bool invalid = false;
        if (!kind) {
            for (DWORD code = 1; code <= kDictObjectKindCount; ++code)
                WithKindTable(code, holds);
            invalid = !carried;
        } else if (WithKindTable(kind->Kind_Code, holds)) {
            invalid = !carried;
        } else if (kind->Kind_Code >= tessmeta::kDictDefault &&
                   kind->Kind_Code <= tessmeta::kDictDomain) {
            invalid = row->Global_User_ID != 0 &&
                      !m_pGuids->IsUniqueObjectIdValid(static_cast<LONG>(row->Global_User_ID));
        }
        if (invalid) m_pGuids->AddDictionaryObjectID(id);
    }
}

void CDictObjectMgr::CleanupInvalidDictionaryObjectIDs() {
    if (!m_pGuids || !m_pGuids->CheckInValidDictionaryObjectIDs()) return;
    for (ULONG id : m_pGuids->GetInValidDictionaryObjectIDSet())
        m_pRegistry->Delete(id);
    m_pGuids->CheckInValidDictionaryObjectIDs(false);
    m_pGuids->ClearInValidDictionaryObjectIDs();
}
