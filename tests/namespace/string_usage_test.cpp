// String usages and usage types: an object's string in a role, the walks by string
// and by role, in-place fixes, the built-in usage types and their cached ids, and
// deferred loading against a full load.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "name_space_fixtures.h"
#include "namespace/usage_types.h"

using namespace tessmeta::test;

namespace {

using Usages = std::vector<std::pair<LONG, LONG>>;
using Objects = std::vector<int>;

TEST(StringUsage, SetReplaceAndRemove) {
    SLoaded m;
    CNameSpaceMgr& ns = *m.ns;
    const int name = ns.GetEntityNameUsageId();
    const int customer = ns.AddString("Customer", 100, name);
    EXPECT_EQ(ns.GetStringIdFromObjectAndUsageTypeIds(100, name), customer);
    EXPECT_EQ(ns.GetStringIdFromObjectAndUsageTypeIds(100, name + 1), 0);

    // A second text for the role replaces the first: one usage, the new string.
    const int client = ns.UpdateString(CString("Client"), 100, name);
    EXPECT_NE(client, customer);
    EXPECT_EQ(ns.GetStringUsageTable().GetCount(), 1);
    EXPECT_TRUE(UsagesOf(ns, customer).empty());
    EXPECT_EQ(UsagesOf(ns, client), (Usages{{100, name}}));
    // The empty text removes the usage; the string stays.
    EXPECT_EQ(ns.AddOrUpdateString("", 100, name), 0);
    EXPECT_EQ(ns.GetStringIdFromObjectAndUsageTypeIds(100, name), 0);
    EXPECT_EQ(ns.GetStringIdFromString("Client"), static_cast<ULONG>(client));
    EXPECT_EQ(ns.DeleteString(100, name), 0);

    // By string id: set, move, remove with 0; the result is always 0.
    EXPECT_EQ(ns.AddString(client, 200, name), 0);
    EXPECT_EQ(ns.UpdateString(customer, 200, name), 0);
    EXPECT_EQ(ns.GetStringIdFromObjectAndUsageTypeIds(200, name), customer);
    EXPECT_EQ(ns.AddOrUpdateString(0, 200, name), 0);
    EXPECT_EQ(ns.GetStringIdFromObjectAndUsageTypeIds(200, name), 0);

    // Roles are separate; DeleteString removes one and says so.
    EXPECT_EQ(ns.AddOrUpdateString(CString("Customer"), 300, name), customer);
    EXPECT_NE(ns.AddString("CUSTOMER", 300, ns.GetTableNameUsageId()), customer);
    EXPECT_EQ(ns.DeleteString(300, name), 1);
    EXPECT_EQ(ns.DeleteString(300, name), 0);
    EXPECT_NE(ns.GetStringIdFromObjectAndUsageTypeIds(300, ns.GetTableNameUsageId()), 0);
    // A constant string, or UpdateNameSpace without recording, makes no usage.
    const int constant = ns.AddConstString("constant");
    EXPECT_EQ(ns.UpdateNameSpace(400, CString("constant"), name, 0), constant);
    EXPECT_EQ(ns.GetStringIdFromObjectAndUsageTypeIds(400, name), 0);
    EXPECT_EQ(ns.UpdateNameSpace(400, CString("constant"), name, 1), constant);
    EXPECT_EQ(UsagesOf(ns, constant), (Usages{{400, name}}));

    // Usage ids come from the table's own counter: 1 to 3 were used and removed.
    std::vector<ULONG> keys;
    for (POSITION pos = ns.GetStringUsageTable().GetFirstRowPosition(); pos;)
        keys.push_back(ns.GetStringUsageTable().GetNextRow(pos)->GetTechKey());
    EXPECT_EQ(keys, (std::vector<ULONG>{4, 5}));
}

TEST(StringUsage, WalksByStringAndByRoleAndFixesInPlace) {
    for (int roleIndex : {1, 0}) {
        SCOPED_TRACE(roleIndex ? "with the role tree" : "without the role tree");
        SLoaded m({}, roleIndex);
        CNameSpaceMgr& ns = *m.ns;
        EXPECT_EQ(ns.GetStringUsageTable().HasRoleIndex(), roleIndex == 1);
        const int t = ns.GetColumnNameUsageId(), u = ns.GetAttributeNameUsageId();
        const int s = ns.AddString("ID", 1, t);
        ns.AddString("ID", 2, t);
        ns.AddString("ID", 3, t);
        ns.AddString("ID", 4, u);
        const int other = ns.AddString("KEY", 5, t);
        EXPECT_EQ(UsagesOf(ns, s), (Usages{{1, t}, {2, t}, {3, t}, {4, u}}));
        EXPECT_EQ(ObjectsUsing(ns, t, s), (Objects{1, 2, 3}));
        EXPECT_EQ(ObjectsUsing(ns, u, s), (Objects{4}));
        EXPECT_TRUE(ObjectsUsing(ns, u, other).empty());
        EXPECT_TRUE(ObjectsUsing(ns, t, -s).empty());

        // A usage whose string changes goes to the end of its new string's usages;
        // setting the string it already has moves nothing.
        ns.AddString("KEY", 1, t);
        ns.AddString("ID", 1, t);
        ns.AddString("ID", 2, t);
        EXPECT_EQ(UsagesOf(ns, s), (Usages{{2, t}, {3, t}, {4, u}, {1, t}}));
        EXPECT_EQ(ObjectsUsing(ns, t, s), (Objects{2, 3, 1}));
        EXPECT_EQ(ObjectsUsing(ns, t, other), (Objects{5}));
        ns.DeleteString(3, t);
        EXPECT_EQ(ObjectsUsing(ns, t, s), (Objects{2, 1}));
        if (!roleIndex) continue;

        // A fix rewrites a usage in place, without re-indexing it.
        const int pn = ns.GetProcNameUsageId(), po = ns.GetProcOwnerUsageId();
        const int proc = ns.AddString("proc_a", 10, pn);
        EXPECT_EQ(ns.FixStringUsageUnqObjId(99, pn, 11, po), 0);
        EXPECT_EQ(ns.FixStringUsageUnqObjId(10, pn, 11, po), 1);
        // Found under neither pair any more, but still filed by string, and in the role
        // tree under the old role.
        EXPECT_EQ(ns.GetStringIdFromObjectAndUsageTypeIds(10, pn), 0);
        EXPECT_EQ(ns.GetStringIdFromObjectAndUsageTypeIds(11, po), 0);
        EXPECT_EQ(ns.DeleteString(11, po), 0);
        EXPECT_EQ(UsagesOf(ns, proc), (Usages{{11, po}}));
        EXPECT_EQ(ObjectsUsing(ns, pn, proc), (Objects{11}));
        EXPECT_TRUE(ObjectsUsing(ns, po, proc).empty());
    }
}

TEST(StringUsageTypes, BuiltInListIdsAndAccessors) {
    SLoaded fresh;
    CNameSpaceMgr& ns = *fresh.ns;
    ns.Save(fresh.file.get(), 0, 0);
    const auto stored = ReadUsageTypes(*fresh.file);
    ASSERT_EQ(stored.size(), 121u);
    for (int i = 0; i < 121; ++i)
        EXPECT_EQ(stored[static_cast<size_t>(i)],
                  TypeRow(static_cast<DWORD>(i + 1), tessmeta::kStringUsageTypeNames[i]));
    EXPECT_EQ(ns.GetDefaultConstraintNameUsageId(), 121);
    EXPECT_EQ(ns.GetStringUsageTypeId(CString("Column Name")), 15);
    EXPECT_EQ(ns.GetStringUsageTypeId("entity name"), 0);

    // An older file keeps its ids; missing names follow its largest id, in order.
    SLoaded older({{}, {}, {}, {{50, "Custom Role"}, {7, "Entity Name"}}});
    EXPECT_EQ(older.ns->GetEntityNameUsageId(), 7);
    EXPECT_EQ(older.ns->GetStringUsageTypeId("Custom Role"), 50);
    EXPECT_EQ(older.ns->GetTableNameUsageId(), 51);
    EXPECT_EQ(older.ns->GetDefaultConstraintNameUsageId(), 170);
}

// ---- deferred loading ------------------------------------------------------------

SStoredRows RandomModel(std::mt19937& rng, int strings, int usages) {
    SStoredRows rows;
    for (DWORD i = 1; i <= static_cast<DWORD>(strings); ++i) {
        std::string text = "s";
        text += std::to_string(i);
        const bool large = rng() % 8 == 0;
        text.append(large ? 260 : rng() % 6, 'x');
        rows.small.emplace_back(i, large ? "" : text, large ? 1 : 0);
        if (large) rows.large.emplace_back(i, text);
    }
    for (DWORD i = 1; i <= static_cast<DWORD>(usages); ++i)
        rows.usages.emplace_back(i, 1 + rng() % 40, 1 + rng() % 4, 1 + rng() % strings);
    return rows;
}

// The same random operations on a fully loaded and on a deferred name space give the
// same answers and save the same rows; and whatever is asked first after a partial
// load sees every row. The full load has its maps filed at once, the deferred one
// on first use.
TEST(StringUsageDeferred, SameAnswersAsAFullLoad) {
    for (unsigned seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 rng(seed);
        const SStoredRows rows = RandomModel(rng, 60, 150);
        const int role = static_cast<int>(seed % 2);
        // One operation of kind `kind` on both; false when the answers differ.
        auto apply = [&](CNameSpaceMgr& a, CNameSpaceMgr& b, unsigned kind, int o, int t, int s) {
            std::string text = "s";
            text += std::to_string(s);
            switch (kind) {
                case 0:
                    return a.AddString(text.c_str(), o, t) == b.AddString(text.c_str(), o, t);
                case 1:
                    return a.AddOrUpdateString(s, o, t) == b.AddOrUpdateString(s, o, t);
                case 2:
                    return a.DeleteString(o, t) == b.DeleteString(o, t);
                case 3:
                    return a.GetStringIdFromObjectAndUsageTypeIds(o, t) ==
                           b.GetStringIdFromObjectAndUsageTypeIds(o, t);
                case 4:
                    return UsagesOf(a, s) == UsagesOf(b, s);
                case 5:
                    return ObjectsUsing(a, t, s) == ObjectsUsing(b, t, s);
                default:
                    return a.FixStringUsageUnqObjId(o, t, o + 100, t) ==
                           b.FixStringUsageUnqObjId(o, t, o + 100, t);
            }
        };
        auto fileMaps = [](SLoaded& loaded) {
            CEnhStringUsageTable& usages = loaded.ns->GetStringUsageTable();
            usages.GetObjectMap();
            usages.GetKeyMap();
        };
        SLoaded full(rows, role, 0), deferred(rows, role, 1);
        fileMaps(full);
        for (int step = 0; step < 300; ++step) {
            if (!deferred.ns->IsStringUsageLoadComplete() && rng() % 4 == 0) {
                deferred.ns->LoadStringUsageRows(static_cast<int>(rng() % 30));
                continue;
            }
            const int o = 1 + static_cast<int>(rng() % 45), t = 1 + static_cast<int>(rng() % 4);
            ASSERT_TRUE(
                apply(*full.ns, *deferred.ns, rng() % 7, o, t, 1 + static_cast<int>(rng() % 70)))
                << "step " << step;
        }
        full.ns->Save(full.file.get(), 1, 1);
        deferred.ns->Save(deferred.file.get(), 1, 1);
        EXPECT_EQ(ReadUsages(*full.file), ReadUsages(*deferred.file));
        EXPECT_EQ(ReadSmall(*full.file), ReadSmall(*deferred.file));

        const auto [id, o, t, s] = rows.usages.back();  // not among the first 10 read
        for (unsigned kind = 0; kind < 7; ++kind) {
            SLoaded f(rows, role, 0), d(rows, role, 1);
            fileMaps(f);
            d.ns->LoadStringUsageRows(10);
            EXPECT_TRUE(apply(*f.ns, *d.ns, kind, static_cast<int>(o), static_cast<int>(t),
                              static_cast<int>(s)))
                << "first question " << kind;
            f.ns->Save(f.file.get(), 1, 0);
            d.ns->Save(d.file.get(), 1, 0);
            EXPECT_EQ(ReadUsages(*f.file), ReadUsages(*d.file)) << "first question " << kind;
        }
    }
}

}  // namespace
