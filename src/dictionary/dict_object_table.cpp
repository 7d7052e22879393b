#include "dictionary/dict_object_table.h"

#include <memory>

#include "dictionary/dict_kinds.h"

ULONG CEnhDictObjectTypeTable::Insert(const char* name, DWORD code) {
    auto row = std::make_unique<CKelDictObjectType>();
    row->Name = name;
    row->Kind_Code = code;
    return InsertIds(std::move(row), 0);
}

int CEnhDictObjectTypeTable::CompleteKinds() {
    int added = 0;
    for (DWORD code = 1; code <= tessmeta::kDictObjectKindCount; ++code) {
        const char* name = tessmeta::DictObjectKindName(code);
        if (!GetRowByName(name)) {
            Insert(name, code);
            ++added;
        }
    }
    return added;
}
