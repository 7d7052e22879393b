// The manager's operations on attachment types, valid attachment types and
// attachments.
#include <utility>
#include <vector>

#include "dictionary/dict_object_mgr.h"

// ---- attachment types ------------------------------------------------------------------

DWORD CDictObjectMgr::InsertAttachmentType(CString& name, CString& description, int integerField,
                                           DWORD dataDictionaryId, DWORD& dictObjectId,
                                           BOOL useGivenId) {
    return CreateItem(tessmeta::kDictAttachmentType, *m_pAttachmentTypes, dataDictionaryId,
                      dictObjectId, useGivenId, [&](DWORD id) {
                          return m_pAttachmentTypes->Insert(id, name, description, integerField, 0,
                                                            0);
                      });
}

DWORD CDictObjectMgr::InsertAttachmentType(DWORD nameId, DWORD descriptionId, int integerField,
                                           DWORD dataDictionaryId, DWORD& dictObjectId,
                                           BOOL useGivenId) {
    return CreateItem(tessmeta::kDictAttachmentType, *m_pAttachmentTypes, dataDictionaryId,
                      dictObjectId, useGivenId, [&](DWORD id) {
                          return m_pAttachmentTypes->Insert(id, nameId, descriptionId, integerField,
                                                            0, 0);
                      });
}

BOOL CDictObjectMgr::UpdateAttachmentType(DWORD attachmentTypeId, CString& name,
                                          CString& description, int integerField) {
    CKelAttachmentType* row = m_pAttachmentTypes->GetRow(attachmentTypeId);
    if (!row) return FALSE;
    WriteTexts(*m_pAttachmentTypes, *row, {&name, &description});
    m_pAttachmentTypes->SetIntegerField(attachmentTypeId, integerField);
    return TRUE;
}

BOOL CDictObjectMgr::DeleteAttachmentType(DWORD attachmentTypeId) {
    const CKelAttachmentType* row = m_pAttachmentTypes->GetRow(attachmentTypeId);
    if (!row || !m_pRegistry->GetRow(row->Dictionary_Object_ID)) return FALSE;
    // Collected first: the walks must not run while their rows go.
    std::vector<DWORD> validTypes, attachments;
    m_pValidAttachmentTypes->ForEachOfType(attachmentTypeId, [&](CKelValidAttachmentType* valid) {
        validTypes.push_back(valid->Valid_Attachment_Type_ID);
    });
    m_pAttachments->ForEachOfType(attachmentTypeId, [&](CKelAttachment* attachment) {
        attachments.push_back(attachment->Attachment_ID);
    });
    // Without a reference manager the cascade could not unbind anything.
    if (!m_pRefs && (!validTypes.empty() || !attachments.empty())) return FALSE;
    DeleteItem(*m_pAttachmentTypes, attachmentTypeId);
    for (DWORD id : validTypes)
        DeleteValidAttachmentType(id);
    for (DWORD id : attachments)
        DeleteAttachment(id);
    return TRUE;
}

CKelAttachmentType* CDictObjectMgr::GetAttachmentTypeRow(DWORD attachmentTypeId) const {
    return m_pAttachmentTypes->GetRow(attachmentTypeId);
}

CKelAttachmentType* CDictObjectMgr::GetAttachmentTypeDictObjIDFKRow(DWORD dictObjectId) const {
    return m_pAttachmentTypes->GetDictObjIDFKRow(dictObjectId);
}

BOOL CDictObjectMgr::GetAttachmentTypeName(DWORD attachmentTypeId, CString& name) const {
    return m_pAttachmentTypes->GetName(attachmentTypeId, name);
}

BOOL CDictObjectMgr::GetAttachmentTypeData(DWORD attachmentTypeId, CString& name,
                                           CString& description, int& integerField) const {
    const CKelAttachmentType* row = m_pAttachmentTypes->GetRow(attachmentTypeId);
    if (!row) return FALSE;
    ReadTexts(*m_pAttachmentTypes, *row, {&name, &description});
    integerField = row->Integer_Field;
    return TRUE;
}

POSITION CDictObjectMgr::GetFirstAttTypeRowPosition() const {
    return m_pAttachmentTypes->GetFirstRowPosition();
}

CKelAttachmentType* CDictObjectMgr::GetNextAttTypeRow(POSITION& position) const {
    return m_pAttachmentTypes->GetNextRow(position);
}

