// Object types learnt by name, their classification, and the object domains.
#include <gtest/gtest.h>

#include "identity/guid_mgr.h"
#include "identity_test_util.h"

using namespace tessmeta::test;

namespace {

// A model that lacks names, numbers types its own way, and repeats names and ids.
TEST(ObjectTypes, SparseAndRepeatedDefinitions) {
    auto file = CZmfFile::OpenMemory();
    StoreDefinitions(*file, {{19, "Entity"},
                             {8, "Attribute"},
                             {8, "Dictionary Object"},
                             {40, "Entity"},
                             {41, "Data Dictionary"}});
    auto mgr = LoadGuids(*file);
    EXPECT_EQ(mgr->GetEntityObjectTypeId(), 19);  // the first "Entity"
    EXPECT_EQ(mgr->GetAttributeObjectTypeId(), 8);
    EXPECT_EQ(mgr->GetDictionaryObjectTypeId(), 8);  // two names, one id
    EXPECT_TRUE(mgr->IsDiagramObject(8));
    EXPECT_TRUE(mgr->IsInternalObject(8));
    EXPECT_TRUE(mgr->IsDataDictionaryObject(8));
    CString name;
    EXPECT_EQ(mgr->GetObjectTypeString(8, name), 1);
    EXPECT_EQ(name, "Attribute");  // the first row of the id
    EXPECT_TRUE(mgr->IsDiagramObject(19));
    EXPECT_FALSE(mgr->IsDiagramObject(40));
    // Missing names are 0, and 0 classifies as nothing.
    EXPECT_EQ(mgr->GetViewObjectTypeId(), 0);
    EXPECT_FALSE(mgr->IsDiagramObject(0));
    EXPECT_FALSE(mgr->IsDataDictionaryObject(0));
    EXPECT_FALSE(mgr->IsObjectDomainRootObject(0));
    EXPECT_TRUE(mgr->IsObjectDomainRootObject(41));
    EXPECT_TRUE(mgr->IsDataDictionaryObject(41));
    EXPECT_EQ(mgr->GetObjectDefinitionTable()->GetCount(), 5);

    // Saved whole, in list order; a new meta-class gets a key above the loaded ones.
    EXPECT_EQ(mgr->GetObjectDefinitionTable()->Insert(CString("Model"), 0), 42u);
    ASSERT_EQ(mgr->Save(file.get(), nullptr, 0, 0), 1);
    const auto saved = ReadAll<CObjectDefinitionBase>(*file, "ObjectDefinition");
    std::vector<ULONG> ids;
    for (const auto& row : saved)
        ids.push_back(row.Object_Type_ID);
    EXPECT_EQ(ids, (std::vector<ULONG>{19, 8, 8, 40, 41, 42}));
    EXPECT_STREQ(saved[3].Name, "Entity");
}

TEST(ObjectDomains, ModelDomainCreationAndAccess) {
    auto file = CZmfFile::OpenMemory();
    StoreDefinitions(*file, StandardDefinitions());
    StoreObjects(*file, {StoredObject(1, StandardTypeId("Entity"), 2),
                         StoredObject(2, StandardTypeId("Domain"), 2),
                         StoredObject(3, StandardTypeId("Attribute"), 2)});
    ASSERT_TRUE(
        Store(*file, "Object_Domain",
              std::vector{StoredDomain(5, "lower", "Diagram"), StoredDomain(9, "first", "DIAGRAM"),
                          StoredDomain(3, "second", "DIAGRAM"), StoredDomain(0, "unkeyed", "X")}));
    auto mgr = LoadGuids(*file);
    auto* domains = mgr->GetEnhObjectDomainTable();
    EXPECT_EQ(mgr->GetModelDomainId(), 9u);                 // the first "DIAGRAM", exactly spelt
    EXPECT_EQ(domains->GetIdMap().GetHashTableSize(), 4u);  // the stored row count
    EXPECT_EQ(domains->GetRow(10)->Name, CZmfString("unkeyed"));  // a key after 9
    EXPECT_EQ(file->GetIdentityMgr()->GetKeyValue(CEnhObjectDomainTable::kKeyKind), 10u);

    // Creating domains: a new key, or the one given (declared to the allocator).
    EXPECT_EQ(mgr->CreateObjectDomain(2, "Dict", "DATA DICTIONARY", "g1", 0), 11u);
    EXPECT_EQ(mgr->GetUniqueObjectObjectDomainID(2), 11u);
    EXPECT_EQ(mgr->CreateObjectDomain(99, "Given", "X", "g2", 20), 20u);
    EXPECT_EQ(mgr->CreateObjectDomain(1, "After", "DIAGRAM", "g3", 0), 21u);
    EXPECT_EQ(mgr->GetModelDomainId(), 9u);
    EXPECT_EQ(mgr->GetObjectDomainName(20), "Given");
    EXPECT_EQ(mgr->GetObjectDomainGUID(11), "g1");
    mgr->SetObjectDomainName(11, "Renamed");
    mgr->SetObjectDomainGUID(11, "g9");
    EXPECT_EQ(mgr->GetObjectDomainName(11), "Renamed");
    EXPECT_EQ(mgr->GetObjectDomainGUID(11), "g9");

    // Diagram objects go to the model's domain; dictionary objects keep theirs.
    mgr->AssignObjectDomain();
    EXPECT_EQ(mgr->GetUniqueObjectObjectDomainID(1), 9u);
    EXPECT_EQ(mgr->GetUniqueObjectObjectDomainID(3), 9u);
    EXPECT_EQ(mgr->GetUniqueObjectObjectDomainID(2), 11u);
    mgr->SetUniqueObjectObjectDomainID(3, 5);
    EXPECT_EQ(mgr->GetUniqueObjectObjectDomainID(3), 5u);

    ASSERT_EQ(mgr->Save(file.get(), nullptr, 0, 0), 1);
    std::vector<std::string> saved;
    for (const auto& row : ReadAll<CObject_DomainBase>(*file, "Object_Domain"))
        saved.push_back(std::to_string(row.Object_Domain_ID) + ":" +
                        row.Name.GetValue().GetString());
    EXPECT_EQ(saved, (std::vector<std::string>{"5:lower", "9:first", "3:second", "10:unkeyed",
                                               "11:Renamed", "20:Given", "21:After"}));
    EXPECT_EQ(LoadGuids(*file)->GetModelDomainId(), 9u);
}

}  // namespace
