#include "namespace/name_space_mgr.h"

namespace {

std::string_view ViewOf(const char* text) {
    return text ? std::string_view(text) : std::string_view();
}

}  // namespace

CNameSpaceMgr::CNameSpaceMgr(CZmfFile* file) : m_pFile(file) {
    m_pStrings = std::make_unique<CStringTablePair>(file);
    m_pUsages = std::make_unique<CEnhStringUsageTable>(file);
    m_pUsageTypes = std::make_unique<CEnhStringUsageTypeTable>(file);
    m_pStrings->SetStringUsageTable(m_pUsages.get());
}

CNameSpaceMgr::~CNameSpaceMgr() = default;

// ---- load and save ----------------------------------------------------------------

int CNameSpaceMgr::Init(unsigned int usageBucketCount, unsigned int stringBucketCount,
                        int stringsOnly, int buildRoleIndex, int deferUsageLoad) {
    if (!stringsOnly) {
        m_pUsages->Init(usageBucketCount, buildRoleIndex != 0, deferUsageLoad != 0);
        m_pUsageTypes->Init(0);
        InitStringUsageIds();
    }
    m_pStrings->Init(stringBucketCount);
    m_pFile = nullptr;
    return 1;
}

void CNameSpaceMgr::Save(CZmfFile* file, int writeUsages, int purgeStrings) {
    m_pFile = file;
    m_pStrings->Save(file, purgeStrings);
    if (writeUsages) m_pUsages->Save(file);
    m_pUsageTypes->Save(file);
}

void CNameSpaceMgr::ReleaseStorageTables(int flag) {
    m_pStrings->ReleaseStorageTables(flag);
    auto release = [flag](CEnhTableBase& table) {
        CTableBase** handle = table.GetTablePtrAddr();
        if (*handle && table.GetFile()) table.GetFile()->ReleaseTable(handle, flag);
    };
    if (m_pUsages->IsLoadComplete()) release(*m_pUsages);
    release(*m_pUsageTypes);
}

int CNameSpaceMgr::LoadStringUsageRows(int count) {
    return m_pUsages->LoadMoreRows(count);
}

int CNameSpaceMgr::IsStringUsageLoadComplete() const {
    return m_pUsages->IsLoadComplete() ? 1 : 0;
}

// ---- strings ----------------------------------------------------------------------

int CNameSpaceMgr::AddToStringTable(const CString& text) {
    return static_cast<int>(m_pStrings->AddToStringTable(text.View()));
}
int CNameSpaceMgr::AddToStringTable(const char* text) {
    return static_cast<int>(m_pStrings->AddToStringTable(ViewOf(text)));
}

int CNameSpaceMgr::AddConstString(const CString& text) {
    return SetTextUsage(0, text.View(), 0, false);
}
int CNameSpaceMgr::AddConstString(const char* text) {
    return SetTextUsage(0, ViewOf(text), 0, false);
}

int CNameSpaceMgr::DeleteConstString(const CString& /*text*/) {
    return 0;
}
int CNameSpaceMgr::DeleteConstString(const char* /*text*/) {
    return 0;
}

ULONG CNameSpaceMgr::GetStringIdFromString(const CString& text) const {
    return m_pStrings->GetStringId(text.View());
}
ULONG CNameSpaceMgr::GetStringIdFromString(const char* text) const {
    return m_pStrings->GetStringId(ViewOf(text));
}
ULONG CNameSpaceMgr::GetStringIdFromStringNoCase(const CString& text) const {
    return m_pStrings->GetStringIdNoCase(text.View());
}
ULONG CNameSpaceMgr::GetStringIdFromStringNoCase(const char* text) const {
    return m_pStrings->GetStringIdNoCase(ViewOf(text));
}

void CNameSpaceMgr::GetStringFromNameSpace(CString& out, LONG id) {
    if (!m_pStrings->GetText(static_cast<ULONG>(id), out)) out = GetInvalidStringValue();
}

std::string_view CNameSpaceMgr::GetStringView(LONG id) const {
    std::string_view text;
    return m_pStrings->FindText(static_cast<ULONG>(id), text) ? text
                                                              : GetInvalidStringValue().View();
}

int CNameSpaceMgr::GetString(CString& out, int id) {
    GetStringFromNameSpace(out, static_cast<LONG>(id));
    return 1;
}

const CString& CNameSpaceMgr::GetInvalidStringValue() {
    static const CString invalid("ERROR: String not found in file");
    return invalid;
}

int CNameSpaceMgr::CopyToStringTable(const CString& text, int id) {
    return m_pStrings->CopyToStringTable(text.View(), static_cast<ULONG>(id));
}
int CNameSpaceMgr::CopyToStringTable(const char* text, int id) {
    return m_pStrings->CopyToStringTable(ViewOf(text), static_cast<ULONG>(id));
}

POSITION CNameSpaceMgr::GetStringStartPosition() const {
    return m_pStrings->GetStartPosition();
}

void CNameSpaceMgr::GetNextString(POSITION& position, LONG& id, CString& text) const {
    m_pStrings->GetNext(position, id, text);
}

// ---- usages -----------------------------------------------------------------------

