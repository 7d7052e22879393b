// User-defined properties: data types, validity, allowed values and their
// restrictions, values on objects, cascades, configuration options, and persistence
// through real .zmf files (including files whose "Property" table predates its
// data-type column).
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "model/model_check.h"
#include "model/model_file.h"
#include "support/command_run.h"
#include "support/test_support.h"

using tessmeta::CModelFile;
using tessmeta::test::TempDir;
using R = EPropertyResult;
using T = EPropertyDataType;

namespace {

TEST(PropertyDataType, AcceptsExactlyTheTextsOfEachType) {
    struct Case {
        T type;
        const char* text;
        bool ok;
    };
    const Case cases[] = {
        {T::Text, "anything at all", true},
        {T::Integer, "42", true},
        {T::Integer, "-007", true},
        {T::Integer, "", false},
        {T::Integer, "1.0", false},
        {T::Integer, " 1", false},
        {T::Integer, "123456789012345678", true},
        {T::Integer, "1234567890123456789", false},
        {T::Real, "3.5", true},
        {T::Real, ".5", true},
        {T::Real, "-1e-3", true},
        {T::Real, ".", false},
        {T::Real, "1e", false},
        {T::Real, "1.5x", false},
        {T::Date, "2024-02-29", true},
        {T::Date, "2023-02-29", false},
        {T::Date, "1900-02-29", false},
        {T::Date, "2000-02-29", true},
        {T::Date, "2024-04-31", false},
        {T::Date, "2024-1-01", false},
        {T::Date, "2024/01/01", false},
        {T::Boolean, "true", true},
        {T::Boolean, "True", false},
        {static_cast<T>(9), "x", true},
    };
    for (const Case& c : cases)
        EXPECT_EQ(IsPropertyValueOfType(c.type, c.text), c.ok)
            << PropertyDataTypeName(c.type) << " \"" << c.text << "\"";
    EXPECT_STREQ(PropertyDataTypeName(static_cast<T>(9)), "(unknown)");
    EXPECT_FALSE(IsPropertyDataType(5));
}

// A model with a property type and properties of each kind:
//   owner   Text, valid for entities and attributes, no list
//   status  Text, list {Draft, Approved, Retired}, valid for entities (all of it) and
//           for the "Columns" class (attributes) restricted to {Draft}
//   size    Integer, valid for entities
class PropertyTest : public ::testing::Test {
  protected:
    void SetUp() override { Build(CModelFile::CreateInMemory()); }

    void Build(std::unique_ptr<CModelFile> m) {
        model = std::move(m);
        CEnhMetaTableTbl& tables = model->GetMetaTableTbl();
        entity = tables.GetTechKey(CEnhMetaTableTbl::Entity);
        attribute = tables.GetTechKey(CEnhMetaTableTbl::Attribute);
        view = tables.GetTechKey(CEnhMetaTableTbl::View);
        CPropertyMgr& p = Props();
        type = p.InsertPropertyType("Governance", "who owns what");
        owner = p.DefineProperty(type, "Owner", "", T::Text);
        status = p.DefineProperty(type, "Status", "", T::Text);
        size = p.DefineProperty(type, "Size", "", T::Integer);
        for (const char* v : {"Draft", "Approved", "Retired"})
            ASSERT_EQ(p.AddAllowedValue(status, v, &values[v]), R::Done);
        p.SetPropertyValidForTable(owner, entity);
        p.SetPropertyValidForTable(owner, attribute);
        p.SetPropertyValidForTable(status, entity);
        p.SetPropertyValidForTable(size, entity);
        columns = p.InsertMetaClass("Columns", "attributes");
        p.AddMetaClassTable(columns, attribute);
        statusOnColumns = p.SetPropertyValid(status, columns);
        p.RestrictAllowedValue(statusOnColumns, values["Draft"]);
    }

    CPropertyMgr& Props() { return model->GetPropertyMgr(); }
    std::vector<std::string> List(ULONG metaTable, ULONG row) {
        std::vector<std::string> out;
        for (const auto& p : Props().ListProperties(metaTable, row))
            out.push_back(std::string(p.propertyName) + "=" + std::string(p.value) +
                          (p.accepted ? "" : "!"));
        return out;
    }
    int Objects() { return model->GetGuidMgr().GetUniqueObjCount(); }

