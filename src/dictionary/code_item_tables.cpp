#include "dictionary/code_item_tables.h"

#include "dictionary/dict_object_mgr.h"

void AssignCodeItemToObjectDomain(CDictObjectMgr* dict, DWORD dictObjectId, DWORD globalId) {
    if (dict) dict->AssignDictObjToObjectDomain(dictObjectId, globalId);
}

namespace {

// A new row of a code item with its foreign key and unique object.
template <class Row>
std::unique_ptr<Row> NewItem(DWORD dictObjectId, DWORD globalUserId) {
    auto row = std::make_unique<Row>();
    row->Dictionary_Object_ID = dictObjectId;
    row->Global_User_ID = globalUserId;
    return row;
}

void SetNumbers(CKelDictTrigger& row, const SDictTriggerNumbers& numbers) {
    row.Integer_Field = numbers.integerField;
    row.Numeric_Attribute_1 = numbers.firstAttribute;
    row.Event = numbers.event;
    row.Numeric_Attribute_2 = numbers.secondAttribute;
}

}  // namespace

// ---- libraries -------------------------------------------------------------------------

ULONG CEnhDictLibraryTbl::Insert(DWORD dictObjectId, const CString& name,
                                 const CString& description, int integerField, const CString& text,
                                 DWORD globalUserId, DWORD libraryId) {
    auto row = NewItem<CKelDictLibrary>(dictObjectId, globalUserId);
    row->Integer_Field = integerField;
    return InsertWithTexts(std::move(row), libraryId, name, description, text);
}

ULONG CEnhDictLibraryTbl::Insert(DWORD dictObjectId, DWORD nameId, DWORD descriptionId,
                                 int integerField, DWORD textId, DWORD globalUserId,
                                 DWORD libraryId) {
    auto row = NewItem<CKelDictLibrary>(dictObjectId, globalUserId);
    row->Name = nameId;
    row->Description = descriptionId;
    row->Integer_Field = integerField;
    row->Value = textId;
    return Insert(std::move(row), libraryId);
}

int CEnhDictLibraryTbl::SetIntegerField(ULONG libraryId, int integerField) {
    return UpdateRow(libraryId, [&](CKelDictLibrary& row) { row.Integer_Field = integerField; });
}

// ---- triggers --------------------------------------------------------------------------

ULONG CEnhDictTriggerTbl::Insert(DWORD dictObjectId, const CString& name,
                                 const CString& description, const SDictTriggerNumbers& numbers,
                                 const CString& text, DWORD globalUserId, DWORD triggerId) {
    auto row = NewItem<CKelDictTrigger>(dictObjectId, globalUserId);
    ::SetNumbers(*row, numbers);
    return InsertWithTexts(std::move(row), triggerId, name, description, text);
}

ULONG CEnhDictTriggerTbl::Insert(DWORD dictObjectId, DWORD nameId, DWORD descriptionId,
                                 const SDictTriggerNumbers& numbers, DWORD textId,
                                 DWORD globalUserId, DWORD triggerId) {
    auto row = NewItem<CKelDictTrigger>(dictObjectId, globalUserId);
    row->Name = nameId;
    row->Description = descriptionId;
    row->Value = textId;
    ::SetNumbers(*row, numbers);
    return Insert(std::move(row), triggerId);
}

int CEnhDictTriggerTbl::SetNumbers(ULONG triggerId, const SDictTriggerNumbers& numbers) {
    return UpdateRow(triggerId, [&](CKelDictTrigger& row) { ::SetNumbers(row, numbers); });
}

// ---- reusable procedures -----------------------------------------------------------------

ULONG CEnhReusableProcTbl::Insert(DWORD dictObjectId, const CString& name,
                                  const CString& description, const CString& text,
                                  DWORD numericAttribute, DWORD globalUserId, DWORD procedureId) {
    auto row = NewItem<CKelReusableProc>(dictObjectId, globalUserId);
    row->Numeric_Attribute = numericAttribute;
    return InsertWithTexts(std::move(row), procedureId, name, description, text);
}

ULONG CEnhReusableProcTbl::Insert(DWORD dictObjectId, DWORD nameId, DWORD descriptionId,
                                  DWORD textId, DWORD numericAttribute, DWORD globalUserId,
                                  DWORD procedureId) {
    auto row = NewItem<CKelReusableProc>(dictObjectId, globalUserId);
    row->Name = nameId;
    row->Description = descriptionId;
    row->Value = textId;
    row->Numeric_Attribute = numericAttribute;
    return Insert(std::move(row), procedureId);
}

int CEnhReusableProcTbl::SetNumericAttribute(ULONG procedureId, DWORD numericAttribute) {
    return UpdateRow(procedureId,
                     [&](CKelReusableProc& row) { row.Numeric_Attribute = numericAttribute; });
}
