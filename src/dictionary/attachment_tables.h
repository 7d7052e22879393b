// Attachments: user-defined, typed notes of the data dictionary that model objects
// can be bound to. Three tables, each of dictionary items (a registry row plus a
// row here whose Dictionary_Object_ID is the registry id):
//
//   CEnhAttachmentTypeTable ("Attachment_Type"): a category of attachment, with a
//     name, a description and an integer field;
//   CEnhValidAttachmentTypeTable ("Valid_Attachment_Type"): says that the
//     attachments of a type may be bound to objects of one class (Meta_Table_ID),
//     with two attributes; it has no texts;
//   CEnhAttachmentTable ("Attachment"): one value of a type, with a name, a
//     description, a value text and a numeric attribute.
//
// Texts live in the name space, owned by the item's unique object (types
// "Attachment Type", "Valid Attachment Type", "Attachment"). The numbers are stored,
// compared and returned as given.
//
// Walks by foreign key (each one walk at a time, rows in the order they were
// filed): valid types by Attachment_Type_ID and by Meta_Table_ID, attachments by
// Attachment_Type_ID. They are list indexes, filed on first use after a load, so
// deleting every attachment of a type is linear in the rows removed. Attachments are
// also found by their unique-object id.
#pragma once

#include <cstdint>

#include "dictionary/dict_item_table.h"
#include "foundation/enh_indexes.h"
#include "identity/guid_mgr.h"
#include "namespace/name_space_mgr.h"
#include "platform/cstring.h"
#include "zmflib/rows.h"

class CEnhAttachmentTypeTable;
class CEnhValidAttachmentTypeTable;
class CEnhAttachmentTable;

// ---- attachment types ----------------------------------------------------------------

// One attachment type: Attachment_Type_ID (key), Dictionary_Object_ID, Name and
// Description (string ids), Integer_Field, Global_User_ID.
class CKelAttachmentType final
    : public CKelDictItem<CAttachment_TypeBase, CEnhAttachmentTypeTable> {
  public:
    CString GetName() const { return ReadText(0); }
    CString GetDescription() const { return ReadText(1); }
};

struct SAttachmentTypeTraits : CEnhDictItemTraits<CKelAttachmentType> {
    static constexpr std::array kTexts{Text{&Row::Name, "Attachment Type Name"},
                                       Text{&Row::Description, "Attachment Type Description"}};
    static constexpr const char* kObjectType = "Attachment Type";
};

class CEnhAttachmentTypeTable : public CEnhDictItemTable<SAttachmentTypeTraits> {
  public:
    // All pointers borrowed; `names` and `guids` may be null.
    CEnhAttachmentTypeTable(CNameSpaceMgr* names, CIdentityMgr* keys, CGuidMgr* guids,
                            CZmfFile* file)
        : CEnhDictItemTable(names, keys, guids, file) {}

    // Adds a type under key `attachmentTypeId` (0: a new one) for unique object
    // `globalUserId` (0: a new one); the texts are interned for that object, or the
    // string ids re-attached to it. Returns the key.
    ULONG Insert(DWORD dictObjectId, const CString& name, const CString& description,
                 int integerField, DWORD globalUserId, DWORD attachmentTypeId);
    ULONG Insert(DWORD dictObjectId, DWORD nameId, DWORD descriptionId, int integerField,
                 DWORD globalUserId, DWORD attachmentTypeId);
    // 0 for an unknown key.
    int SetIntegerField(ULONG attachmentTypeId, int integerField);
};

// ---- valid attachment types ------------------------------------------------------------

// One valid attachment type: Valid_Attachment_Type_ID (key), Dictionary_Object_ID,
// Meta_Table_ID, Attachment_Type_ID, Attribute_1, Attribute_2, Global_User_ID.
class CKelValidAttachmentType final
    : public CKelDictItem<CValid_Attachment_TypeBase, CEnhValidAttachmentTypeTable> {
  private:
    friend class CEnhValidAttachmentTypeTable;
    SEnhListLink m_typeLink;       // among the valid types of its attachment type
    SEnhListLink m_metaTableLink;  // among the valid types of its meta table
};

struct SValidAttachmentTypeTraits : CEnhDictItemTraits<CKelValidAttachmentType> {
    static constexpr const char* kObjectType = "Valid Attachment Type";
    static constexpr bool kNamed = false;
};

class CEnhValidAttachmentTypeTable : public CEnhDictItemTable<SValidAttachmentTypeTraits> {
  public:
    // All pointers borrowed; `guids` may be null.
    CEnhValidAttachmentTypeTable(CIdentityMgr* keys, CGuidMgr* guids, CZmfFile* file)
        : CEnhDictItemTable(nullptr, keys, guids, file), m_byType(this), m_byMetaTable(this) {}

    // Adds a valid type under key `validTypeId` (0: a new one) for unique object
    // `globalUserId` (0: a new one). Returns the key.
    ULONG Insert(DWORD dictObjectId, DWORD metaTableId, DWORD attachmentTypeId,
                 DWORD firstAttribute, DWORD secondAttribute, DWORD globalUserId,
                 DWORD validTypeId);
    // 0 for an unknown key.
    int SetAttributes(ULONG validTypeId, DWORD firstAttribute, DWORD secondAttribute);

