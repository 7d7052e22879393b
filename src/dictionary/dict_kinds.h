// The twelve kinds of dictionary item, by their fixed code and exact name.
//
// A model stores its kinds in the "Dictionary_Object_Type" table under keys of its
// own; only the code and the name are fixed, and a kind is always found by name.
#pragma once

#include "platform/types.h"

namespace tessmeta {

enum EDictObjectKind : DWORD {
    kDictTrigger = 1,
    kDictLibrary = 2,
    kDictProcedure = 3,
    kDictDefault = 4,
    kDictRule = 5,
    kDictUserDatatype = 6,
    kDictDomain = 7,
    kDictReferenceValue = 8,
    kDictAttachmentType = 9,
    kDictValidAttachmentType = 10,
    kDictAttachment = 11,
    kDictObjectLink = 12,
};
inline constexpr DWORD kDictObjectKindCount = 12;

// The exact row name of kind `code`; null for a code outside 1 to 12.
inline const char* DictObjectKindName(DWORD code) {
    static constexpr const char* kNames[kDictObjectKindCount + 1] = {nullptr,
                                                                     "Trigger",
                                                                     "Library",
                                                                     "Procedure",
                                                                     "Default",
                                                                     "Rule",
                                                                     "UserDatatype",
                                                                     "Domain",
                                                                     "Reference Value",
                                                                     "Attachment Type",
                                                                     "Valid Attachment Type",
                                                                     "Attachment",
                                                                     "Dictionary Object Link"};
    return code >= 1 && code <= kDictObjectKindCount ? kNames[code] : nullptr;
}

// The meta-table key under which bound dictionary objects bind reference values,
// triggers and reusable procedures (the bindings whose value overrides decide
// whether an item can be reused).
inline constexpr DWORD kReferenceValueBindingMetaTable = 8;

// The meta-table key that bindings use for the class a valid attachment type names:
// meta tables 16 to 20 share binding key 8; every other id is its own key.
inline constexpr int BoundMetaTableOfValidType(int metaTableId) {
    return metaTableId >= 16 && metaTableId <= 20 ? 8 : metaTableId;
}

// The bit set of statements a trigger fires on.
enum EDictTriggerEvent : DWORD {
    kTriggerOnInsert = 1,
    kTriggerOnUpdate = 2,
    kTriggerOnDelete = 4,
};

}  // namespace tessmeta
