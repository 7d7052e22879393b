#include "layout/layout_check.h"

#include <string>
#include <unordered_set>

namespace tessmeta {

void CheckLayoutTables(CZmfFile& file, CReporter& out) {
    std::unordered_set<DWORD> pairs, names, types;
    ForEachRow<CSubmodel_AlgorithmBase>(
        file, "Submodel_Algorithm",
        [&](const CSubmodel_AlgorithmBase& r) { pairs.insert(r.Submodel_Algorithm_ID); });
    ForEachRow<CLayout_Property_NameBase>(
        file, "Layout_Property_Name",
        [&](const CLayout_Property_NameBase& r) { names.insert(r.Layout_Property_Name_ID); });
    ForEachRow<CData_TypeBase>(file, "Data_Type",
                               [&](const CData_TypeBase& r) { types.insert(r.Data_Type_ID); });

    ForEachRow<CAlgorithm_PropertyBase>(
        file, "Algorithm_Property", [&](const CAlgorithm_PropertyBase& r) {
            auto report = [&](ECheckKind kind, const char* what, DWORD id) {
                out.Add(kind, "Algorithm_Property",
                        "parameter value " + std::to_string(r.Algorithm_Property_ID) + ": " + what +
                            " " + std::to_string(id) + " does not exist");
            };
            if (!pairs.count(r.Submodel_Algorithm_ID))
                report(ECheckKind::AlgorithmPropertyWithoutSubmodelAlgorithm, "submodel algorithm",
                       r.Submodel_Algorithm_ID);
            if (!names.count(r.Layout_Property_Name_ID))
                report(ECheckKind::AlgorithmPropertyWithoutName, "parameter name",
                       r.Layout_Property_Name_ID);
            if (!types.count(r.Data_Type_ID))
                report(ECheckKind::AlgorithmPropertyWithoutDataType, "data type", r.Data_Type_ID);
        });
}

}  // namespace tessmeta