    // The valid types of an attachment type / of a meta table.
    CKelValidAttachmentType* GetFirstTypeFKRow(DWORD attachmentTypeId) {
        return m_byType.GetFirst(attachmentTypeId);
    }
    CKelValidAttachmentType* GetNextTypeFKRow() { return m_byType.GetNext(); }
    CKelValidAttachmentType* GetFirstMetaTableFKRow(DWORD metaTableId) {
        return m_byMetaTable.GetFirst(metaTableId);
    }
    CKelValidAttachmentType* GetNextMetaTableFKRow() { return m_byMetaTable.GetNext(); }
    // Calls f(row) for each valid type of an attachment type without disturbing a
    // walk; f must not add or remove rows.
    template <class F>
    void ForEachOfType(DWORD attachmentTypeId, F&& f) {
        m_byType.ForEach(attachmentTypeId, std::forward<F>(f));
    }

  protected:
    void AddToExtraIndexes(CKelValidAttachmentType* row) override;
    void RemoveFromExtraIndexes(CKelValidAttachmentType* row) override;
    void SizeExtraIndexes(UINT bucketCount) override;

  private:
    static std::int64_t TypeOf(const CKelValidAttachmentType& row) {
        return row.Attachment_Type_ID;
    }
    static std::int64_t MetaTableOf(const CKelValidAttachmentType& row) {
        return row.Meta_Table_ID;
    }

    CEnhListIndex<CKelValidAttachmentType, &TypeOf, &CKelValidAttachmentType::m_typeLink> m_byType;
    CEnhListIndex<CKelValidAttachmentType, &MetaTableOf, &CKelValidAttachmentType::m_metaTableLink>
        m_byMetaTable;
};

// ---- attachments ---------------------------------------------------------------------

// One attachment: Attachment_ID (key), Dictionary_Object_ID, Attachment_Type_ID,
// Name, Description and Value (string ids), Numeric_Attribute, Global_User_ID.
class CKelAttachment final : public CKelDictItem<CAttachmentBase, CEnhAttachmentTable> {
  public:
    CString GetName() const { return ReadText(0); }
    CString GetDescription() const { return ReadText(1); }
    CString GetValue() const { return ReadText(2); }

  private:
    friend class CEnhAttachmentTable;
    SEnhListLink m_typeLink;      // among the attachments of its type
    SEnhListLink m_globalIdLink;  // among the attachments of its unique object
};

struct SAttachmentTraits : CEnhDictItemTraits<CKelAttachment> {
    static constexpr std::array kTexts{Text{&Row::Name, "Attachment Name"},
                                       Text{&Row::Description, "Attachment Description"},
                                       Text{&Row::Value, "Attachment Value Default"}};
    static constexpr const char* kObjectType = "Attachment";
};

class CEnhAttachmentTable : public CEnhDictItemTable<SAttachmentTraits> {
  public:
    // All pointers borrowed; `names` and `guids` may be null.
    CEnhAttachmentTable(CNameSpaceMgr* names, CIdentityMgr* keys, CGuidMgr* guids, CZmfFile* file)
        : CEnhDictItemTable(names, keys, guids, file), m_byType(this), m_byGlobalId(this) {}

    // Adds an attachment under key `attachmentId` (0: a new one) for unique object
    // `globalUserId` (0: a new one); texts interned for that object, or string ids
    // re-attached to it. Returns the key.
    ULONG Insert(DWORD dictObjectId, DWORD attachmentTypeId, const CString& name,
                 const CString& description, const CString& value, DWORD numericAttribute,
                 DWORD globalUserId, DWORD attachmentId);
    ULONG Insert(DWORD dictObjectId, DWORD attachmentTypeId, DWORD nameId, DWORD descriptionId,
                 DWORD valueId, DWORD numericAttribute, DWORD globalUserId, DWORD attachmentId);
    // 0 for an unknown key.
    int SetNumericAttribute(ULONG attachmentId, DWORD numericAttribute);

    // The attachments of a type.
    CKelAttachment* GetFirstTypeFKRow(DWORD attachmentTypeId) {
        return m_byType.GetFirst(attachmentTypeId);
    }
    CKelAttachment* GetNextTypeFKRow() { return m_byType.GetNext(); }
    template <class F>
    void ForEachOfType(DWORD attachmentTypeId, F&& f) {
        m_byType.ForEach(attachmentTypeId, std::forward<F>(f));
    }
    // The first attachment filed under unique object `globalUserId`, or null.
    CKelAttachment* GetRowByGlobalId(DWORD globalUserId) {
        CKelAttachment* first = nullptr;
        m_byGlobalId.ForEach(globalUserId, [&](CKelAttachment* row) {
            if (!first) first = row;
        });
        return first;
    }

  protected:
    void AddToExtraIndexes(CKelAttachment* row) override;
    void RemoveFromExtraIndexes(CKelAttachment* row) override;
    void SizeExtraIndexes(UINT bucketCount) override;

  private:
    static std::int64_t TypeOf(const CKelAttachment& row) { return row.Attachment_Type_ID; }
    static std::int64_t GlobalIdOf(const CKelAttachment& row) { return row.Global_User_ID; }

    CEnhListIndex<CKelAttachment, &TypeOf, &CKelAttachment::m_typeLink> m_byType;
    CEnhListIndex<CKelAttachment, &GlobalIdOf, &CKelAttachment::m_globalIdLink> m_byGlobalId;
};
