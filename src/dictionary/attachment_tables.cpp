#include "dictionary/attachment_tables.h"

#include <memory>

// ---- attachment types ----------------------------------------------------------------

namespace {

std::unique_ptr<CKelAttachmentType> NewType(DWORD dictObjectId, int integerField,
                                            DWORD globalUserId) {
    auto row = std::make_unique<CKelAttachmentType>();
    row->Dictionary_Object_ID = dictObjectId;
    row->Integer_Field = integerField;
    row->Global_User_ID = globalUserId;
    return row;
}

std::unique_ptr<CKelAttachment> NewAttachment(DWORD dictObjectId, DWORD attachmentTypeId,
                                              DWORD numericAttribute, DWORD globalUserId) {
    auto row = std::make_unique<CKelAttachment>();
    row->Dictionary_Object_ID = dictObjectId;
    row->Attachment_Type_ID = attachmentTypeId;
    row->Numeric_Attribute = numericAttribute;
    row->Global_User_ID = globalUserId;
    return row;
}

}  // namespace

ULONG CEnhAttachmentTypeTable::Insert(DWORD dictObjectId, const CString& name,
                                      const CString& description, int integerField,
                                      DWORD globalUserId, DWORD attachmentTypeId) {
    return InsertTexts(NewType(dictObjectId, integerField, globalUserId), attachmentTypeId, name,
                       description);
}

ULONG CEnhAttachmentTypeTable::Insert(DWORD dictObjectId, DWORD nameId, DWORD descriptionId,
                                      int integerField, DWORD globalUserId,
                                      DWORD attachmentTypeId) {
    auto row = NewType(dictObjectId, integerField, globalUserId);
    row->Name = nameId;
    row->Description = descriptionId;
    return InsertIds(std::move(row), attachmentTypeId);
}

int CEnhAttachmentTypeTable::SetIntegerField(ULONG attachmentTypeId, int integerField) {
    return UpdateRow(attachmentTypeId,
                     [&](CKelAttachmentType& row) { row.Integer_Field = integerField; });
}

// ---- valid attachment types ------------------------------------------------------------

ULONG CEnhValidAttachmentTypeTable::Insert(DWORD dictObjectId, DWORD metaTableId,
                                           DWORD attachmentTypeId, DWORD firstAttribute,
                                           DWORD secondAttribute, DWORD globalUserId,
                                           DWORD validTypeId) {
    auto row = std::make_unique<CKelValidAttachmentType>();
    row->Dictionary_Object_ID = dictObjectId;
    row->Meta_Table_ID = metaTableId;
    row->Attachment_Type_ID = attachmentTypeId;
    row->Attribute_1 = firstAttribute;
    row->Attribute_2 = secondAttribute;
    row->Global_User_ID = globalUserId;
    return InsertIds(std::move(row), validTypeId);
}

int CEnhValidAttachmentTypeTable::SetAttributes(ULONG validTypeId, DWORD firstAttribute,
                                                DWORD secondAttribute) {
    return UpdateRow(validTypeId, [&](CKelValidAttachmentType& row) {
        row.Attribute_1 = firstAttribute;
        row.Attribute_2 = secondAttribute;
    });
}

void CEnhValidAttachmentTypeTable::AddToExtraIndexes(CKelValidAttachmentType* row) {
    CEnhDictItemTable::AddToExtraIndexes(row);
    m_byType.Add(row);
    m_byMetaTable.Add(row);
}

void CEnhValidAttachmentTypeTable::RemoveFromExtraIndexes(CKelValidAttachmentType* row) {
    CEnhDictItemTable::RemoveFromExtraIndexes(row);
    m_byType.Remove(row);
    m_byMetaTable.Remove(row);
}

void CEnhValidAttachmentTypeTable::SizeExtraIndexes(UINT bucketCount) {
    CEnhDictItemTable::SizeExtraIndexes(bucketCount);
    m_byType.MarkLoading();
    m_byMetaTable.MarkLoading();
}

// ---- attachments ---------------------------------------------------------------------

ULONG CEnhAttachmentTable::Insert(DWORD dictObjectId, DWORD attachmentTypeId, const CString& name,
                                  const CString& description, const CString& value,
                                  DWORD numericAttribute, DWORD globalUserId, DWORD attachmentId) {
    return InsertTexts(
        NewAttachment(dictObjectId, attachmentTypeId, numericAttribute, globalUserId), attachmentId,
        name, description, value);
}

ULONG CEnhAttachmentTable::Insert(DWORD dictObjectId, DWORD attachmentTypeId, DWORD nameId,
                                  DWORD descriptionId, DWORD valueId, DWORD numericAttribute,
                                  DWORD globalUserId, DWORD attachmentId) {
    auto row = NewAttachment(dictObjectId, attachmentTypeId, numericAttribute, globalUserId);
    row->Name = nameId;
    row->Description = descriptionId;
    row->Value = valueId;
    return InsertIds(std::move(row), attachmentId);
}

int CEnhAttachmentTable::SetNumericAttribute(ULONG attachmentId, DWORD numericAttribute) {
    return UpdateRow(attachmentId,
                     [&](CKelAttachment& row) { row.Numeric_Attribute = numericAttribute; });
}

void CEnhAttachmentTable::AddToExtraIndexes(CKelAttachment* row) {
    CEnhDictItemTable::AddToExtraIndexes(row);
    m_byType.Add(row);
    m_byGlobalId.Add(row);
}

void CEnhAttachmentTable::RemoveFromExtraIndexes(CKelAttachment* row) {
    CEnhDictItemTable::RemoveFromExtraIndexes(row);
    m_byType.Remove(row);
    m_byGlobalId.Remove(row);
}

void CEnhAttachmentTable::SizeExtraIndexes(UINT bucketCount) {
    CEnhDictItemTable::SizeExtraIndexes(bucketCount);
    m_byType.MarkLoading();
    m_byGlobalId.MarkLoading();
}
