// View metadata: inserts that refuse dangling rows, cascading deletes, the SELECT a
// view regenerates, and persistence.
#include "views/view_meta_data_mgr.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "model/model_check.h"
#include "model/model_file.h"
#include "support/row_values.h"
#include "support/test_support.h"

using tessmeta::CModelFile;
using tessmeta::test::TempDir;
using namespace tessmeta;  // the view constants

namespace {

// A view of two components with plain, expression and nameless-expression fields.
struct SOrdersView {
    ULONG view, customer, order;                  // the view and its components
    ULONG name, customerId, orderCustomer, date;  // columns
    ULONG fName, fCustomer, fCount, fBoth;        // fields
};

SOrdersView BuildOrdersView(CViewMetaDataMgr& views, ULONG modelId) {
    SOrdersView v{};
    SViewTexts texts;
    texts.name = "CUSTOMER_ORDERS";
    texts.owner = "sales";
    texts.where = "c.id = o.customer_id";
    texts.having = "COUNT(o.order_date) > 1";
    v.view = views.InsertView(modelId, texts, kViewSelectDistinct);
    v.customer = views.InsertViewComponent(v.view, 0, "CUSTOMER", "c", 1);
    v.order = views.InsertViewComponent(v.view, 0, "ORDERS", "", 2);
    v.name = views.InsertViewColumn(v.view, v.customer, 0, "name");
    v.customerId = views.InsertViewColumn(v.view, v.customer, 0, "id");
    v.orderCustomer = views.InsertViewColumn(v.view, v.order, 0, "customer_id");
    v.date = views.InsertViewColumn(v.view, v.order, 0, "order_date");
    // Positions out of insertion order: the SELECT sorts by them.
    v.fName = views.InsertViewField(v.view, "name", "", 1);
    v.fCustomer = views.InsertViewField(v.view, "customer", "", 2);
    v.fCount = views.InsertViewField(v.view, "orders", "COUNT(o.order_date)", 4);
    v.fBoth = views.InsertViewField(v.view, "", "c.id || '/' || customer_id", 3);
    views.InsertViewFieldColumn(v.fName, v.name, 1);
    views.InsertViewFieldColumn(v.fCustomer, v.customerId, 1);
    views.InsertViewFieldColumn(v.fCount, v.date, 1);
    views.InsertViewFieldColumn(v.fBoth, v.orderCustomer, 2);
    views.InsertViewFieldColumn(v.fBoth, v.customerId, 1);
    views.InsertViewColumnUsage(v.customerId, kViewClauseWhere, 1, 0);
    views.InsertViewColumnUsage(v.orderCustomer, kViewClauseWhere, 2, 0);
    views.InsertViewColumnUsage(v.customerId, kViewClauseGroupBy, 2, 0);
    views.InsertViewColumnUsage(v.name, kViewClauseGroupBy, 1, 0);
    views.InsertViewColumnUsage(v.date, kViewClauseOrderBy, 1, kViewUsageDescending);
    return v;
}

// Rows of one view per table: components, columns, fields, field columns, usages.
using Counts = std::array<int, 5>;
Counts CountRows(CViewMetaDataMgr& views, ULONG view) {
    Counts n{};
    for (auto* r = views.GetFirstViewComponentFKRow(view); r; r = views.GetNextViewComponentFKRow())
        ++n[0];
    for (auto* r = views.GetFirstViewColumnFKRow(view); r; r = views.GetNextViewColumnFKRow())
        ++n[1];
    for (auto* r = views.GetFirstViewFieldFKRow(view); r; r = views.GetNextViewFieldFKRow())
        ++n[2];
    for (auto* r = views.GetFirstViewFieldColumnFKRow(view); r;
         r = views.GetNextViewFieldColumnFKRow())
        ++n[3];
    for (auto* r = views.GetFirstViewColumnUsageFKRow(view); r;
         r = views.GetNextViewColumnUsageFKRow())
        ++n[4];
    return n;
}

// Every row of the six tables, every column, texts resolved, in list order.
std::vector<std::string> AllRows(CModelFile& model) {
    std::vector<std::string> rows;
    auto add = [&](auto& table) {
        for (POSITION pos = table.GetFirstRowPosition(); pos;) {
            const auto* row = table.GetNextRow(pos);
            std::string text = tessmeta::test::RowText(row->Desc(), *row);
            for (int column = 0;; ++column) {
                CString value;
                if (!table.GetText(row, column, value)) break;
                text.append("|").append(value.View());
            }
            rows.push_back(text);
        }
    };
    CViewMetaDataMgr& views = model.GetViewMetaDataMgr();
    add(views.GetViewTable());
    add(views.GetViewComponentTable());
    add(views.GetViewColumnTable());
    add(views.GetViewFieldTable());
    add(views.GetViewFieldColumnTable());
    add(views.GetViewColumnUsageTable());
    return rows;
}

TEST(ViewMetaData, DeletesCascadeAndTheSelectIsWrittenFromTheRows) {
    auto model = CModelFile::CreateInMemory();
    CViewMetaDataMgr& views = model->GetViewMetaDataMgr();
    CGuidMgr& guids = model->GetGuidMgr();
    const SOrdersView other = BuildOrdersView(views, 1);
    const int objectsBefore = guids.GetUniqueObjCount();
    const int usagesBefore = model->GetNameSpaceMgr().GetStringUsageTable().GetCount();
    const SOrdersView v = BuildOrdersView(views, 1);
    ASSERT_EQ(CountRows(views, v.view), (Counts{2, 4, 4, 5, 5}));
    ASSERT_EQ(guids.GetUniqueObjCount(), objectsBefore + 21);  // one for each row

    // A column: its usages and field columns go, and the plain field it made.
    EXPECT_EQ(views.DeleteViewColumn(v.customerId), 1);
    EXPECT_EQ(CountRows(views, v.view), (Counts{2, 3, 3, 3, 3}));
    EXPECT_EQ(views.GetViewFieldRow(v.fCustomer), nullptr);
    EXPECT_NE(views.GetViewFieldRow(v.fBoth), nullptr);  // it has an expression

    // A component: its columns, with their usages and field columns.
    EXPECT_EQ(views.DeleteViewComponent(v.order), 1);
    EXPECT_EQ(CountRows(views, v.view), (Counts{1, 1, 3, 1, 1}));
    EXPECT_NE(views.GetViewFieldRow(v.fCount), nullptr);

    // A field: its field columns.
    EXPECT_EQ(views.DeleteViewField(v.fName), 1);
    EXPECT_EQ(CountRows(views, v.view), (Counts{1, 1, 2, 0, 1}));

    // The view: everything else, with the unique objects and texts of its rows.
    EXPECT_EQ(views.DeleteView(v.view), 1);
    EXPECT_EQ(CountRows(views, v.view), (Counts{}));
    EXPECT_EQ(views.GetViewRow(v.view), nullptr);
    EXPECT_EQ(guids.GetUniqueObjCount(), objectsBefore);
    EXPECT_EQ(model->GetNameSpaceMgr().GetStringUsageTable().GetCount(), usagesBefore);

    // The other view is untouched; deleting what is gone finds nothing.
    EXPECT_EQ(CountRows(views, other.view), (Counts{2, 4, 4, 5, 5}));
    EXPECT_EQ(views.DeleteView(v.view), 0);
    EXPECT_EQ(views.DeleteViewComponent(v.customer), 0);
    EXPECT_EQ(views.DeleteViewColumn(v.name), 0);
    EXPECT_EQ(views.DeleteViewField(v.fCount), 0);

    // The SELECT is written from the fields, components and clauses of the other view.
    CString sql;
    ASSERT_EQ(views.GetViewSelect(other.view, sql), 1);
    EXPECT_STREQ(sql,
                 "SELECT DISTINCT c.name, c.id AS customer, c.id || '/' || customer_id, "
                 "COUNT(o.order_date) AS orders\n"
                 "FROM CUSTOMER c, ORDERS\n"
                 "WHERE c.id = o.customer_id\n"
                 "GROUP BY c.name, c.id\n"
                 "HAVING COUNT(o.order_date) > 1\n"
                 "ORDER BY ORDERS.order_date DESC");

    // Texts and positions changed in place; a field whose column went shows as NULL.
    views.GetViewComponentTable().SetText(other.customer, kViewComponentAlias, "");
    views.UpdateViewField(other.fName, 9);
    views.UpdateView(other.view, 1, 0);
    views.GetViewTable().SetText(other.view, kViewHaving, "");
    views.DeleteViewFieldColumn(views.GetFirstViewFieldColumnFKRow(other.view)->GetTechKey());
    views.GetViewFieldTable().SetText(other.fCount, kViewFieldExpression, "");
    ASSERT_EQ(views.GetViewSelect(other.view, sql), 1);
    EXPECT_STREQ(sql,
                 "SELECT CUSTOMER.id AS customer, c.id || '/' || customer_id, "
                 "ORDERS.order_date AS orders, NULL AS name\n"
                 "FROM CUSTOMER, ORDERS\n"
                 "WHERE c.id = o.customer_id\n"
                 "GROUP BY CUSTOMER.name, CUSTOMER.id\n"
                 "ORDER BY ORDERS.order_date DESC");

    const ULONG bare = views.InsertView(1, {}, 0);
    ASSERT_EQ(views.GetViewSelect(bare, sql), 1);
    EXPECT_STREQ(sql, "SELECT *");
    sql = "kept";
    EXPECT_EQ(views.GetViewSelect(999, sql), 0);
    EXPECT_STREQ(sql, "kept");
}

// Through a real file: every row, text and edit state comes back; the rows' unique
// objects carry the view's model, and follow it when the view moves.
TEST(ViewMetaData, ViewsSurviveReopeningWithTheirEditStates) {
    TempDir dir;
    const std::string path = dir.File("views.zmf");
    std::string error;
    std::vector<std::string> saved;
    SOrdersView v{};
    CString select;
    {
        auto model = CModelFile::Create(path, &error);
        ASSERT_TRUE(model) << error;
        CViewMetaDataMgr& views = model->GetViewMetaDataMgr();
        v = BuildOrdersView(views, 7);
        const ULONG second = BuildOrdersView(views, 8).view;
        views.GetViewRow(v.view)->SetEditState(0x80028003);
        views.GetViewRow(second)->SetUserEditState(1);
        EXPECT_EQ(views.GetAndUpdateViewEditState(second), 1u);
        EXPECT_EQ(views.GetAndUpdateViewEditState(999), 0u);
        views.GetViewSelect(v.view, select);
        ASSERT_TRUE(model->Save());
        saved = AllRows(*model);
    }
    auto model = CModelFile::Open(path, &error);
    ASSERT_TRUE(model) << error;
    CViewMetaDataMgr& views = model->GetViewMetaDataMgr();
    EXPECT_EQ(AllRows(*model), saved);
    EXPECT_EQ(views.GetViewRow(v.view)->GetEditState(), 0x80028003u);
    EXPECT_EQ(views.GetFirstViewFKRow(8)->GetEditState(), 0x00010000u);
    CString reloaded;
    views.GetViewSelect(v.view, reloaded);
    EXPECT_EQ(reloaded, select);
    EXPECT_EQ(tessmeta::CheckModelFile(model->GetFile()).ErrorCount(), 0u);
}

}  // namespace
