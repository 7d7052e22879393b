// The repository status rule, exhaustively, and the manager's status operations.
#include "identity/repo_status.h"

#include <gtest/gtest.h>

#include "identity/guid_mgr.h"
#include "identity_test_util.h"

using tessmeta::ApplyRepoStatusRule;
using namespace tessmeta::test;

namespace {

// The bits whose combinations the rule distinguishes, plus one bit it never names.
constexpr DWORD kNamedBits[] = {0x1, 0x2, 0x4, 0x8, 0x10, 0x100, 0x200, 0x400, 0x10000};

DWORD Combination(unsigned mask) {
    DWORD status = 0;
    for (unsigned b = 0; b < std::size(kNamedBits); ++b)
        if (mask & (1u << b)) status |= kNamedBits[b];
    return status;
}

// Every low-five-bit value (with and without a high bit riding along) against every
// combination of the state, side and reacting bits, with force off and on.
TEST(RepoStatusRule, EveryCaseAgainstEveryStatus) {
    for (DWORD low = 0; low < 32; ++low) {
        for (DWORD high : {0u, 0x20u, 0x800u}) {
            const DWORD value = low | high;
            for (unsigned mask = 0; mask < (1u << std::size(kNamedBits)); ++mask) {
                const DWORD status = Combination(mask);
                for (bool force : {false, true}) {
                    const DWORD got = ApplyRepoStatusRule(status, value, force);
                    SCOPED_TRACE(testing::Message() << "status " << std::hex << status << " value "
                                                    << value << " force " << force);
                    if (low == 1 || low == 4) {
                        // State replaced; 0x100 and 0x400 dropped; the rest kept.
                        ASSERT_EQ(got & 0x7, low);
                        ASSERT_EQ(got & 0x100, value & 0x100);
                        ASSERT_EQ(got & 0x400, value & 0x400);
                        ASSERT_EQ(got & ~0x507u & ~value, status & ~0x507u & ~value);
                    } else if (low == 2) {
                        if ((status & 1) && !force) {
                            ASSERT_EQ(got, status);  // a New object stays New
                            continue;
                        }
                        ASSERT_EQ(got & 0x7, 2u);
                        ASSERT_EQ(got & 0x100, (status | value) & 0x100);  // sticky
                        ASSERT_EQ(got & 0x400, value & 0x400);
                        ASSERT_EQ(got & ~0x507u & ~value, status & ~0x507u & ~value);
                    } else if (low == 8 || low == 16) {
                        ASSERT_EQ(got & 0x18, low);
                        ASSERT_EQ(got & 0x200, value & 0x200);
                        ASSERT_EQ(got & ~0x218u & ~value, status & ~0x218u & ~value);
                    } else {
                        ASSERT_EQ(got, status);  // 0, 3, 5-7, 9-15, 17-31
                        continue;
                    }
                    ASSERT_EQ(got & value, value);  // the whole value is ORed in
                }
            }
        }
    }
}

// A model whose objects 1..6 have the given types and statuses.
std::unique_ptr<CGuidMgr> StatusModel(CZmfFile& file,
                                      const std::vector<std::pair<LONG, DWORD>>& objects) {
    std::vector<CUniqueObjectBase> rows;
    ULONG id = 0;
    for (const auto& [type, status] : objects) {
        ++id;
        rows.push_back(
            StoredObject(id, type, status, GuidTextFor(id).c_str(), GuidTextFor(id + 100).c_str()));
    }
    StoreObjects(file, rows);
    return LoadGuids(file);
}

std::vector<ULONG> Statuses(CGuidMgr& mgr) {
    std::vector<ULONG> out;
    for (POSITION pos = mgr.GetUniqueObjectStartPosition(); pos;)
        out.push_back(mgr.GetRepoStatus(mgr.GetNextUniqueObject(pos)));
    return out;
}

TEST(RepoStatus, WholeModelOperations) {
    auto file = CZmfFile::OpenMemory();
    //                        type/status: 1      2        3       4       5
    auto mgr = StatusModel(*file, {{7, 1}, {7, 0x102}, {8, 1}, {8, 4}, {9, 0}});
    CIdList seven{7}, eightNine{8, 9}, none{};

    EXPECT_EQ(mgr->HasRepositoryObject(), 1);
    EXPECT_EQ(mgr->GotCheckedOutObj(none, 0, 0), 1);       // object 2 has state 2
    EXPECT_EQ(mgr->GotCheckedOutObj(seven, 0, 0), 0);      // ...but type 7 is excluded
    EXPECT_EQ(mgr->GotCheckedOutObj(seven, 1, 0), 1);      // object 3 is New
    EXPECT_EQ(mgr->GotCheckedOutObj(eightNine, 0, 1), 0);  // state 4 only in type 8
    EXPECT_EQ(mgr->GotCheckedOutObj(seven, 0, 1), 1);

    // Listed types, only New ones: object 1 (New) yes, object 2 no.
    mgr->SetSpecificObjectRepoStatusFlag(8, seven, 1, 1);
    EXPECT_EQ(Statuses(*mgr), (std::vector<ULONG>{9, 0x102, 1, 4, 0}));
    // Types not listed, all of them: objects 1 and 2 (type 7).
    mgr->SetSpecificObjectRepoStatusFlag(16, eightNine, 0, 0);
    EXPECT_EQ(Statuses(*mgr), (std::vector<ULONG>{0x11, 0x112, 1, 4, 0}));
    // Types not listed, New ones only: object 1.
    mgr->SetSpecificObjectRepoStatusFlag(4, eightNine, 0, 1);
    EXPECT_EQ(Statuses(*mgr), (std::vector<ULONG>{0x14, 0x112, 1, 4, 0}));
    // Listed, not only New: objects 3, 4, 5 (object 3 New stays New under 2).
    mgr->SetSpecificObjectRepoStatusFlag(2, eightNine, 1, 0);
    EXPECT_EQ(Statuses(*mgr), (std::vector<ULONG>{0x14, 0x112, 1, 2, 2}));

    mgr->SetAllRepoStatusFlag(1);
    EXPECT_EQ(Statuses(*mgr), (std::vector<ULONG>{0x11, 0x11, 1, 1, 1}));
    EXPECT_EQ(mgr->HasRepositoryObject(), 0);
    EXPECT_EQ(mgr->GotCheckedOutObj(none, 0, 0), 0);
}

TEST(RepoStatus, ResetSpecificObjectsToNewRenewsGuids) {
    auto file = CZmfFile::OpenMemory();
    auto mgr = StatusModel(*file, {{7, 0x102}, {8, 4}, {7, 0x18}});
    std::vector<CString> before(4), versions(4);
    for (unsigned id = 1; id <= 3; ++id)
        mgr->GetGUIDs(id, before[id], versions[id]);
    CIdList seven{7};

    mgr->ResetSpecificObjectsToNew(seven, 0);  // type 8 only
    EXPECT_EQ(Statuses(*mgr), (std::vector<ULONG>{0x102, 1, 0x18}));
    CString guid, version;
    mgr->GetGUIDs(2, guid, version);
    EXPECT_NE(guid, before[2]);
    EXPECT_NE(version, versions[2]);
    EXPECT_EQ(mgr->GetUniqueObjectID(guid), 2u);  // re-filed under the new GUID
    EXPECT_EQ(mgr->GetUniqueObjectID(before[2]), 0u);

    mgr->ResetSpecificObjectsToNew(seven, 1);
    EXPECT_EQ(Statuses(*mgr), (std::vector<ULONG>{1, 1, 0x19}));
    mgr->GetGUIDs(3, guid, version);
    EXPECT_NE(guid, before[3]);
    EXPECT_EQ(mgr->GetUniqueObjectID(guid), 3u);
}

}  // namespace
