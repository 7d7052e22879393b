#include "metadata/object_prop_override_mgr.h"

#include <utility>

CObjectPropOverrideMgr::CObjectPropOverrideMgr(CZmfFile* file, CGuidMgr* guids)
    : m_pGuids(guids),
      m_colors(std::make_unique<CEnhObjectColorOverrideTbl>(nullptr, nullptr, guids, file)),
      m_fonts(std::make_unique<CEnhObjectFontOverrideTbl>(nullptr, nullptr, guids, file)) {}

CObjectPropOverrideMgr::~CObjectPropOverrideMgr() = default;

int CObjectPropOverrideMgr::Init(unsigned int bucketCount) {
    m_colors->Init(bucketCount);
    m_fonts->Init(bucketCount);
    return 1;
}

int CObjectPropOverrideMgr::Save(CZmfFile* file) {
    const int colors = m_colors->Save(file);
    const int fonts = m_fonts->Save(file);
    return colors && fonts ? 1 : 0;
}

void CObjectPropOverrideMgr::ReleaseStorageTables(int flag) {
    ReleaseSavedTable(*m_colors, flag);
    ReleaseSavedTable(*m_fonts, flag);
}

bool CObjectPropOverrideMgr::IsKnownObject(ULONG objectId) const {
    if (objectId == 0) return false;
    return !m_pGuids || m_pGuids->IsUniqueObjectIdValid(static_cast<LONG>(objectId));
}

DWORD CObjectPropOverrideMgr::NewOverrideObject(int typeId, ULONG objectId) const {
    if (!m_pGuids) return 0;
    LONG type = 0, model = 0, plex1 = 0, plex2 = 0;
    m_pGuids->GetObjectTypeAndModelIds(static_cast<LONG>(objectId), type, model, plex1, plex2);
    return static_cast<DWORD>(m_pGuids->GetNewUniqueId(typeId, static_cast<ULONG>(model), 0, 0));
}

CKelObjectColorOverride* CObjectPropOverrideMgr::FindColor(ULONG objectId, ULONG colorIndex) const {
    for (auto* row = m_colors->GetFirstFKRow(objectId); row; row = m_colors->GetNextFKRow())
        if (row->Color_Index == colorIndex) return row;
    return nullptr;
}

CKelObjectFontOverride* CObjectPropOverrideMgr::FindFont(ULONG objectId, ULONG fontIndex) const {
    for (auto* row = m_fonts->GetFirstFKRow(objectId); row; row = m_fonts->GetNextFKRow())
        if (row->Font_Index == fontIndex) return row;
    return nullptr;
}

ULONG CObjectPropOverrideMgr::SetColorOverride(ULONG objectId, ULONG colorIndex, ULONG rgb) {
    if (!IsKnownObject(objectId)) return 0;
    if (CKelObjectColorOverride* row = FindColor(objectId, colorIndex)) {
        row->Color_Value = rgb;
        return row->Object_Color_Override_ID;
    }
    auto row = std::make_unique<CKelObjectColorOverride>();
    row->Object_ID = objectId;
    row->Color_Index = colorIndex;
    row->Color_Value = rgb;
    row->Global_User_ID = NewOverrideObject(m_colors->GetObjectTypeId(), objectId);
    return m_colors->Insert(std::move(row));
}

int CObjectPropOverrideMgr::GetColorOverride(ULONG objectId, ULONG colorIndex, ULONG& rgb) const {
    const CKelObjectColorOverride* row = FindColor(objectId, colorIndex);
    if (!row) return 0;
    rgb = row->Color_Value;
    return 1;
}

int CObjectPropOverrideMgr::ClearColorOverride(ULONG objectId, ULONG colorIndex) {
    const CKelObjectColorOverride* row = FindColor(objectId, colorIndex);
    return row ? m_colors->Delete(row->Object_Color_Override_ID) : 0;
}

ULONG CObjectPropOverrideMgr::SetFontOverride(ULONG objectId, const SFontOverride& font) {
    if (!IsKnownObject(objectId) || (font.style & ~DWORD{kFontStyleMask}) != 0 ||
        font.faceName.IsEmpty())
        return 0;
    CKelObjectFontOverride* row = FindFont(objectId, font.fontIndex);
    std::unique_ptr<CKelObjectFontOverride> added;
    if (!row) {
        added = std::make_unique<CKelObjectFontOverride>();
        row = added.get();
        row->Object_ID = objectId;
        row->Font_Index = font.fontIndex;
        row->Global_User_ID = NewOverrideObject(m_fonts->GetObjectTypeId(), objectId);
    }
    row->Face_Name = font.faceName;
    row->Point_Size = font.pointSize;
    row->Style = font.style;
    return added ? m_fonts->Insert(std::move(added)) : row->Object_Font_Override_ID;
}

namespace {

SFontOverride FontOf(const CKelObjectFontOverride& row) {
    SFontOverride font;
    font.fontIndex = row.Font_Index;
    font.faceName = row.Face_Name.GetValue();
    font.pointSize = row.Point_Size;
    font.style = row.Style;
    return font;
}

}  // namespace

int CObjectPropOverrideMgr::GetFontOverride(ULONG objectId, ULONG fontIndex,
                                            SFontOverride& font) const {
    const CKelObjectFontOverride* row = FindFont(objectId, fontIndex);
    if (!row) return 0;
    font = FontOf(*row);
    return 1;
}

int CObjectPropOverrideMgr::ClearFontOverride(ULONG objectId, ULONG fontIndex) {
    const CKelObjectFontOverride* row = FindFont(objectId, fontIndex);
    return row ? m_fonts->Delete(row->Object_Font_Override_ID) : 0;
}

std::vector<SColorOverride> CObjectPropOverrideMgr::GetColorOverrides(ULONG objectId) const {
    std::vector<SColorOverride> list;
    for (auto* row = m_colors->GetFirstFKRow(objectId); row; row = m_colors->GetNextFKRow())
        list.push_back({row->Color_Index, row->Color_Value});
    return list;
}

std::vector<SFontOverride> CObjectPropOverrideMgr::GetFontOverrides(ULONG objectId) const {
    std::vector<SFontOverride> list;
    for (auto* row = m_fonts->GetFirstFKRow(objectId); row; row = m_fonts->GetNextFKRow())
        list.push_back(FontOf(*row));
    return list;
}

int CObjectPropOverrideMgr::RemoveObjectOverrides(ULONG objectId) {
    const int count =
        static_cast<int>(GetColorOverrides(objectId).size() + GetFontOverrides(objectId).size());
    m_colors->DeleteAllFKRows(objectId);
    m_fonts->DeleteAllFKRows(objectId);
    return count;
}
