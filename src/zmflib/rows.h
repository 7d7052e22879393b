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

#define ZMF_ROW_DECLARE_FIELD(type, name) ZMF_FIELD_TYPE_##type name{};
#define ZMF_ROW_COPY_FIELD(type, name) name = o.name;
#define ZMF_ROW_VISIT_FIELD(type, name) visit(++index, name);

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

#define ZMF_TABLE(Table, number, kind, keyMode, Key, COLUMNS)                               \
    class C##Table##Base : public CDbObjectBase {                                           \
      public:                                                                               \
        DWORD Key = 0;                                                                      \
        COLUMNS(ZMF_ROW_DECLARE_FIELD)                                                      \
                                                                                            \
        C##Table##Base() = default;                                                         \
        explicit C##Table##Base(ULONG key) : Key(key) {}                                    \
        static const SZmfTableDesc& Desc();                                                 \
                                                                                            \
        unsigned int Hash() const override { return Key; }                                  \
        int MatchKey(const CDbObjectBase* other) const override {                           \
            return static_cast<const C##Table##Base*>(other)->Key == Key;                   \
        }                                                                                   \
        void Copy(const CDbObjectBase* other) override {                                    \
            const auto& o = *static_cast<const C##Table##Base*>(other);                     \
            Key = o.Key;                                                                    \
            COLUMNS(ZMF_ROW_COPY_FIELD)                                                     \
        }                                                                                   \
        int Compare(const CDbObjectBase* other) const override {                            \
            const DWORD k = static_cast<const C##Table##Base*>(other)->Key;                 \
            return Key < k ? -1 : (Key > k ? 1 : 0);                                        \
        }                                                                                   \
        ZMF_ROW_TECHKEY_##keyMode(Key)                                                      \
                                                                                            \
            /* Calls visit(index, field) for the key (index 0) and each column in order. */ \
            template <class Visit>                                                          \
            void VisitColumns(Visit&& visit) {                                              \
            int index = 0;                                                                  \
            visit(index, Key);                                                              \
            COLUMNS(ZMF_ROW_VISIT_FIELD)                                                    \
        }                                                                                   \
        template <class Visit>                                                              \
        void VisitColumns(Visit&& visit) const {                                            \
            int index = 0;                                                                  \
            visit(index, Key);                                                              \
            COLUMNS(ZMF_ROW_VISIT_FIELD)                                                    \
        }                                                                                   \
    };
#include "zmflib/catalogue.def"
#undef ZMF_TABLE
