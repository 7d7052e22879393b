#include "views/view_tables.h"

void CEnhViewTableTable::Init(unsigned int bucketCount) {
    CEnhTable::Init(bucketCount);
    for (POSITION pos = GetFirstRowPosition(); pos;) {
        CKelViewTable* row = GetNextRow(pos);
        row->SetEditState(row->Edit_State);
    }
}

ULONG CEnhViewTableTable::Insert(ULONG modelId, const CString& name, const CString& owner,
                                 const CString& definition, const CString& note,
                                 const CString& where, const CString& having, ULONG selectFlags,
                                 ULONG uniqueId, ULONG key) {
    auto row = std::make_unique<CKelViewTable>();
    row->Model_ID = modelId;
    row->Select_Flags = selectFlags;
    row->Global_User_ID = uniqueId;
    return InsertTexts(std::move(row), key, name, owner, definition, note, where, having);
}

int CEnhViewTableTable::Update(ULONG key, ULONG modelId, ULONG selectFlags) {
    return UpdateRow(key, [&](CKelViewTable& row) {
        row.Model_ID = modelId;
        row.Select_Flags = selectFlags;
    });
}

int CEnhViewTableTable::Save(CZmfFile* file) {
    for (POSITION pos = GetFirstRowPosition(); pos;) {
        CKelViewTable* row = GetNextRow(pos);
        row->Edit_State = row->GetEditState();
    }
    return CEnhTable::Save(file);
}

ULONG CEnhViewComponentTable::Insert(ULONG viewId, ULONG objectId, const CString& name,
                                     const CString& alias, ULONG position, ULONG uniqueId,
                                     ULONG key) {
    auto row = std::make_unique<CKelViewComponent>();
    row->View_Table_ID = viewId;
    row->Object_ID = objectId;
    row->Position = position;
    row->Global_User_ID = uniqueId;
    return InsertTexts(std::move(row), key, name, alias);
}

int CEnhViewComponentTable::Update(ULONG key, ULONG objectId, ULONG position) {
    return UpdateRow(key, [&](CKelViewComponent& row) {
        row.Object_ID = objectId;
        row.Position = position;
    });
}

ULONG CEnhViewColumnTable::Insert(ULONG viewId, ULONG componentId, ULONG objectId,
                                  const CString& name, ULONG uniqueId, ULONG key) {
    auto row = std::make_unique<CKelViewColumn>();
    row->View_Table_ID = viewId;
    row->View_Component_ID = componentId;
    row->Object_ID = objectId;
    row->Global_User_ID = uniqueId;
    return InsertTexts(std::move(row), key, name);
}

int CEnhViewColumnTable::Update(ULONG key, ULONG objectId) {
    return UpdateRow(key, [&](CKelViewColumn& row) { row.Object_ID = objectId; });
}

ULONG CEnhViewFieldTable::Insert(ULONG viewId, const CString& name, const CString& expression,
                                 ULONG position, ULONG uniqueId, ULONG key) {
    auto row = std::make_unique<CKelViewField>();
    row->View_Table_ID = viewId;
    row->Position = position;
    row->Global_User_ID = uniqueId;
    return InsertTexts(std::move(row), key, name, expression);
}

int CEnhViewFieldTable::Update(ULONG key, ULONG position) {
    return UpdateRow(key, [&](CKelViewField& row) { row.Position = position; });
}

ULONG CEnhViewFieldColumnTable::Insert(ULONG viewId, ULONG fieldId, ULONG columnId, ULONG position,
                                       ULONG uniqueId, ULONG key) {
    auto row = std::make_unique<CKelViewFieldColumn>();
    row->View_Table_ID = viewId;
    row->View_Field_ID = fieldId;
    row->View_Column_ID = columnId;
    row->Position = position;
    row->Global_User_ID = uniqueId;
    return InsertIds(std::move(row), key);
}

int CEnhViewFieldColumnTable::Update(ULONG key, ULONG position) {
    return UpdateRow(key, [&](CKelViewFieldColumn& row) { row.Position = position; });
}

ULONG CEnhViewColumnUsageTable::Insert(ULONG viewId, ULONG columnId, ULONG clause, ULONG position,
                                       ULONG flags, ULONG uniqueId, ULONG key) {
    auto row = std::make_unique<CKelViewColumnUsage>();
    row->View_Table_ID = viewId;
    row->View_Column_ID = columnId;
    row->Clause = clause;
    row->Position = position;
    row->Flags = flags;
    row->Global_User_ID = uniqueId;
    return InsertIds(std::move(row), key);
}

int CEnhViewColumnUsageTable::Update(ULONG key, ULONG clause, ULONG position, ULONG flags) {
    return UpdateRow(key, [&](CKelViewColumnUsage& row) {
        row.Clause = clause;
        row.Position = position;
        row.Flags = flags;
    });
}
