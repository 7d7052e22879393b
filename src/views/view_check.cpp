#include "views/view_check.h"

#include <string>
#include <unordered_set>

namespace tessmeta {
namespace {

template <class Row>
void CheckViewParts(CZmfFile& file, const std::unordered_set<DWORD>& views, CReporter& out) {
    const char* table = Row::Desc().name;
    ForEachRow<Row>(file, table, [&](const Row& r) {
        if (!views.count(r.View_Table_ID))
            out.Add(ECheckKind::ViewRowWithoutView, table,
                    "row " + std::to_string(r.GetTechKey()) + ": view " +
                        std::to_string(r.View_Table_ID) + " does not exist");
    });
}

}  // namespace

void CheckViewTables(CZmfFile& file, CReporter& out) {
    std::unordered_set<DWORD> views;
    ForEachRow<CView_TableBase>(file, "View_Table",
                                [&](const CView_TableBase& r) { views.insert(r.View_Table_ID); });
    CheckViewParts<CView_ComponentBase>(file, views, out);
    CheckViewParts<CView_ColumnBase>(file, views, out);
    CheckViewParts<CView_FieldBase>(file, views, out);
    CheckViewParts<CView_Field_ColumnBase>(file, views, out);
    CheckViewParts<CView_Column_UsageBase>(file, views, out);
}

}  // namespace tessmeta
