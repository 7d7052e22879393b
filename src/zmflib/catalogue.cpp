#include "zmflib/catalogue.h"

#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "zmflib/rows.h"

namespace {

// Adapts the typed fields of a row to the type-erased sink and source, so that the
// backends need no knowledge of individual row classes.
struct SinkVisitor {
    IZmfColumnSink& sink;
    void operator()(int i, const DWORD& v) const { sink.U32(i, v); }
    void operator()(int i, const CZmfInt& v) const { sink.Int(i, v.GetValue()); }
    void operator()(int i, const CZmfString& v) const { sink.String(i, v.GetValue()); }
    void operator()(int i, const CZmfDateTime& v) const { sink.Date(i, v.GetValue()); }
};

struct SourceVisitor {
    IZmfColumnSource& source;
    void operator()(int i, DWORD& v) const { v = source.U32(i); }
    void operator()(int i, CZmfInt& v) const { v = source.Int(i); }
    void operator()(int i, CZmfString& v) const { source.String(i, v); }
    void operator()(int i, CZmfDateTime& v) const { v = source.Date(i); }
};

}  // namespace

#define ZMF_COLUMN_TYPE_U32 U32
#define ZMF_COLUMN_TYPE_StrId StringId
#define ZMF_COLUMN_TYPE_Int Int
#define ZMF_COLUMN_TYPE_String String
#define ZMF_COLUMN_TYPE_Date Date
#define ZMF_COLUMN_DESC(type, name) {#name, EZmfColumnType::ZMF_COLUMN_TYPE_##type},
#define ZMF_HAS_TECH_KEY_Tech true
#define ZMF_HAS_TECH_KEY_Plain false

#define ZMF_TABLE(Table, number, kind, keyMode, KeyColumn, COLUMNS)                      \
    namespace {                                                                          \
    const SZmfColumnDesc kColumns_##Table[] = {{#KeyColumn, EZmfColumnType::Key},        \
                                               COLUMNS(ZMF_COLUMN_DESC)};                \
    }                                                                                    \
    const SZmfTableDesc& C##Table##Base::Desc() {                                        \
        static const SZmfTableDesc desc{                                                 \
            #Table,                                                                      \
            number,                                                                      \
            kind,                                                                        \
            ZMF_HAS_TECH_KEY_##keyMode,                                                  \
            kColumns_##Table,                                                            \
            []() -> CDbObjectBase* { return new C##Table##Base; },                       \
            [](const CDbObjectBase& row, IZmfColumnSink& sink) {                         \
                static_cast<const C##Table##Base&>(row).VisitColumns(SinkVisitor{sink}); \
            },                                                                           \
            [](CDbObjectBase& row, IZmfColumnSource& source) {                           \
                static_cast<C##Table##Base&>(row).VisitColumns(SourceVisitor{source});   \
            }};                                                                          \
        return desc;                                                                     \
    }
#include "zmflib/catalogue.def"
#undef ZMF_TABLE

namespace zmf {
namespace {

struct SCatalogue {
    std::vector<const SZmfTableDesc*> tables;
    std::unordered_map<std::string, const SZmfTableDesc*> byName;
    std::unordered_map<int, const SZmfTableDesc*> byNumber;

    SCatalogue() {
#define ZMF_TABLE(Table, number, kind, keyMode, KeyColumn, COLUMNS) \
    tables.push_back(&C##Table##Base::Desc());
#include "zmflib/catalogue.def"
#undef ZMF_TABLE
        for (const SZmfTableDesc* t : tables) {
            byName.emplace(t->name, t);
            byNumber.emplace(t->tableNumber, t);
        }
    }
};

const SCatalogue& Catalogue() {
    static const SCatalogue catalogue;
    return catalogue;
}

}  // namespace

std::span<const SZmfTableDesc* const> AllTables() {
    return Catalogue().tables;
}

const SZmfTableDesc* FindTableByName(const char* name) {
    if (!name) return nullptr;
    const auto& map = Catalogue().byName;
    auto it = map.find(name);
    return it == map.end() ? nullptr : it->second;
}

namespace {

class CKeyReader final : public IZmfColumnSink {
  public:
    DWORD key = 0;
    void U32(int index, DWORD value) override {
        if (index == 0) key = value;
    }
    void Int(int, LONG) override {}
    void String(int, const CString&) override {}
    void Date(int, const COleDateTime&) override {}
};

}  // namespace

DWORD KeyOf(const SZmfTableDesc& desc, const CDbObjectBase& row) {
    CKeyReader reader;
    desc.readRow(row, reader);
    return reader.key;
}

bool IsAddedColumn(const SZmfTableDesc& desc, const char* column) {
    struct SAdded {
        const char* table;
        const char* column;
    };
    static constexpr SAdded kAdded[] = {
#define ZMF_TABLE(Table, number, kind, keyMode, KeyColumn, COLUMNS)
#define ZMF_ADDED_COLUMN(Table, Column) {#Table, #Column},
#include "zmflib/catalogue.def"
#undef ZMF_ADDED_COLUMN
#undef ZMF_TABLE
    };
    for (const SAdded& added : kAdded)
        if (std::strcmp(added.table, desc.name) == 0 && std::strcmp(added.column, column) == 0)
            return true;
    return false;
}

const SZmfTableDesc* FindTableByNumber(int tableNumber) {
    const auto& map = Catalogue().byNumber;
    auto it = map.find(tableNumber);
    return it == map.end() ? nullptr : it->second;
}

}  // namespace zmf