    std::unique_ptr<CModelFile> model;
    ULONG entity = 0, attribute = 0, view = 0, type = 0, owner = 0, status = 0, size = 0;
    ULONG columns = 0, statusOnColumns = 0;
    std::map<std::string, ULONG> values;
};

TEST_F(PropertyTest, ValuesAreCheckedAgainstTypeValidityAndAllowedValuesAndKept) {
    struct Case {
        ULONG* metaTable;
        ULONG row;
        ULONG* property;
        const char* value;
        R result;
    };
    ULONG none = 0, unknownTable = 9999;
    const Case cases[] = {
        {&entity, 1, &owner, "Sales", R::Done},
        {&attribute, 2, &owner, "", R::Done},
        {&view, 3, &owner, "Sales", R::NotValidForObject},
        {&entity, 1, &status, "Approved", R::Done},
        {&entity, 1, &status, "approved", R::NotAllowed},  // byte for byte
        {&entity, 1, &status, "Lost", R::NotAllowed},
        {&attribute, 2, &status, "Draft", R::Done},
        {&attribute, 2, &status, "Approved", R::NotAllowed},  // restricted on Columns
        {&entity, 1, &size, "12", R::Done},
        {&entity, 1, &size, "twelve", R::WrongDataType},
        {&attribute, 2, &size, "12", R::NotValidForObject},
        {&entity, 1, &none, "x", R::NoSuchProperty},
        {&entity, 0, &owner, "x", R::NoSuchObject},
        {&unknownTable, 1, &owner, "x", R::NoSuchObject},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Props().InsertProperty(*c.metaTable, c.row, *c.property, c.value), c.result)
            << c.value << ": " << PropertyResultText(c.result);
    EXPECT_EQ(List(entity, 1),
              (std::vector<std::string>{"Owner=Sales", "Status=Approved", "Size=12"}));
    EXPECT_EQ(List(attribute, 2), (std::vector<std::string>{"Owner=", "Status=Draft"}));
    EXPECT_TRUE(List(view, 3).empty());

    // Setting again replaces; one member per object, named for its kind.
    ULONG usage = 0;
    ASSERT_EQ(Props().InsertProperty(entity, 1, status, "Retired", &usage), R::Done);
    CString value;
    ASSERT_EQ(Props().GetProperty(entity, 1, status, value), 1);
    EXPECT_EQ(value, "Retired");
    EXPECT_EQ(Props().GetPropertyUsageTbl().GetRow(usage)->Value.GetValue(), "Retired");
    CEnhMetaClassMemberTbl& members = model->GetMetaClassMemberTbl();
    EXPECT_EQ(members.GetCount(), 2);
    EXPECT_EQ(std::string(members.GetFirstRow(entity, 1)->Name), "Table");
    EXPECT_EQ(std::string(members.GetFirstRow(attribute, 2)->Name), "Attribute");
    EXPECT_EQ(members.GetNextRow(), nullptr);

    // Everything survives saving and reopening.
    TempDir dir;
    const ULONG option = Props().InsertConfigurationOption("Show Properties", "");
    Props().SetMetaTableOption(entity, option, "yes");
    ASSERT_TRUE(model->SaveAs(dir.File("p.zmf")));
    model.reset();

    std::string error;
    model = CModelFile::Open(dir.File("p.zmf"), &error);
    ASSERT_TRUE(model) << error;
    EXPECT_EQ(List(entity, 1),
              (std::vector<std::string>{"Owner=Sales", "Status=Retired", "Size=12"}));
    EXPECT_EQ(List(attribute, 2), (std::vector<std::string>{"Owner=", "Status=Draft"}));
    CPropertyMgr& q = Props();
    EXPECT_EQ(q.GetPropertyId("status"), status);
    EXPECT_EQ(q.GetPropertyDataType(size), T::Integer);
    EXPECT_EQ(q.InsertProperty(attribute, 2, status, "Approved"), R::NotAllowed);
    ASSERT_EQ(q.GetMetaTableOption(entity, option, value), 1);
    EXPECT_EQ(value, "yes");
    // New rows get keys past the stored ones.
    EXPECT_GT(q.DefineProperty(type, "Later", "", T::Real), size);
    EXPECT_EQ(tessmeta::CheckModelFile(model->GetFile()).ErrorCount(), 0u);
}

TEST_F(PropertyTest, DeletionsCascadeAndNarrowingLeavesValuesListed) {
    CPropertyMgr& p = Props();
    const int objects = Objects();
    ASSERT_EQ(p.InsertProperty(entity, 1, status, "Approved"), R::Done);
    ASSERT_EQ(p.InsertProperty(entity, 1, owner, "Sales"), R::Done);
    ASSERT_EQ(p.InsertProperty(attribute, 2, status, "Draft"), R::Done);
    EXPECT_EQ(Objects(), objects + 5);  // two members, three values

    // Narrowing: the value stays, listed as no longer accepted.
    ASSERT_EQ(p.DeleteAllowedValue(values["Draft"]), 1);
    EXPECT_EQ(p.GetValidPropertyValueTbl().GetCount(), 0);  // the restriction went too
    EXPECT_EQ(p.GetAllowedValues(status), (std::vector<CString>{"Approved", "Retired"}));
    EXPECT_EQ(List(attribute, 2), (std::vector<std::string>{"Status=Draft!"}));
    ASSERT_EQ(p.RemovePropertyValidity(statusOnColumns), 1);
    EXPECT_FALSE(p.IsPropertyValidFor(status, attribute));
    EXPECT_EQ(List(attribute, 2), (std::vector<std::string>{"Status=Draft!"}));

    // Clearing the last value of an object deletes its member.
    EXPECT_EQ(p.ClearProperty(attribute, 2, status), 1);
    EXPECT_EQ(p.ClearProperty(attribute, 2, status), 0);
    EXPECT_EQ(model->GetMetaClassMemberTbl().GetFirstRow(attribute, 2), nullptr);

    // Deleting the type takes its properties, their values, declarations and lists.
    ASSERT_EQ(p.DeletePropertyType(type), 1);
    EXPECT_EQ(p.DeletePropertyType(type), 0);
    for (CEnhTableBase* t : std::initializer_list<CEnhTableBase*>{
             &p.GetPropertyTbl(), &p.GetPropertyValueTbl(), &p.GetValidPropertyTbl(),
             &p.GetValidPropertyValueTbl(), &p.GetPropertyUsageTbl(),
             &model->GetMetaClassMemberTbl()})
        EXPECT_EQ(t->GetRowCount(), 0);
    EXPECT_EQ(Objects(), objects);                 // every New usage and member object is gone
    EXPECT_EQ(p.GetMetaClassTbl().GetCount(), 3);  // classes stay: Entity, Attribute, Columns

    ASSERT_EQ(p.DeleteMetaClass(columns), 1);
    EXPECT_EQ(p.GetValidMetaClassTbl().GetCount(), 2);
}

// A file whose "Property" table was stored before the data-type column existed.
TEST(PropertyFile, OlderPropertyTableReadsAsTextAndGainsTheColumn) {
    TempDir dir;
    const std::string path = dir.File("old.zmf");
    {
        std::string error;
        ASSERT_TRUE(CModelFile::Create(path, &error)) << error;
    }
    ASSERT_EQ(tessmeta::test::Sql(
                  path,
                  "DROP TABLE Property;"
                  "CREATE TABLE Property (Property_ID INTEGER, Property_Type_ID INTEGER, Name TEXT,"
                  " Description TEXT);"
                  "INSERT INTO Property VALUES (5, 1, 'Owner', 'who'), (6, 1, 'Code', '');"
                  "INSERT INTO Property_Type VALUES (1, 'Old', '');"),
              "");

    std::string error;
    auto model = CModelFile::Open(path, &error);
    ASSERT_TRUE(model) << error;
    CPropertyMgr& p = model->GetPropertyMgr();
    EXPECT_EQ(p.GetPropertyTbl().GetCount(), 2);
    EXPECT_EQ(p.GetPropertyDataType(5), T::Text);
    EXPECT_EQ(std::string(p.GetPropertyTbl().GetRow(5)->Description), "who");
    EXPECT_EQ(p.GetPropertyId("code"), 6u);
    const ULONG date = p.DefineProperty(1, "Since", "", T::Date);
    ASSERT_TRUE(model->Save());
    model.reset();

    model = CModelFile::Open(path, &error);
    ASSERT_TRUE(model) << error;
    EXPECT_EQ(model->GetPropertyMgr().GetPropertyDataType(date), T::Date);
    EXPECT_EQ(model->GetPropertyMgr().GetPropertyDataType(6), T::Text);
    EXPECT_EQ(model->GetPropertyMgr().GetPropertyTbl().GetCount(), 3);
}

}  // namespace
