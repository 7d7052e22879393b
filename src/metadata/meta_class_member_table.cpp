#include "metadata/meta_class_member_table.h"

#include <algorithm>
#include <memory>

CEnhMetaClassMemberTbl::CEnhMetaClassMemberTbl(CZmfFile* file, CGuidMgr* guids)
    : CEnhTable(nullptr, nullptr, guids, file) {
    m_byPair.Init();
}

void CEnhMetaClassMemberTbl::Init(unsigned int bucketCount) {
    m_seen.Clear();
    CEnhTable::Init(bucketCount);
    m_seen.Clear();
}

ULONG CEnhMetaClassMemberTbl::Insert(unsigned int metaTableKey, const CString& name,
                                     unsigned int tableRowId, const char* secondText, ULONG value) {
    auto row = std::make_unique<CKelMetaClassMember>();
    row->MetaTable_ID = metaTableKey;
    row->Name = name;
    if (secondText) row->Description = secondText;
    row->TableRow_ID = tableRowId;
    row->Member_Value = value;
    row->Global_User_ID = static_cast<DWORD>(NewMemberObject());
    return InsertIds(std::move(row), 0);
}

bool CEnhMetaClassMemberTbl::AdmitLoadedRow(CKelMetaClassMember& row) {
    if (row.TableRow_ID == 0) {
        if (GetIdentity()) GetIdentity()->DeleteObject(static_cast<int>(row.Global_User_ID), 0);
        return false;
    }
    if (row.Global_User_ID != 0 && m_seen.Add(row.Global_User_ID)) row.Global_User_ID = 0;
    if (row.Global_User_ID == 0) row.Global_User_ID = static_cast<DWORD>(NewMemberObject());
    return true;
}

void CEnhMetaClassMemberTbl::AddToExtraIndexes(CKelMetaClassMember* row) {
    if (!m_pairsPending) m_byPair.Insert(PairKey(*row), row);
}

void CEnhMetaClassMemberTbl::RemoveFromExtraIndexes(CKelMetaClassMember* row) {
    Pairs().Delete(PairKey(*row), row);
}

void CEnhMetaClassMemberTbl::SizeExtraIndexes(UINT /*bucketCount*/) {
    m_byPair.RemoveAll();
    m_pairsPending = true;
}

CBalancedTree& CEnhMetaClassMemberTbl::Pairs() {
    if (m_pairsPending) {
        m_pairsPending = false;
        for (POSITION pos = GetFirstRowPosition(); pos;) {
            CKelMetaClassMember* row = GetNextRow(pos);
            m_byPair.Insert(PairKey(*row), row);
        }
    }
    return m_byPair;
}

int CEnhMetaClassMemberTbl::NewMemberObject() {
    return GetIdentity() ? GetIdentity()->GetNewUniqueId(GetObjectTypeId(), 0, 0, 0) : 0;
}

bool CEnhMetaClassMemberTbl::CSeenIds::Add(DWORD id) {
    if (id >= kBitmapLimit) return !m_large.insert(id).second;
    const std::size_t word = id / 64;
    if (word >= m_bits.size()) m_bits.resize(std::max(word + 1, m_bits.size() * 2));
    const std::uint64_t bit = std::uint64_t{1} << (id % 64);
    const bool seen = (m_bits[word] & bit) != 0;
    m_bits[word] |= bit;
    return seen;
}

void CEnhMetaClassMemberTbl::CSeenIds::Clear() {
    m_bits = {};
    m_large = {};
}
