// Shared pieces of the data-dictionary tests: a model in memory with its managers,
// and the stored rows of tables as comparable text.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "model/model_file.h"
#include "support/row_values.h"
#include "zmflib.h"

namespace tessmeta::test {

struct SDictFixture {
    std::unique_ptr<CModelFile> model = CModelFile::CreateInMemory();
    CDictObjectMgr& dict = model->GetDictObjectMgr();
    CRefObjectMgr& refs = model->GetRefObjectMgr();
    CGuidMgr& guids = model->GetGuidMgr();
    CNameSpaceMgr& names = model->GetNameSpaceMgr();
    DWORD main = dict.GetDiagramSpecificData_Dictionary_ID();

    // A reference value with one value text; returns its key, its registry id in
    // `item`.
    DWORD RefValue(const char* name, const char* value, DWORD dataDictionary, DWORD* item = nullptr,
                   const char* description = "") {
        CString n(name), d(description), v(value), vd, lo, hi;
        DWORD id = 0;
        const DWORD key =
            dict.InsertRefValue(n, d, v, vd, lo, hi, FALSE, FALSE, dataDictionary, id, FALSE);
        if (item) *item = id;
        return key;
    }
    // IsReferenceValueUnique / GetNameForUniqueReferenceValue for a single value.
    LONG Unique(CString& name, const char* value, DWORD dataDictionary, bool compare = true,
                CDictOverrideMap* overrides = nullptr, bool loop = false,
                const char* description = "") {
        CString d(description), v(value), vd, lo, hi;
        CDictOverrideMap none;
        CDictOverrideMap& map = overrides ? *overrides : none;
        return loop ? dict.GetNameForUniqueReferenceValue(name, d, v, vd, lo, hi, FALSE, FALSE, map,
                                                          dataDictionary, compare)
                    : dict.IsReferenceValueUnique(name, d, v, vd, lo, hi, FALSE, FALSE, map,
                                                  dataDictionary, compare);
    }
};

// Every stored row of the named tables, as text, table by table.
inline std::vector<std::string> StoredRows(CZmfFile& file,
                                           std::initializer_list<const char*> tables) {
    std::vector<std::string> rows;
    for (const char* name : tables) {
        const SZmfTableDesc* desc = zmf::FindTableByName(name);
        CTableBase* table = file.GetTable(name);
        CIteratorBase it(table);
        std::unique_ptr<CDbObjectBase> row(desc->createRow());
        while (it.GetNext(row.get()))
            rows.push_back(std::string(name) + ": " + RowText(*desc, *row));
        file.ReleaseTable(&table, 0);
    }
    return rows;
}

inline constexpr std::initializer_list<const char*> kDictionaryTables = {
    "Data_Dictionary",   "Dictionary_Object_Type", "Dictionary_Object",
    "Reference_Value",   "Dictionary_Object_Link", "Bound_Dictionary_Object",
    "Referenced_Object", "Attachment_Type",        "Valid_Attachment_Type",
    "Attachment",        "Dictionary_Library",     "Dictionary_Trigger",
    "Reusable_Procedure"};

}  // namespace tessmeta::test
