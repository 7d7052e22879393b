// tessmeta layout: the automatic layout settings of submodels. Also what info and
// demo show of the layout settings and the views.
#include <cstdio>
#include <map>
#include <vector>

#include "command.h"

namespace tessmeta::tool {
namespace {

// The name of a constant-table row, or "(<what> <id>)" when the id names none.
template <class Row>
std::string NameOr(const Row* row, const char* what, ULONG id) {
    if (row) return std::string(row->Name.GetValue().View());
    std::string text = "(";
    text.append(what).append(" ").append(std::to_string(id)).append(")");
    return text;
}

// The algorithm rows of every submodel that has settings, by submodel id.
std::map<ULONG, std::vector<const CKelSubmodelAlgorithm*>> SettingsBySubmodel(
    CAutoLayoutDataMgr& layout) {
    std::map<ULONG, std::vector<const CKelSubmodelAlgorithm*>> bySubmodel;
    CEnhSubmodelAlgorithmTable& pairs = layout.GetSubmodelAlgorithmTable();
    for (POSITION pos = pairs.GetFirstRowPosition(); pos;) {
        const CKelSubmodelAlgorithm* row = pairs.GetNextRow(pos);
        bySubmodel[row->Submodel_ID].push_back(row);
    }
    return bySubmodel;
}

void PrintSubmodel(CAutoLayoutDataMgr& layout, ULONG submodelId,
                   const std::vector<const CKelSubmodelAlgorithm*>& algorithms) {
    std::printf("submodel %u: %zu algorithm%s\n", submodelId, algorithms.size(),
                algorithms.size() == 1 ? "" : "s");
    for (const CKelSubmodelAlgorithm* pair : algorithms) {
        const CKelLayoutAlgorithm* algorithm =
            layout.GetLayoutAlgorithmRow(pair->Layout_Algorithm_ID);
        std::printf(
            "  %s%s%s%s\n", NameOr(algorithm, "algorithm", pair->Layout_Algorithm_ID).c_str(),
            algorithm ? " (" : "", algorithm ? algorithm->Description.GetValue().GetString() : "",
            algorithm ? ")" : "");
        for (const CKelAlgorithmProperty* value =
                 layout.GetFirstAlgorithmPropertyFKRow(pair->Submodel_Algorithm_ID);
             value; value = layout.GetNextAlgorithmPropertyFKRow()) {
            const ULONG nameId = value->Layout_Property_Name_ID, typeId = value->Data_Type_ID;
            std::printf(
                "    %-26s %-8s %s\n",
                NameOr(layout.GetLayoutPropertyNameRow(nameId), "parameter", nameId).c_str(),
                NameOr(layout.GetDataTypeRow(typeId), "type", typeId).c_str(),
                value->Value.GetValue().GetString());
        }
    }
}

}  // namespace

int RunLayout(const std::string& path, std::uint32_t submodelId) {
    auto model = OpenModel(path);
    if (!model) return kExitBadInput;
    CAutoLayoutDataMgr& layout = model->GetAutoLayoutDataMgr();
    const auto bySubmodel = SettingsBySubmodel(layout);
    if (submodelId) {
        const auto found = bySubmodel.find(submodelId);
        if (found == bySubmodel.end())
            return Fail("submodel " + std::to_string(submodelId) + " has no layout settings",
                        kExitProblems);
        PrintSubmodel(layout, found->first, found->second);
        return kExitOk;
    }
    if (bySubmodel.empty())
        std::printf("%s: no layout settings\n", zmf::ShownLocation(path).c_str());
    for (const auto& [id, algorithms] : bySubmodel)
        PrintSubmodel(layout, id, algorithms);
    return kExitOk;
}

void PrintLayoutAndViewSummary(CModelFile& model) {
    CAutoLayoutDataMgr& layout = model.GetAutoLayoutDataMgr();
    std::printf("\nlayout settings: %zu submodels, %d algorithm settings, %d parameter values\n",
                SettingsBySubmodel(layout).size(), layout.GetSubmodelAlgorithmTable().GetCount(),
                layout.GetAlgorithmPropertyTable().GetCount());
    CViewMetaDataMgr& views = model.GetViewMetaDataMgr();
    std::printf("views: %d (%d components, %d columns, %d fields)\n",
                views.GetViewTable().GetCount(), views.GetViewComponentTable().GetCount(),
                views.GetViewColumnTable().GetCount(), views.GetViewFieldTable().GetCount());
}

// ---- demo -------------------------------------------------------------------------------

namespace {

struct SDemoValue {
    const char* algorithm;
    const char* parameter;
    const char* type;
    const char* value;
};

// Submodel 1 uses the force-directed layout, submodel 2 the layered one; the node
// distance of submodel 1 is set twice (the second value stays).
constexpr SDemoValue kFirstSubmodel[] = {
    {"Force", "FORCE_NODE_DIST_MIN", "Integer", "10"},
    {"Force", "FORCE_NODE_DIST_MAX", "Integer", "200"},
    {"Force", "FORCE_NODE_DIST", "Integer", "40"},
    {"Force", "FORCE_NODE_DIST", "Integer", "60"},
};
constexpr SDemoValue kSecondSubmodel[] = {
    {"Layered", "LAYERED_STEP_V", "Float", "1.5"},
    {"Layered", "LAYERED_FLAGS", "Integer", "3"},
    {"Circle", "CIRCLE_DENSITY", "Float", "0.75"},
};

// Every parameter value of the submodels as "submodel/algorithm/name=value;".
std::string FormatLayoutSettings(CAutoLayoutDataMgr& layout, const ULONG (&submodels)[2]) {
    std::string text;
    for (ULONG submodel : submodels) {
        for (const CKelSubmodelAlgorithm* pair = layout.GetFirstSubmodelAlgorithmFKRow(submodel);
             pair; pair = layout.GetNextSubmodelAlgorithmFKRow()) {
            for (const CKelAlgorithmProperty* v =
                     layout.GetFirstAlgorithmPropertyFKRow(pair->Submodel_Algorithm_ID);
                 v; v = layout.GetNextAlgorithmPropertyFKRow())
                text += std::to_string(submodel) + "/" + std::to_string(pair->Layout_Algorithm_ID) +
                        "/" + std::to_string(v->Layout_Property_Name_ID) + "=" +
                        std::string(v->Value.GetValue().View()) + ";";
        }
    }
    return text;
}

}  // namespace

SLayoutViewDemo BuildLayoutViewDemo(CModelFile& model, ULONG modelId) {
    CGuidMgr& guids = model.GetGuidMgr();
    CAutoLayoutDataMgr& layout = model.GetAutoLayoutDataMgr();
    SLayoutViewDemo demo;
    auto store = [&](ULONG submodel, const auto& values) {
        for (const SDemoValue& v : values)
            layout.UpdateSubmodelAlgorithmProperty(
                submodel, layout.GetLayoutAlgorithmRow(CString(v.algorithm))->Layout_Algorithm_ID,
                v.parameter, v.type, v.value);
    };
    for (ULONG& submodel : demo.submodels)
        submodel = static_cast<ULONG>(guids.GetNewUniqueId(CString("SubModel"), modelId, 0, 0));
    store(demo.submodels[0], kFirstSubmodel);
    store(demo.submodels[1], kSecondSubmodel);

    CViewMetaDataMgr& views = model.GetViewMetaDataMgr();
    SViewTexts texts;
    texts.name = "CUSTOMER_ORDERS";
    texts.definition = "Orders per customer.";
    texts.where = "c.customer_id = o.customer_id";
    demo.view = views.InsertView(modelId, texts, 0);
    const ULONG customer = views.InsertViewComponent(demo.view, 0, "CUSTOMER", "c", 1);
    const ULONG order = views.InsertViewComponent(demo.view, 0, "ORDER", "o", 2);
    const ULONG name = views.InsertViewColumn(demo.view, customer, 0, "name");
    const ULONG customerId = views.InsertViewColumn(demo.view, customer, 0, "customer_id");
    views.InsertViewColumn(demo.view, order, 0, "customer_id");
    const ULONG date = views.InsertViewColumn(demo.view, order, 0, "order_date");
    views.InsertViewFieldColumn(views.InsertViewField(demo.view, "name", "", 1), name, 1);
    views.InsertViewFieldColumn(views.InsertViewField(demo.view, "customer", "", 2), customerId, 1);
    views.InsertViewField(demo.view, "orders", "COUNT(*)", 3);
    views.InsertViewColumnUsage(customerId, kViewClauseWhere, 1, 0);
    views.InsertViewColumnUsage(name, kViewClauseGroupBy, 1, 0);
    views.InsertViewColumnUsage(customerId, kViewClauseGroupBy, 2, 0);
    views.InsertViewColumnUsage(date, kViewClauseWhere, 2, 0);
    views.GetViewSelect(demo.view, demo.select);
    demo.settings = FormatLayoutSettings(layout, demo.submodels);
    return demo;
}

int VerifyLayoutViewDemo(CModelFile& model, const SLayoutViewDemo& demo) {
    int problems = 0;
    const std::string settings = FormatLayoutSettings(model.GetAutoLayoutDataMgr(), demo.submodels);
    if (settings != demo.settings) {
        std::printf("layout settings: expected %s, found %s\n", demo.settings.c_str(),
                    settings.c_str());
        ++problems;
    }
    CString select;
    model.GetViewMetaDataMgr().GetViewSelect(demo.view, select);
    if (select != demo.select) {
        std::printf("view %u: expected\n%s\nfound\n%s\n", demo.view, demo.select.GetString(),
                    select.GetString());
        ++problems;
    }
    return problems;
}

}  // namespace tessmeta::tool
