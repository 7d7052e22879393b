#include "views/view_check.h"

#include <string>
#include <unordered_set>

namespace tessmeta {
namespace {

template <class Row, class Iterator>
void CheckViewParts(CZmfFile& file, const std::unordered_set<DWORD>& views, CCheckReporter& out) {
    const char* table = Row::Desc().name;
    ForEachStoredRow<Row, Iterator>(file, table, [&](const Row& r) {
        if (!views.count(r.View_Table_ID))
            out.Add(ECheckKind::ViewRowWithoutView, table,
                    "row " + std::to_string(r.GetTechKey()) + ": view " +
                        std::to_string(r.View_Table_ID) + " does not exist");
    });
}

}  // namespace

void CheckViewTables(CZmfFile& file, CCheckReporter& out) {
    std::unordered_set<DWORD> views;
    ForEachStoredRow<CView_TableBase, CView_TableIterator>(
        file, "View_Table", [&](const CView_TableBase& r) { views.insert(r.View_Table_ID); });
    CheckViewParts<CView_ComponentBase, CView_ComponentIterator>(file, views, out);
    CheckViewParts<CView_ColumnBase, CView_ColumnIterator>(file, views, out);
    CheckViewParts<CView_FieldBase, CView_FieldIterator>(file, views, out);
    CheckViewParts<CView_Field_ColumnBase, CView_Field_ColumnIterator>(file, views, out);
    CheckViewParts<CView_Column_UsageBase, CView_Column_UsageIterator>(file, views, out);
}

}  // namespace tessmeta
