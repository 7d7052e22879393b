// The integrity check finds each kind of damage, and only that.
#include "model/model_check.h"

#include <gtest/gtest.h>

#include "zmflib.h"

using tessmeta::CheckModelFile;
using tessmeta::ECheckKind;

namespace {

template <class Row>
void Put(CZmfFile& file, const char* table, std::initializer_list<Row> rows) {
    CTableBase* t = file.GetEmptyTable(table);
    for (const Row& row : rows)
        ASSERT_EQ(t->Insert(&row), 1);
}

CObjectDefinitionBase Definition(ULONG id, const char* name) {
    CObjectDefinitionBase row(id);
    row.Name = name;
    return row;
}

CUniqueObjectBase Object(ULONG id, LONG type, ULONG domain) {
    CUniqueObjectBase row(id);
    row.Object_Type_ID = type;
    row.Object_Domain_ID = domain;
    return row;
}

CSmallStringBase Text(ULONG id, const char* text, LONG large = 0) {
    CSmallStringBase row(id);
    row.Text = text;
    row.Large_Flag = large;
    return row;
}

CStringUsageBase Usage(ULONG id, ULONG object, ULONG type, ULONG string) {
    CStringUsageBase row(id);
    row.Object_ID = object;
    row.String_Usage_Type_ID = type;
    row.String_ID = string;
    return row;
}

TEST(ModelCheck, FindsEachKindOfDamage) {
    auto file = CZmfFile::OpenMemory();
    Put(*file, "ObjectDefinition", {Definition(1, "Entity")});
    Put(*file, "Object_Domain", {CObject_DomainBase(1)});
    Put(*file, "UniqueObject", {Object(1, 1, 1), Object(2, 9, 0), Object(3, 1, 5)});
    Put(*file, "SmallString",
        {Text(10, "Customer"), Text(11, "abcde"), Text(12, "sixsix"), Text(13, "", 1)});
    Put(*file, "StringUsageType", {CStringUsageTypeBase(1)});
    Put(*file, "StringUsage",
        {Usage(1, 1, 1, 10), Usage(2, 99, 1, 10), Usage(3, 1, 7, 10), Usage(4, 1, 1, 55)});
    Put(*file, "MetaTable", {CMetaTableBase(4), CMetaTableBase(4), CMetaTableBase(5)});

    const auto report = CheckModelFile(*file);
    EXPECT_EQ(report.Count(ECheckKind::ObjectWithUnknownType), 1u);
    EXPECT_EQ(report.Count(ECheckKind::ObjectWithUnknownDomain), 1u);
    EXPECT_EQ(report.Count(ECheckKind::UsageWithoutObject), 1u);
    EXPECT_EQ(report.Count(ECheckKind::UsageWithoutUsageType), 1u);
    EXPECT_EQ(report.Count(ECheckKind::UsageWithoutString), 1u);
    EXPECT_EQ(report.Count(ECheckKind::DuplicateKey), 1u);
    // "sixsix" (6 bytes) and the long string go at a purge; "abcde" (5) stays.
    EXPECT_EQ(report.Count(ECheckKind::PurgeableString), 2u);
    EXPECT_EQ(report.Count(ECheckKind::StoreDamage), 0u);
    EXPECT_EQ(report.ErrorCount(), 6u);

    ASSERT_EQ(report.findings.size(), 8u);
    for (const auto& f : report.findings) {
        if (f.kind == ECheckKind::UsageWithoutString) {
            EXPECT_EQ(f.detail, "usage 4: string 55 does not exist");
        }
    }
}

TEST(ModelCheck, ASoundFileHasNoErrorAndDetailsAreCapped) {
    auto file = CZmfFile::OpenMemory();
    Put(*file, "ObjectDefinition", {Definition(1, "Entity")});
    Put(*file, "UniqueObject", {Object(1, 1, 0)});
    Put(*file, "StringUsageType", {CStringUsageTypeBase(1)});
    Put(*file, "SmallString", {Text(10, "Customer")});
    Put(*file, "StringUsage", {Usage(1, 1, 1, 10)});
    EXPECT_EQ(CheckModelFile(*file).ErrorCount(), 0u);
    EXPECT_TRUE(CheckModelFile(*file).findings.empty());

    CTableBase* t = file->GetEmptyTable("UniqueObject");
    for (ULONG k = 1; k <= 30; ++k) {
        auto row = Object(k, 2, 0);
        t->Insert(&row);
    }
    const auto report = CheckModelFile(*file, 5);
    EXPECT_EQ(report.Count(ECheckKind::ObjectWithUnknownType), 30u);
    EXPECT_EQ(report.findings.size(), 5u);
}

}  // namespace
