// Row classes of the record store, one per table of the catalogue:
// C<Table>Base with the key and the columns as public fields named as in the
// catalogue, a key-probe constructor (only the key set, for CTableBase::Get), and
// the key operations of CDbObjectBase.
#pragma once

#include "zmflib/catalogue.h"
#include "zmflib/db_object.h"
#include "zmflib/fields.h"

#define ZMF_FIELD_TYPE_U32 DWORD
#define ZMF_FIELD_TYPE_StrId DWORD
#define ZMF_FIELD_TYPE_Int CZmfInt
#define ZMF_FIELD_TYPE_String CZmfString
#define ZMF_FIELD_TYPE_Date CZmfDateTime

// Per-column code of a row class, by selection: `All` generates every column;
// `NoText` leaves the text columns out (an in-memory row that keeps its texts in
// another form).
#define ZMF_ROW_DECLARE_FIELD(type, name) ZMF_FIELD_TYPE_##type name{};
#define ZMF_ROW_COPY_FIELD(type, name) name = o.name;
#define ZMF_ROW_STORE_FIELD(type, name) o.name = name;
#define ZMF_ROW_VISIT_FIELD(type, name) visit(++index, name);

#define ZMF_ROW_COPY_All ZMF_ROW_COPY_FIELD
#define ZMF_ROW_STORE_All ZMF_ROW_STORE_FIELD

#define ZMF_ROW_UNLESS_TEXT_U32(kept, skipped) kept
#define ZMF_ROW_UNLESS_TEXT_StrId(kept, skipped) kept
#define ZMF_ROW_UNLESS_TEXT_Int(kept, skipped) kept
#define ZMF_ROW_UNLESS_TEXT_Date(kept, skipped) kept
#define ZMF_ROW_UNLESS_TEXT_String(kept, skipped) skipped
#define ZMF_ROW_COPY_NoText(type, name) ZMF_ROW_UNLESS_TEXT_##type(ZMF_ROW_COPY_FIELD(type, name), )
#define ZMF_ROW_STORE_NoText(type, name) \
    ZMF_ROW_UNLESS_TEXT_##type(ZMF_ROW_STORE_FIELD(type, name), )

// Fields are declared in two passes, the 4-byte columns first (right after the
// 4-byte key) and then the 8-byte ones (texts, dates), so that no column leaves a
// gap before a wider one. Only the memory layout follows this order: the column
// order (VisitColumns, the record store) is the catalogue's.
#define ZMF_ROW_WIDTH_U32(narrow, wide) narrow
#define ZMF_ROW_WIDTH_StrId(narrow, wide) narrow
#define ZMF_ROW_WIDTH_Int(narrow, wide) narrow
#define ZMF_ROW_WIDTH_Date(narrow, wide) wide
#define ZMF_ROW_WIDTH_String(narrow, wide) wide
#define ZMF_ROW_DECLARE_NARROW(type, name) ZMF_ROW_WIDTH_##type(ZMF_ROW_DECLARE_FIELD(type, name), )
#define ZMF_ROW_DECLARE_WIDE_All(type, name) \
    ZMF_ROW_WIDTH_##type(, ZMF_ROW_DECLARE_FIELD(type, name))
#define ZMF_ROW_DECLARE_WIDE_NoText(type, name) \
    ZMF_ROW_UNLESS_TEXT_##type(ZMF_ROW_DECLARE_WIDE_All(type, name), )

// What only the stored row has: its table description and the column visit the
// description's accessors are built on. A selection is rendered or written through
// a stored row (StoreColumns).
#define ZMF_ROW_STORED_All(Key, COLUMNS)                                            \
    static const SZmfTableDesc& Desc();                                             \
    /* Calls visit(index, field) for the key (index 0) and each column in order. */ \
    template <class Visit>                                                          \
    void VisitColumns(Visit&& visit) {                                              \
        int index = 0;                                                              \
        visit(index, Key);                                                          \
        COLUMNS(ZMF_ROW_VISIT_FIELD)                                                \
    }                                                                               \
    template <class Visit>                                                          \
    void VisitColumns(Visit&& visit) const {                                        \
        int index = 0;                                                              \
        visit(index, Key);                                                          \
        COLUMNS(ZMF_ROW_VISIT_FIELD)                                                \
    }
#define ZMF_ROW_STORED_NoText(Key, COLUMNS)

#define ZMF_ROW_TECHKEY_Tech(Key)         \
    ULONG GetTechKey() const override {   \
        return Key;                       \
    }                                     \
    void SetTechKey(ULONG key) override { \
        Key = key;                        \
    }                                     \
    int HasTechKey() const override {     \
        return 1;                         \
    }
#define ZMF_ROW_TECHKEY_Plain(Key)

// A row class named `Class` with the columns selection `Sel` keeps.
// AssignColumns / StoreColumns copy the kept columns from / to a row of another
// class of the same table (the stored row and a selection of it). Any further
// arguments declare 4-byte members that are no columns (state an in-memory row
// keeps beside them); they go among the 4-byte columns, where they may fill the
// word that an odd count of those leaves before the wider ones.
#define ZMF_ROW_CLASS(Class, keyMode, Key, COLUMNS, Sel, ...)      \
    class Class : public CDbObjectBase {                           \
      public:                                                      \
        DWORD Key = 0;                                             \
        COLUMNS(ZMF_ROW_DECLARE_NARROW)                            \
        __VA_ARGS__                                                \
        COLUMNS(ZMF_ROW_DECLARE_WIDE_##Sel)                        \
                                                                   \
        Class() = default;                                         \
        explicit Class(ULONG key) : Key(key) {}                    \
        ZMF_ROW_STORED_##Sel(Key, COLUMNS)                         \
                                                                   \
            unsigned int Hash() const override {                   \
            return Key;                                            \
        }                                                          \
        int MatchKey(const CDbObjectBase* other) const override {  \
            return static_cast<const Class*>(other)->Key == Key;   \
        }                                                          \
        void Copy(const CDbObjectBase* other) override {           \
            AssignColumns(*static_cast<const Class*>(other));      \
        }                                                          \
        int Compare(const CDbObjectBase* other) const override {   \
            const DWORD k = static_cast<const Class*>(other)->Key; \
            return Key < k ? -1 : (Key > k ? 1 : 0);               \
        }                                                          \
        ZMF_ROW_TECHKEY_##keyMode(Key)                             \
                                                                   \
            template <class Other>                                 \
            void AssignColumns(const Other& o) {                   \
            Key = o.Key;                                           \
            COLUMNS(ZMF_ROW_COPY_##Sel)                            \
        }                                                          \
        template <class Other>                                     \
        void StoreColumns(Other& o) const {                        \
            o.Key = Key;                                           \
            COLUMNS(ZMF_ROW_STORE_##Sel)                           \
        }                                                          \
    };

#define ZMF_TABLE(Table, number, kind, keyMode, Key, COLUMNS) \
    ZMF_ROW_CLASS(C##Table##Base, keyMode, Key, COLUMNS, All)
#include "zmflib/catalogue.def"
#undef ZMF_TABLE