int CDictObjectMgr::GetAttachmentTypeCount() const {
    return m_pAttachmentTypes->GetCount();
}

CKelAttachmentType* CDictObjectMgr::GetAttachmentTypeByName(DWORD dataDictionaryId,
                                                            CString& name) const {
    return FirstNamedIn(*m_pAttachmentTypes, name, dataDictionaryId);
}

CKelAttachmentType* CDictObjectMgr::GetAttachmentTypeByAttGlobalUserId(DWORD globalUserId) const {
    const CKelAttachment* attachment = m_pAttachments->GetRowByGlobalId(globalUserId);
    return attachment ? m_pAttachmentTypes->GetRow(attachment->Attachment_Type_ID) : nullptr;
}

LONG CDictObjectMgr::IsAttachmentTypeUnique(CString& name, CString& description, int integerField,
                                            CValidAttTypeMap& validTypes, DWORD dataDictionaryId,
                                            bool compareContents) {
    const CKelAttachmentType* row =
        FirstNamedIn(*m_pAttachmentTypes, name, ScopeOf(dataDictionaryId));
    if (!row) return 0;
    if (!compareContents) return -1;
    const CString* const texts[] = {&description};
    if (!TextsEqualNoCase(*m_pAttachmentTypes, *row, texts) ||
        static_cast<int>(row->Integer_Field) != integerField)
        return -1;
    bool same = true;
    int matched = 0;
    m_pValidAttachmentTypes->ForEachOfType(
        row->Attachment_Type_ID, [&](const CKelValidAttachmentType* valid) {
            const CValidAttTypeMap::CPair* wanted = validTypes.PLookup(valid->Meta_Table_ID);
            const CKelValidAttachmentType* other = wanted ? wanted->value : nullptr;
            if (!other || other->Attribute_1 != valid->Attribute_1 ||
                other->Attribute_2 != valid->Attribute_2)
                same = false;
            ++matched;
        });
    return same && matched == validTypes.GetCount() ? static_cast<LONG>(row->Attachment_Type_ID)
                                                    : -1;
}

LONG CDictObjectMgr::GetNameForUniqueAttachmentType(CString& name, CString& description,
                                                    int integerField, CValidAttTypeMap& validTypes,
                                                    DWORD dataDictionaryId, bool compareContents) {
    return UniqueName(name, [&] {
        return IsAttachmentTypeUnique(name, description, integerField, validTypes, dataDictionaryId,
                                      compareContents);
    });
}

// ---- valid attachment types --------------------------------------------------------------

template <class Table, class InsertRow>
DWORD CDictObjectMgr::CreateInTypesDictionary(DWORD code, Table& table, DWORD attachmentTypeId,
                                              DWORD& dictObjectId, BOOL useGivenId,
                                              InsertRow&& insertRow) {
    const CKelAttachmentType* type = m_pAttachmentTypes->GetRow(attachmentTypeId);
    if (!type) return 0;
    return CreateItem(code, table, GetData_Dictionary_ID(type->Dictionary_Object_ID), dictObjectId,
                      useGivenId, std::forward<InsertRow>(insertRow));
}

DWORD CDictObjectMgr::InsertValidAttachmentType(DWORD attachmentTypeId, DWORD metaTableId,
                                                DWORD firstAttribute, DWORD secondAttribute,
                                                DWORD& dictObjectId, BOOL useGivenId) {
    return CreateInTypesDictionary(tessmeta::kDictValidAttachmentType, *m_pValidAttachmentTypes,
                                   attachmentTypeId, dictObjectId, useGivenId, [&](DWORD id) {
                                       return m_pValidAttachmentTypes->Insert(
                                           id, metaTableId, attachmentTypeId, firstAttribute,
                                           secondAttribute, 0, 0);
                                   });
}

BOOL CDictObjectMgr::UpdateValidAttachmentType(DWORD validTypeId, DWORD firstAttribute,
                                               DWORD secondAttribute) {
    return m_pValidAttachmentTypes->SetAttributes(validTypeId, firstAttribute, secondAttribute);
}

