// The schema code objects of a model: storage objects, procedures, database
// packages, database triggers and templated procedures, one table each.
//
// Each row is a unique object owned by a model (Model_ID, the foreign key: walk a
// model's objects with GetFirstFKRow / GetNextFKRow) whose texts live in the name
// space: name, owner, description and value (a package has a header and a body
// instead of one value). Everything else is the shared table pattern
// (foundation/enh_table.h): both insert forms and Update from CEnhTextTable,
// Delete (texts and unique object go too), DeleteAllFKRows, GetRow, list walks,
// Save. Templated procedures record their texts in the roles of procedures.
#pragma once

#include <array>

#include "foundation/enh_table.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "zmflib/rows.h"

// The text accessors by column name, taking a key or a row: Get<Column>(at, out)
// and Set<Column>(at, text), with the results of GetText and SetText.
template <class Traits>
class CEnhCodeObjectTable : public CEnhTextTable<Traits> {
  public:
    using CEnhTextTable<Traits>::CEnhTextTable;

    template <class At>
    int GetName(At at, CString& out) const {
        return this->GetText(at, 0, out);
    }
    template <class At>
    int SetName(At at, const CString& text) {
        return this->SetText(at, 0, text);
    }
    template <class At>
    int GetOwner(At at, CString& out) const {
        return this->GetText(at, 1, out);
    }
    template <class At>
    int SetOwner(At at, const CString& text) {
        return this->SetText(at, 1, text);
    }
    template <class At>
    int GetDescription(At at, CString& out) const {
        return this->GetText(at, 2, out);
    }
    template <class At>
    int SetDescription(At at, const CString& text) {
        return this->SetText(at, 2, text);
    }
    // The fourth text: the value, or a package's header.
    template <class At>
    int GetValue(At at, CString& out) const {
        return this->GetText(at, 3, out);
    }
    template <class At>
    int SetValue(At at, const CString& text) {
        return this->SetText(at, 3, text);
    }
};

class CEnhStorageObjectTable;
class CKelStorageObject final : public CEnhRow<CStorage_ObjectBase, CEnhStorageObjectTable> {};
struct SStorageObjectTraits : CEnhTableTraits<CKelStorageObject> {
    static constexpr DWORD Row::*kForeignKey = &Row::Model_ID;
    static constexpr std::array kTexts{Text{&Row::Name, "Storage Object Name"},
                                       Text{&Row::Owner, "Storage Object Owner"},
                                       Text{&Row::Description, "Storage Object Description"},
                                       Text{&Row::Value, "Storage Object Value"}};
    static constexpr const char* kObjectType = "Storage Object";
};
class CEnhStorageObjectTable : public CEnhCodeObjectTable<SStorageObjectTraits> {
  public:
    using CEnhCodeObjectTable::CEnhCodeObjectTable;
};

class CEnhProcTable;
class CKelProc final : public CEnhRow<CProcBase, CEnhProcTable> {};
struct SProcTraits : CEnhTableTraits<CKelProc> {
    static constexpr DWORD Row::*kForeignKey = &Row::Model_ID;
    static constexpr std::array kTexts{
        Text{&Row::Name, "Proc Name"}, Text{&Row::Owner, "Proc Owner"},
        Text{&Row::Description, "Proc Description"}, Text{&Row::Value, "Proc Value"}};
    static constexpr const char* kObjectType = "Procedure";
};
class CEnhProcTable : public CEnhCodeObjectTable<SProcTraits> {
  public:
    using CEnhCodeObjectTable::CEnhCodeObjectTable;
};

class CEnhDbTriggerTable;
class CKelDbTrigger final : public CEnhRow<CDbTriggerBase, CEnhDbTriggerTable> {};
struct SDbTriggerTraits : CEnhTableTraits<CKelDbTrigger> {
    static constexpr DWORD Row::*kForeignKey = &Row::Model_ID;
    static constexpr std::array kTexts{
        Text{&Row::Name, "DbTrigger Name"}, Text{&Row::Owner, "DbTrigger Owner"},
        Text{&Row::Description, "DbTrigger Description"}, Text{&Row::Value, "DbTrigger Value"}};
    static constexpr const char* kObjectType = "Trigger";
};
class CEnhDbTriggerTable : public CEnhCodeObjectTable<SDbTriggerTraits> {
  public:
    using CEnhCodeObjectTable::CEnhCodeObjectTable;
};

class CEnhDbPackageTable;
class CKelDbPackage final : public CEnhRow<CDbPackageBase, CEnhDbPackageTable> {};
struct SDbPackageTraits : CEnhTableTraits<CKelDbPackage> {
    static constexpr DWORD Row::*kForeignKey = &Row::Model_ID;
    static constexpr std::array kTexts{Text{&Row::Name, "DbPackage Name"},
                                       Text{&Row::Owner, "DbPackage Owner"},
                                       Text{&Row::Description, "DbPackage Description"},
                                       Text{&Row::Header_Value, "DbPackage Header Value"},
                                       Text{&Row::Body_Value, "DbPackage Body Value"}};
    static constexpr const char* kObjectType = "Package";
};
class CEnhDbPackageTable : public CEnhCodeObjectTable<SDbPackageTraits> {
  public:
    using CEnhCodeObjectTable::CEnhCodeObjectTable;
    template <class At>
    int GetHeaderValue(At at, CString& out) const {
        return GetText(at, 3, out);
    }
    template <class At>
    int SetHeaderValue(At at, const CString& text) {
        return SetText(at, 3, text);
    }
    template <class At>
    int GetBodyValue(At at, CString& out) const {
        return GetText(at, 4, out);
    }
    template <class At>
    int SetBodyValue(At at, const CString& text) {
        return SetText(at, 4, text);
    }
};

class CEnhTemplatedProcTable;
class CKelTemplatedProc final : public CEnhRow<CTemplated_ProcBase, CEnhTemplatedProcTable> {};
struct STemplatedProcTraits : CEnhTableTraits<CKelTemplatedProc> {
    static constexpr DWORD Row::*kForeignKey = &Row::Model_ID;
    static constexpr std::array kTexts{
        Text{&Row::Name, "Proc Name"}, Text{&Row::Owner, "Proc Owner"},
        Text{&Row::Description, "Proc Description"}, Text{&Row::Value, "Proc Value"}};
    static constexpr const char* kObjectType = "Templated Procedure";
};
class CEnhTemplatedProcTable : public CEnhCodeObjectTable<STemplatedProcTraits> {
  public:
    using CEnhCodeObjectTable::CEnhCodeObjectTable;
};
