#include "layout/layout_check.h"

#include <string>
#include <unordered_set>

namespace tessmeta {

void CheckLayoutTables(CZmfFile& file, CCheckReporter& out) {
    std::unordered_set<DWORD> pairs, names, types;
    ForEachStoredRow<CSubmodel_AlgorithmBase, CSubmodel_AlgorithmIterator>(
        file, "Submodel_Algorithm",
        [&](const CSubmodel_AlgorithmBase& r) { pairs.insert(r.Submodel_Algorithm_ID); });
    ForEachStoredRow<CLayout_Property_NameBase, CLayout_Property_NameIterator>(
        file, "Layout_Property_Name",
        [&](const CLayout_Property_NameBase& r) { names.insert(r.Layout_Property_Name_ID); });
    ForEachStoredRow<CData_TypeBase, CData_TypeIterator>(
        file, "Data_Type", [&](const CData_TypeBase& r) { types.insert(r.Data_Type_ID); });

    ForEachStoredRow<CAlgorithm_PropertyBase, CAlgorithm_PropertyIterator>(
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