BOOL CDictObjectMgr::DeleteValidAttachmentType(DWORD validTypeId) {
    const CKelValidAttachmentType* row = m_pValidAttachmentTypes->GetRow(validTypeId);
    if (!m_pRefs || !row || !m_pRegistry->GetRow(row->Dictionary_Object_ID)) return FALSE;
    CEnhBoundDictObjectTbl* bound = m_pRefs->GetBoundDictObjectTable();
    const auto metaTable = static_cast<DWORD>(
        ValidAttTypeToBoundDictObjMetaTableID(static_cast<int>(row->Meta_Table_ID)));
    m_pAttachments->ForEachOfType(row->Attachment_Type_ID, [&](const CKelAttachment* attachment) {
        bound->DeleteAllDictObjectMetaTableReferences(attachment->Dictionary_Object_ID, metaTable);
    });
    return DeleteItem(*m_pValidAttachmentTypes, validTypeId);
}

CKelValidAttachmentType* CDictObjectMgr::GetValidAttachmentTypeRow(DWORD validTypeId) const {
    return m_pValidAttachmentTypes->GetRow(validTypeId);
}

CKelValidAttachmentType* CDictObjectMgr::GetValidAttachmentTypeDictObjIDFKRow(
    DWORD dictObjectId) const {
    return m_pValidAttachmentTypes->GetDictObjIDFKRow(dictObjectId);
}

POSITION CDictObjectMgr::GetFirstValidAttachmentTypeRowPosition() const {
    return m_pValidAttachmentTypes->GetFirstRowPosition();
}

CKelValidAttachmentType* CDictObjectMgr::GetNextValidAttachmentTypeRow(POSITION& position) const {
    return m_pValidAttachmentTypes->GetNextRow(position);
}

int CDictObjectMgr::GetValidAttachmentTypeCount() const {
    return m_pValidAttachmentTypes->GetCount();
}

CKelValidAttachmentType* CDictObjectMgr::GetFirstValidAttTypeAttTypeIDFKRow(
    DWORD attachmentTypeId) {
    return m_pValidAttachmentTypes->GetFirstTypeFKRow(attachmentTypeId);
}

CKelValidAttachmentType* CDictObjectMgr::GetNextValidAttTypeAttTypeIDFKRow() {
    return m_pValidAttachmentTypes->GetNextTypeFKRow();
}

CKelValidAttachmentType* CDictObjectMgr::GetFirstValidAttTypeMetaTableIDFKRow(DWORD metaTableId) {
    return m_pValidAttachmentTypes->GetFirstMetaTableFKRow(metaTableId);
}

CKelValidAttachmentType* CDictObjectMgr::GetNextValidAttTypeMetaTableIDFKRow() {
    return m_pValidAttachmentTypes->GetNextMetaTableFKRow();
}

// ---- attachments ---------------------------------------------------------------------------

DWORD CDictObjectMgr::InsertAttachment(DWORD attachmentTypeId, CString& name, CString& description,
                                       CString& value, DWORD numericAttribute, DWORD& dictObjectId,
                                       BOOL useGivenId) {
    return CreateInTypesDictionary(tessmeta::kDictAttachment, *m_pAttachments, attachmentTypeId,
                                   dictObjectId, useGivenId, [&](DWORD id) {
                                       return m_pAttachments->Insert(id, attachmentTypeId, name,
                                                                     description, value,
                                                                     numericAttribute, 0, 0);
                                   });
}

DWORD CDictObjectMgr::InsertAttachment(DWORD attachmentTypeId, DWORD nameId, DWORD descriptionId,
                                       DWORD valueId, DWORD numericAttribute, DWORD& dictObjectId,
                                       BOOL useGivenId) {
    return CreateInTypesDictionary(tessmeta::kDictAttachment, *m_pAttachments, attachmentTypeId,
                                   dictObjectId, useGivenId, [&](DWORD id) {
                                       return m_pAttachments->Insert(id, attachmentTypeId, nameId,
                                                                     descriptionId, valueId,
                                                                     numericAttribute, 0, 0);
                                   });
}

BOOL CDictObjectMgr::UpdateAttachment(DWORD attachmentId, CString& name, CString& description,
                                      CString& value, DWORD numericAttribute) {
    CKelAttachment* row = m_pAttachments->GetRow(attachmentId);
    if (!row) return FALSE;
    WriteTexts(*m_pAttachments, *row, {&name, &description, &value});
    m_pAttachments->SetNumericAttribute(attachmentId, numericAttribute);
    return TRUE;
}

