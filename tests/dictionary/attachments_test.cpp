// Attachment types, valid attachment types and attachments: the meta-table folding,
// placement in data dictionaries, the three deletes and their cascades counted row
// by row, uniqueness, walks and the integrity check.
#include <gtest/gtest.h>

#include <vector>

#include "dictionary_test_util.h"
#include "model/model_check.h"
#include "support/test_support.h"

using tessmeta::ECheckKind;
using tessmeta::test::SDictFixture;
using tessmeta::test::Store;

namespace {

struct SAttachmentFixture : SDictFixture {
    DWORD Type(const char* name, DWORD dataDictionary, DWORD* item = nullptr,
               const char* description = "", int integerField = 0) {
        CString n(name), d(description);
        DWORD id = 0;
        const DWORD key = dict.InsertAttachmentType(n, d, integerField, dataDictionary, id, FALSE);
        if (item) *item = id;
        return key;
    }
    DWORD Valid(DWORD type, DWORD metaTable, DWORD first = 0, DWORD second = 0) {
        DWORD id = 0;
        return dict.InsertValidAttachmentType(type, metaTable, first, second, id, FALSE);
    }
    DWORD Attachment(DWORD type, const char* name, DWORD* item = nullptr, const char* value = "",
                     DWORD number = 0) {
        CString n(name), d, v(value);
        DWORD id = 0;
        const DWORD key = dict.InsertAttachment(type, n, d, v, number, id, FALSE);
        if (item) *item = id;
        return key;
    }
    int Bindings() { return refs.GetBoundDictObjectTable()->GetCount(); }
    int Registry() { return dict.GetDictObjectCountIn(main); }
};

TEST(Attachments, ItemsGoIntoTheirTypesDataDictionaryAndMetaTablesFold) {
    SAttachmentFixture f;
    const DWORD sales = f.dict.CreateDataDictionary("Sales", "");
    DWORD typeItem = 0, attachmentItem = 0;
    const DWORD type = f.Type("Owner", sales, &typeItem);
    const DWORD valid = f.Valid(type, 1, 5, 6);
    const DWORD attachment = f.Attachment(type, "DBA", &attachmentItem, "team", 7);
    const CKelValidAttachmentType* validRow = f.dict.GetValidAttachmentTypeRow(valid);
    ASSERT_TRUE(validRow);
    for (DWORD item : {typeItem, validRow->Dictionary_Object_ID, attachmentItem}) {
        EXPECT_EQ(f.dict.GetData_Dictionary_ID(item), sales);
        const DWORD globalId = f.dict.GetGlobalIDUsingDictID(item);
        EXPECT_NE(globalId, 0u);
        EXPECT_EQ(f.guids.GetUniqueObjectObjectDomainID(globalId),
                  f.dict.GetDataDictionaryObjectDomainID(sales));
    }
    int kind = 0;
    DWORD key = 0;
    ASSERT_TRUE(f.dict.GetBoundDictObject(attachmentItem, kind, key));
    EXPECT_EQ(std::pair(kind, key), std::pair(11, attachment));

    // Unknown types create nothing, not even a registry row.
    const int registry = f.dict.GetDictObjectCountIn(sales) + f.Registry();
    DWORD untouched = 0;
    CString n("x");
    EXPECT_EQ(f.dict.InsertAttachment(9999, n, n, n, 0, untouched, FALSE), 0u);
    EXPECT_EQ(f.dict.InsertValidAttachmentType(9999, 1, 0, 0, untouched, FALSE), 0u);
    EXPECT_EQ(f.dict.GetDictObjectCountIn(sales) + f.Registry(), registry);
    EXPECT_EQ(untouched, 0u);

    CString upper("OWNER");
    EXPECT_EQ(f.dict.GetAttachmentTypeByName(sales, upper), f.dict.GetAttachmentTypeRow(type));
    EXPECT_EQ(f.dict.GetAttachmentTypeByName(f.main, upper), nullptr);

    // Valid types on meta tables 16 to 20 bind on meta table 8.
    const struct {
        int in, out;
    } cases[] = {{15, 15}, {16, 8}, {18, 8}, {20, 8}, {21, 21}, {8, 8}, {0, 0}, {-16, -16}};
    for (const auto& c : cases)
        EXPECT_EQ(CDictObjectMgr::ValidAttTypeToBoundDictObjMetaTableID(c.in), c.out) << c.in;

    const DWORD kindType = f.Type("Kind", f.main);
    const DWORD owner = f.Attachment(kindType, "DBA");
    EXPECT_FALSE(f.dict.IsAttachmentValidForType(owner, 8));  // no valid types yet
    f.Valid(kindType, 17);
    f.Valid(kindType, 3);
    EXPECT_TRUE(f.dict.IsAttachmentValidForType(owner, 8));
    EXPECT_TRUE(f.dict.IsAttachmentValidForType(owner, 3));
    EXPECT_FALSE(f.dict.IsAttachmentValidForType(owner, 17));  // bindings never use 16..20
    EXPECT_FALSE(f.dict.IsAttachmentValidForType(9999, 8));
}

TEST(Attachments, DeletesCascadeRowByRow) {
    SAttachmentFixture f;
    const DWORD type = f.Type("Owner", f.main);
    const DWORD valid = f.Valid(type, 16);  // bindings on meta table 8
    f.Valid(type, 3);
    DWORD a1 = 0, a2 = 0, other = 0;
    const DWORD first = f.Attachment(type, "A1", &a1);
    f.Attachment(type, "A2", &a2);
    const DWORD otherType = f.Type("Other", f.main);
    f.Valid(otherType, 8);
    f.Attachment(otherType, "B", &other);
    f.refs.InsertBoundDictObject(a1, 8, 100, "x");
    f.refs.InsertBoundDictObject(a1, 8, 101, "");
    f.refs.InsertBoundDictObject(a1, 3, 102, "");
    f.refs.InsertBoundDictObject(a2, 8, 103, "");
    f.refs.InsertBoundDictObject(other, 8, 104, "");  // another type's: stays throughout

    // A valid type unbinds the type's attachments from its class only.
    EXPECT_TRUE(f.dict.DeleteValidAttachmentType(valid));
    EXPECT_EQ(f.Bindings(), 2);  // a1 on 3, other on 8
    EXPECT_EQ(f.dict.GetValidAttachmentTypeCount(), 2);
    EXPECT_EQ(f.dict.GetAttachmentCount(), 3);
    EXPECT_FALSE(f.dict.DeleteValidAttachmentType(valid));

    // An attachment takes all its bindings.
    f.refs.InsertBoundDictObject(a1, 8, 100, "");
    const DWORD globalId = f.dict.GetGlobalIDUsingDictID(a1);
    int registry = f.Registry();
    EXPECT_TRUE(f.dict.DeleteAttachment(first));
    EXPECT_EQ(f.Bindings(), 1);
    EXPECT_EQ(f.Registry(), registry - 1);
    EXPECT_FALSE(f.guids.IsUniqueObjectIdValid(static_cast<LONG>(globalId)));
    EXPECT_EQ(f.names.GetStringIdFromObjectAndUsageTypeIds(static_cast<int>(globalId),
                                                           f.names.GetAttachmentNameUsageId()),
              0);

    // A type: its row, its valid type, its attachment, their registry rows and the
    // attachment's bindings everywhere.
    f.Valid(type, 20);
    f.refs.InsertBoundDictObject(a2, 5, 105, "");
    registry = f.Registry();
    EXPECT_TRUE(f.dict.DeleteAttachmentType(type));
    EXPECT_EQ(f.Registry(), registry - 4);  // type, two valid types, a2
    EXPECT_EQ(f.dict.GetAttachmentTypeCount(), 1);
    EXPECT_EQ(f.dict.GetValidAttachmentTypeCount(), 1);  // Other's
    EXPECT_EQ(f.dict.GetAttachmentCount(), 1);
    EXPECT_EQ(f.Bindings(), 1);  // other's
    EXPECT_FALSE(f.dict.DeleteAttachmentType(type));
    ASSERT_TRUE(f.model->Save());
    EXPECT_EQ(tessmeta::CheckModelFile(f.model->GetFile()).ErrorCount(), 0u);
}

TEST(Attachments, CheckReportsBrokenTypesAndBindings) {
    SAttachmentFixture f;
    const DWORD type = f.Type("T", f.main);
    f.Valid(type, 18);  // bindings on 8
    DWORD item = 0;
    f.Attachment(type, "a", &item);
    f.refs.InsertBoundDictObject(item, 8, 1, "");
    f.refs.InsertBoundDictObject(item, 2, 1, "");  // not allowed
    ASSERT_TRUE(f.model->Save());
    CZmfFile& file = f.model->GetFile();
    auto report = tessmeta::CheckModelFile(file);
    EXPECT_EQ(report.Count(ECheckKind::AttachmentBoundWhereNotValid), 1u);
    EXPECT_EQ(report.ErrorCount(), 1u);

    ASSERT_TRUE(Store(file, "Attachment_Type", std::vector<CAttachment_TypeBase>{}));
    report = tessmeta::CheckModelFile(file);
    EXPECT_EQ(report.Count(ECheckKind::ValidAttachmentTypeWithoutType), 1u);
    EXPECT_EQ(report.Count(ECheckKind::AttachmentWithoutType), 1u);
    EXPECT_EQ(report.Count(ECheckKind::AttachmentBoundWhereNotValid), 1u);
}

}  // namespace
