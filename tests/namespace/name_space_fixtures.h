// Helpers of the name-space tests: model files holding chosen rows, what a save
// wrote, and the name space's answers gathered into comparable values.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "namespace/name_space_mgr.h"
#include "support/row_values.h"
#include "zmflib.h"

namespace tessmeta::test {

using SmallRow = std::tuple<DWORD, std::string, LONG>;    // id, text, large flag
using LargeRow = std::pair<DWORD, std::string>;           // id, text
using UsageRow = std::tuple<DWORD, DWORD, DWORD, DWORD>;  // id, object, usage type, string
using TypeRow = std::pair<DWORD, std::string>;            // id, name

struct SStoredRows {
    std::vector<SmallRow> small;
    std::vector<LargeRow> large;
    std::vector<UsageRow> usages;
    std::vector<TypeRow> usageTypes;
};

// Replaces the four name-space tables of `file` with `rows` (size figures = counts).
inline void StoreRows(CZmfFile& file, const SStoredRows& rows) {
    auto fill = [&](const char* name, const auto& list, auto make) {
        CTableBase* table = file.GetEmptyTable(name);
        table->SetSizeEstimate(static_cast<LONG>(list.size()));
        for (const auto& r : list) {
            auto row = make(r);
            table->Insert(&row);
        }
    };
    fill("SmallString", rows.small, [](const SmallRow& r) {
        CSmallStringBase row(std::get<0>(r));
        row.Text = std::get<1>(r).c_str();
        row.Large_Flag = std::get<2>(r);
        return row;
    });
    fill("LargeString", rows.large, [](const LargeRow& r) {
        CLargeStringBase row(r.first);
        row.Text = r.second.c_str();
        return row;
    });
    fill("StringUsage", rows.usages, [](const UsageRow& r) {
        CStringUsageBase row(std::get<0>(r));
        row.Object_ID = std::get<1>(r);
        row.String_Usage_Type_ID = std::get<2>(r);
        row.String_ID = std::get<3>(r);
        return row;
    });
    fill("StringUsageType", rows.usageTypes, [](const TypeRow& r) {
        CStringUsageTypeBase row(r.first);
        row.Name = r.second.c_str();
        return row;
    });
    ASSERT_TRUE(file.Commit()) << file.GetLastError();
}

// The stored rows of the four tables, as comparable values.
inline std::vector<SmallRow> ReadSmall(CZmfFile& file) {
    std::vector<SmallRow> out;
    for (const auto& r : ReadAll<CSmallStringBase>(file, "SmallString"))
        out.emplace_back(r.String_ID, r.Text.GetValue().GetString(), r.Large_Flag);
    return out;
}
inline std::vector<LargeRow> ReadLarge(CZmfFile& file) {
    std::vector<LargeRow> out;
    for (const auto& r : ReadAll<CLargeStringBase>(file, "LargeString"))
        out.emplace_back(r.String_ID, r.Text.GetValue().GetString());
    return out;
}
inline std::vector<UsageRow> ReadUsages(CZmfFile& file) {
    std::vector<UsageRow> out;
    for (const auto& r : ReadAll<CStringUsageBase>(file, "StringUsage"))
        out.emplace_back(r.String_Usage_ID, r.Object_ID, r.String_Usage_Type_ID, r.String_ID);
    return out;
}
inline std::vector<TypeRow> ReadUsageTypes(CZmfFile& file) {
    std::vector<TypeRow> out;
    for (const auto& r : ReadAll<CStringUsageTypeBase>(file, "StringUsageType")) {
        EXPECT_TRUE(r.Description.IsEmpty()) << "second text of " << r.Name;
        out.emplace_back(r.String_Usage_Type_ID, r.Name.GetValue().GetString());
    }
    return out;
}

// A name space over an in-memory file holding `rows`, loaded with Init(usageBuckets,
// stringBuckets, 0, roleIndex, defer).
struct SLoaded {
    std::unique_ptr<CZmfFile> file = CZmfFile::OpenMemory();
    std::unique_ptr<CNameSpaceMgr> ns;

    explicit SLoaded(const SStoredRows& rows = {}, int roleIndex = 0, int defer = 0,
                     unsigned int stringBuckets = 0) {
        StoreRows(*file, rows);
        ns = std::make_unique<CNameSpaceMgr>(file.get());
        ns->Init(0, stringBuckets, 0, roleIndex, defer);
    }
};

inline constexpr const char* kInvalid = "ERROR: String not found in file";

inline std::string TextOf(CNameSpaceMgr& ns, LONG id) {
    CString out;
    ns.GetStringFromNameSpace(out, id);
    return out.GetString();
}

// Every string in iteration order.
inline std::vector<std::pair<LONG, std::string>> AllStrings(const CNameSpaceMgr& ns) {
    std::vector<std::pair<LONG, std::string>> out;
    for (POSITION pos = ns.GetStringStartPosition(); pos;) {
        LONG id = 0;
        CString text;
        ns.GetNextString(pos, id, text);
        out.emplace_back(id, text.GetString());
    }
    return out;
}

// Every usage of `stringId` as (object, usage type), in walk order.
inline std::vector<std::pair<LONG, LONG>> UsagesOf(CNameSpaceMgr& ns, int stringId) {
    std::vector<std::pair<LONG, LONG>> out;
    LONG object = -1, usageType = -1;
    for (int found = ns.GetFirstUsageIdsFromStringId(stringId, object, usageType); found;
         found = ns.GetNextUsageIdsFromStringId(object, usageType))
        out.emplace_back(object, usageType);
    EXPECT_EQ(std::make_pair(object, usageType), std::make_pair(0, 0));
    return out;
}

// The objects that use `stringId` in the role `usageType`, in walk order.
inline std::vector<int> ObjectsUsing(CNameSpaceMgr& ns, int usageType, int stringId) {
    std::vector<int> out;
    for (int o = ns.GetFirstUsageObjectId(usageType, stringId); o; o = ns.GetNextUsageObjectId())
        out.push_back(o);
    return out;
}

}  // namespace tessmeta::test