BOOL CDictObjectMgr::DeleteAttachment(DWORD attachmentId) {
    const CKelAttachment* row = m_pAttachments->GetRow(attachmentId);
    if (!m_pRefs || !row || !m_pRegistry->GetRow(row->Dictionary_Object_ID)) return FALSE;
    m_pRefs->GetBoundDictObjectTable()->DeleteAllDictObjectReferences(row->Dictionary_Object_ID);
    return DeleteItem(*m_pAttachments, attachmentId);
}

CKelAttachment* CDictObjectMgr::GetAttachmentRow(DWORD attachmentId) const {
    return m_pAttachments->GetRow(attachmentId);
}

CKelAttachment* CDictObjectMgr::GetAttachmentDictObjIDFKRow(DWORD dictObjectId) const {
    return m_pAttachments->GetDictObjIDFKRow(dictObjectId);
}

BOOL CDictObjectMgr::GetAttachmentName(DWORD attachmentId, CString& name) const {
    return m_pAttachments->GetName(attachmentId, name);
}

BOOL CDictObjectMgr::GetAttachmentData(DWORD attachmentId, CString& name, CString& description,
                                       CString& value, DWORD& numericAttribute) const {
    const CKelAttachment* row = m_pAttachments->GetRow(attachmentId);
    if (!row) return FALSE;
    ReadTexts(*m_pAttachments, *row, {&name, &description, &value});
    numericAttribute = row->Numeric_Attribute;
    return TRUE;
}

POSITION CDictObjectMgr::GetFirstAttachmentRowPosition() const {
    return m_pAttachments->GetFirstRowPosition();
}

CKelAttachment* CDictObjectMgr::GetNextAttachmentRow(POSITION& position) const {
    return m_pAttachments->GetNextRow(position);
}

int CDictObjectMgr::GetAttachmentCount() const {
    return m_pAttachments->GetCount();
}

CKelAttachment* CDictObjectMgr::GetFirstAttachmentFKRow(DWORD attachmentTypeId) {
    return m_pAttachments->GetFirstTypeFKRow(attachmentTypeId);
}

CKelAttachment* CDictObjectMgr::GetNextAttachmentFKRow() {
    return m_pAttachments->GetNextTypeFKRow();
}

CKelAttachment* CDictObjectMgr::GetAttachmentRowByName(CString& name,
                                                       DWORD attachmentTypeId) const {
    return m_pAttachments->FindFirstByName(name.View(), [&](const CKelAttachment& row) {
        return row.Attachment_Type_ID == attachmentTypeId;
    });
}

BOOL CDictObjectMgr::IsAttachmentValidForType(DWORD attachmentId, DWORD boundMetaTableId) const {
    const CKelAttachment* row = m_pAttachments->GetRow(attachmentId);
    if (!row || !row->Attachment_Type_ID) return FALSE;
    bool valid = false;
    m_pValidAttachmentTypes->ForEachOfType(
        row->Attachment_Type_ID, [&](const CKelValidAttachmentType* type) {
            valid = valid || static_cast<DWORD>(ValidAttTypeToBoundDictObjMetaTableID(
                                 static_cast<int>(type->Meta_Table_ID))) == boundMetaTableId;
        });
    return valid ? TRUE : FALSE;
}

LONG CDictObjectMgr::IsAttachmentUnique(DWORD attachmentTypeId, CString& name, CString& description,
                                        CString& value, DWORD numericAttribute,
                                        bool compareContents) {
    const CKelAttachment* row = GetAttachmentRowByName(name, attachmentTypeId);
    if (!row) return 0;
    if (!compareContents) return -1;
    const CString* const texts[] = {&description, &value};
    const bool same = TextsEqualNoCase(*m_pAttachments, *row, texts) &&
                      row->Numeric_Attribute == numericAttribute;
    return same ? static_cast<LONG>(row->Attachment_ID) : -1;
}

LONG CDictObjectMgr::GetNameForUniqueAttachment(DWORD attachmentTypeId, CString& name,
                                                CString& description, CString& value,
                                                DWORD numericAttribute, bool compareContents) {
    return UniqueName(name, [&] {
        return IsAttachmentUnique(attachmentTypeId, name, description, value, numericAttribute,
                                  compareContents);
    });
}
