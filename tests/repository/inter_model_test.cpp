// Inter-model relationships and links: making and joining relationships, the
// lifetimes of links and relationships, deletions through the identity manager,
// GUIDs, and the table handle.
#include <gtest/gtest.h>

#include "repository_test_util.h"
#include "support/test_support.h"

using tessmeta::CModelFile;
using tessmeta::test::CIdList;
using tessmeta::test::ObjectGuid;
using tessmeta::test::SRepoModel;
using tessmeta::test::TempDir;

namespace {

std::vector<ULONG> Linked(CEnhRepoInterModelObjectLinkTable& links, ULONG relationshipId) {
    std::vector<ULONG> objects;
    for (auto* row = links.GetFirstInterModelRelationshipIDFKRow(relationshipId); row;
         row = links.GetNextInterModelRelationshipIDFKRow())
        objects.push_back(row->Object_ID);
    return objects;
}

TEST(InterModel, MakeJoinLifetimesAndDeletions) {
    SRepoModel m;
    auto& links = *m.repo.GetInterModelObjectLinkTable();
    auto& relationships = *m.repo.GetInterModelRelationshipTable();
    const ULONG a = m.Diagram(), b = m.Diagram(), c = m.Diagram(), d = m.Diagram();

    CList<ULONG> empty;
    EXPECT_EQ(m.repo.MakeIntermodelRelationshipFromCmpMgr(&empty), 0u);
    EXPECT_EQ(relationships.GetCount(), 0);

    CIdList first{a, b};
    const ULONG rel = m.repo.MakeIntermodelRelationshipFromCmpMgr(&first);
    ASSERT_NE(rel, 0u);
    ULONG relId = 0, relObject = 0;
    EXPECT_EQ(m.repo.GetIntermodelRelObjIdsFromParentObj(a, relId, relObject), 1);
    EXPECT_EQ(relId, rel);
    CString type;
    m.guids.GetObjectType(relObject, type);
    EXPECT_EQ(type, CString("InterModelRelationship"));
    EXPECT_EQ(m.repo.GetInterModelRelIDFromImRelUniqueObjID(relObject), rel);
    EXPECT_EQ(m.repo.GetInterRelID(ObjectGuid(m.guids, relObject)), rel);

    // One object already linked: the others join its relationship, in list order.
    CIdList second{c, b, d, c};
    EXPECT_EQ(m.repo.MakeIntermodelRelationshipFromCmpMgr(&second), rel);
    EXPECT_EQ(Linked(links, rel), (std::vector<ULONG>{a, b, c, d}));
    EXPECT_EQ(m.repo.GetUniqueObjectIdFromInterModelRelID(rel), a);
    EXPECT_EQ(relationships.GetCount(), 1);

    // Links go one by one; the last one takes the relationship, and its object
    // with deleteObject 1.
    for (ULONG id : {b, a, c}) {
        m.repo.DeleteInterModelObjectLinkFKRow(id, 1);
        EXPECT_EQ(m.repo.GetInterModelRelIDFromUniqueObjectId(id), 0u);
        EXPECT_EQ(relationships.GetCount(), 1);
    }
    EXPECT_EQ(m.repo.GetUniqueObjectID(static_cast<unsigned int>(rel)), d);
    m.repo.DeleteInterModelObjectLinkFKRow(d, 1);
    EXPECT_EQ(relationships.GetCount(), 0);
    EXPECT_EQ(links.GetCount(), 0);
    EXPECT_FALSE(m.Exists(relObject));
    m.repo.DeleteInterModelObjectLinkFKRow(d, 1);  // no link: nothing

    // deleteObject 0 keeps the relationship's object.
    CIdList third{a};
    const ULONG rel2 = m.repo.MakeIntermodelRelationshipFromCmpMgr(&third);
    const ULONG relObject2 = relationships.GetIntermodelRelationshipObjGlobalId(rel2);
    m.repo.DeleteInterModelObjectLinkFKRow(a, 0);
    EXPECT_EQ(relationships.GetCount(), 0);
    EXPECT_TRUE(m.Exists(relObject2));

    // Deleting objects cleans their links, modifications and check-outs.
    const ULONG stored = m.Diagram(), fresh = m.Object("Entity", true), partner = m.Diagram();
    CIdList all{stored, fresh, partner};
    const ULONG rel3 = m.repo.MakeIntermodelRelationshipFromCmpMgr(&all);
    for (ULONG id : {stored, fresh}) {
        m.repo.InsertObjectModificationRow(id, CEnhRepoObjModTable::kModified, 0);
        m.checkouts.Insert(id, 1, 0);
    }
    // Held in the repository and not really deleted: only the link goes.
    EXPECT_EQ(m.guids.DeleteObject(static_cast<int>(stored), 0), 1);
    EXPECT_TRUE(m.Exists(stored));
    EXPECT_EQ(m.repo.GetInterModelRelIDFromUniqueObjectId(stored), 0u);
    EXPECT_EQ(m.repo.IsObjectModified(stored), 1);
    EXPECT_NE(m.checkouts.GetFKRow(stored), nullptr);
    // A New object is always deleted outright, with everything it had.
    m.guids.DeleteObject(static_cast<int>(fresh), 0);
    EXPECT_FALSE(m.Exists(fresh));
    EXPECT_EQ(m.repo.GetInterModelRelIDFromUniqueObjectId(fresh), 0u);
    EXPECT_EQ(m.mods.GetFKRow(fresh), nullptr);
    EXPECT_EQ(m.checkouts.GetFKRow(fresh), nullptr);
    EXPECT_EQ(m.repo.GetUniqueObjectIdFromInterModelRelID(rel3), partner);
}

TEST(InterModel, GuidsHandleAndRoundTrip) {
    TempDir dir;
    const std::string path = dir.File("links.zmf");
    ULONG a = 0, rel = 0, relObject = 0;
    CString relGuid;
    {
        SRepoModel m(CModelFile::Create(path, nullptr));
        a = m.Diagram();
        CString guid("0123456789abcdef0123456789abcdef"),
            version("fedcba9876543210fedcba9876543210");
        m.repo.MarkCreate(a, guid, version, 5);
        EXPECT_EQ(m.repo.GetUniqueObjectID(guid), a);

        // The table's insert leaves the caller's texts exactly as given.
        relObject = m.Object("InterModelRelationship");
        CString g("given"), v;
        rel = m.repo.GetInterModelRelationshipTable()->Insert(relObject, 0, g, v);
        EXPECT_EQ(g, CString("given"));
        EXPECT_TRUE(v.IsEmpty());
        m.repo.InsertIMObjectLink(a, rel);
        relGuid = ObjectGuid(m.guids, relObject);

        ASSERT_TRUE(m.model->Save());
    }
    SRepoModel m(CModelFile::Open(path, nullptr));
    EXPECT_EQ(m.repo.GetInterRelID(relGuid), rel);
    EXPECT_EQ(m.repo.GetInterModelRelIDFromUniqueObjectId(a), rel);
    POSITION pos = m.repo.GetFirstInterModelRelationshipPosition();
    ASSERT_NE(pos, nullptr);
    EXPECT_EQ(m.repo.GetNextInterModelRelationship(pos)->Global_User_ID, relObject);
    EXPECT_EQ(pos, nullptr);
    // New keys continue after the loaded ones.
    EXPECT_GT(m.repo.InsertIMObjectLink(m.Diagram(), rel),
              m.repo.GetInterModelObjectLinkTable()->GetUniqueObjectFKRow(a)->GetTechKey());
}

}  // namespace