int CNameSpaceMgr::SetTextUsage(int objectId, std::string_view text, int usageTypeId,
                                bool recordUsage) {
    const auto object = static_cast<DWORD>(objectId);
    const auto usageType = static_cast<DWORD>(usageTypeId);
    if (text.empty()) {
        if (recordUsage) m_pUsages->RemoveUsage(object, usageType);
        return 0;
    }
    const ULONG id = m_pStrings->AddToStringTable(text);
    if (recordUsage) m_pUsages->SetUsage(object, usageType, id);
    return static_cast<int>(id);
}

int CNameSpaceMgr::SetIdUsage(int stringId, int objectId, int usageTypeId) {
    m_pUsages->SetUsage(static_cast<DWORD>(objectId), static_cast<DWORD>(usageTypeId),
                        static_cast<DWORD>(stringId));
    return 0;
}

int CNameSpaceMgr::UpdateNameSpace(int objectId, const CString& text, int usageTypeId,
                                   int recordUsage) {
    return SetTextUsage(objectId, text.View(), usageTypeId, recordUsage != 0);
}

int CNameSpaceMgr::AddString(const CString& text, int objectId, int usageTypeId) {
    return SetTextUsage(objectId, text.View(), usageTypeId, true);
}
int CNameSpaceMgr::AddString(const char* text, int objectId, int usageTypeId) {
    return SetTextUsage(objectId, ViewOf(text), usageTypeId, true);
}
int CNameSpaceMgr::UpdateString(const CString& text, int objectId, int usageTypeId) {
    return SetTextUsage(objectId, text.View(), usageTypeId, true);
}
int CNameSpaceMgr::UpdateString(const char* text, int objectId, int usageTypeId) {
    return SetTextUsage(objectId, ViewOf(text), usageTypeId, true);
}
int CNameSpaceMgr::AddOrUpdateString(const CString& text, int objectId, int usageTypeId) {
    return SetTextUsage(objectId, text.View(), usageTypeId, true);
}
int CNameSpaceMgr::AddOrUpdateString(const char* text, int objectId, int usageTypeId) {
    return SetTextUsage(objectId, ViewOf(text), usageTypeId, true);
}

int CNameSpaceMgr::AddString(int stringId, int objectId, int usageTypeId) {
    return SetIdUsage(stringId, objectId, usageTypeId);
}
int CNameSpaceMgr::UpdateString(int stringId, int objectId, int usageTypeId) {
    return SetIdUsage(stringId, objectId, usageTypeId);
}
int CNameSpaceMgr::AddOrUpdateString(int stringId, int objectId, int usageTypeId) {
    return SetIdUsage(stringId, objectId, usageTypeId);
}

int CNameSpaceMgr::DeleteString(int objectId, int usageTypeId) {
    return m_pUsages->RemoveUsage(static_cast<DWORD>(objectId), static_cast<DWORD>(usageTypeId));
}

int CNameSpaceMgr::GetStringIdFromObjectAndUsageTypeIds(int objectId, int usageTypeId) {
    return static_cast<int>(
        m_pUsages->GetStringId(static_cast<DWORD>(objectId), static_cast<DWORD>(usageTypeId)));
}

int CNameSpaceMgr::GetFirstUsageObjectId(int usageTypeId, int stringId) {
    return static_cast<int>(m_pUsages->GetFirstObjectId(usageTypeId, stringId));
}

int CNameSpaceMgr::GetNextUsageObjectId() {
    return static_cast<int>(m_pUsages->GetNextObjectId());
}

int CNameSpaceMgr::ToUsageResult(const CKelStringUsage* row, LONG& objectId, LONG& usageTypeId) {
    objectId = row ? static_cast<LONG>(row->Object_ID) : 0;
    usageTypeId = row ? static_cast<LONG>(row->String_Usage_Type_ID) : 0;
    return row ? 1 : 0;
}

int CNameSpaceMgr::GetFirstUsageIdsFromStringId(int stringId, LONG& objectId, LONG& usageTypeId) {
    return ToUsageResult(m_pUsages->GetFirstUsageOfString(stringId), objectId, usageTypeId);
}

int CNameSpaceMgr::GetNextUsageIdsFromStringId(LONG& objectId, LONG& usageTypeId) {
    return ToUsageResult(m_pUsages->GetNextUsageOfString(), objectId, usageTypeId);
}

int CNameSpaceMgr::FixStringUsageUnqObjId(LONG objectId, LONG usageTypeId, LONG newObjectId,
                                          LONG newUsageTypeId) {
    return m_pUsages->FixUsage(static_cast<DWORD>(objectId), static_cast<DWORD>(usageTypeId),
                               static_cast<DWORD>(newObjectId), static_cast<DWORD>(newUsageTypeId));
}

// ---- usage types ------------------------------------------------------------------

int CNameSpaceMgr::GetStringUsageTypeId(const CString& name) {
    return static_cast<int>(m_pUsageTypes->GetUsageTypeId(name.View()));
}
int CNameSpaceMgr::GetStringUsageTypeId(const char* name) {
    return static_cast<int>(m_pUsageTypes->GetUsageTypeId(ViewOf(name)));
}

void CNameSpaceMgr::InitStringUsageIds() {
    for (int i = 0; i < tessmeta::kStringUsageTypeCount; ++i)
        m_usageTypeIds[static_cast<size_t>(i)] =
            GetStringUsageTypeId(tessmeta::kStringUsageTypeNames[i]);
}
