#include "model/model_generator.h"

#include <cstdio>
#include <string>

#include "model/model_generator_detail.h"

namespace tessmeta {
namespace {

// A kind of generated object: its meta-class and the usage types of its texts.
struct SObjectKind {
    const char* type;
    const char* prefix;
    const char* nameUsage;
    const char* definitionUsage;  // null: the kind has no definition
    const char* noteUsage;        // null: the kind has no note
    int weight;                   // share among generated objects
};

constexpr SObjectKind kKinds[] = {
    {"Entity", "ENTITY", "Entity Name", "Entity Definition", "Entity Note", 10},
    {"Attribute", "ATTR", "Attribute Name", "Attribute Definition", "Attribute Note", 50},
    {"Relationship", "REL", "Relationship Name", "Relationship Definition", "Relationship Note",
     10},
    {"Index", "IDX", "Index Name", nullptr, nullptr, 8},
    {"View", "VIEW", "View Name", "View Definition", "View Note", 2},
    {"Entity Display", "DISPLAY", "Entity Name", nullptr, nullptr, 10},
    {"Relation Display", "RELDISPLAY", "Relationship Name", nullptr, nullptr, 10},
};

constexpr const char* kWords[] = {"customer", "order",  "invoice", "product", "account", "balance",
                                  "address",  "region", "payment", "status",  "date",    "amount",
                                  "supplier", "stock",  "price",   "note",    "the",     "of",
                                  "for",      "each",   "is",      "a",       "record",  "holds"};

const SObjectKind& PickKind(CTextMaker& maker) {
    int total = 0;
    for (const auto& kind : kKinds)
        total += kind.weight;
    int pick = static_cast<int>(maker.Below(static_cast<std::size_t>(total)));
    for (const auto& kind : kKinds) {
        if (pick < kind.weight) return kind;
        pick -= kind.weight;
    }
    return kKinds[0];
}

// The other managers' share: one reference value per 100 objects in a data
// dictionary of its own, linked in chains of ten; a colour
// override on one object in 20; a few layout settings of the diagram. Runs after
// the objects with a generator of its own, so the objects stay those of the seed.
void GenerateManagerShares(CModelFile& model, const SGenerateOptions& options, int diagramId,
                           SGenerateSummary& summary) {
    CTextMaker maker(options.seed ^ 0x5eedu);
    CDictObjectMgr& dictionary = model.GetDictObjectMgr();
    const DWORD dataDictionary =
        dictionary.CreateDataDictionary(CString("Generated dictionary"), CString("Generated"));
    DWORD previous = 0;
    char text[64];
    const std::uint64_t values = options.objects / 100;
    for (std::uint64_t i = 0; i < values; ++i) {
        std::snprintf(text, sizeof text, "RV_%llu", static_cast<unsigned long long>(i));
        CString name(text), description("Generated value"), value(text + 3), valueDescription,
            minValue, maxValue;
        DWORD dictObject = 0;
        if (!dictionary.InsertRefValue(name, description, value, valueDescription, minValue,
                                       maxValue, FALSE, FALSE, dataDictionary, dictObject, FALSE))
            continue;
        ++summary.dictionaryItems;
        // Chains of ten: a root, then each value under the one before it.
        const DWORD parent = i % 10 == 0 ? 0 : previous;
        if (dictionary.CreateDictionaryObjectLink(dictObject, parent)) ++summary.dictionaryLinks;
        previous = dictObject;
    }
    CObjectPropOverrideMgr& overrides = model.GetObjectPropOverrideMgr();
    const ULONG objects = static_cast<ULONG>(model.GetGuidMgr().GetUniqueObjCount());
    for (ULONG object = 1; object <= objects; ++object)
        if (maker.Chance(5) &&
            overrides.SetColorOverride(object, maker.Below(4), maker.Below(1u << 24)))
            ++summary.overrides;
    CAutoLayoutDataMgr& layout = model.GetAutoLayoutDataMgr();
    if (const CKelLayoutAlgorithm* force = layout.GetLayoutAlgorithmRow(CString("Force"))) {
        const char* settings[][2] = {
            {"FORCE_FLAGS", "3"}, {"FORCE_START_V", "40"}, {"FORCE_START_H", "60"}};
        for (const auto& setting : settings)
            if (layout.UpdateSubmodelAlgorithmProperty(
                    static_cast<ULONG>(diagramId), force->Layout_Algorithm_ID, CString(setting[0]),
                    CString("Integer"), CString(setting[1])))
                ++summary.layoutSettings;
    }
}

}  // namespace

SGenerateSummary GenerateModel(CModelFile& model, const SGenerateOptions& options) {
    CGuidMgr& guids = model.GetGuidMgr();
    CNameSpaceMgr& names = model.GetNameSpaceMgr();
    CTextMaker maker(options.seed);
    SGenerateSummary summary;

    auto addText = [&](int object, const std::string& text, const char* usage, bool isLong) {
        names.AddString(text.c_str(), object, names.GetStringUsageTypeId(usage));
        ++summary.usages;
        if (isLong) ++summary.longTexts;
    };

    const int modelId = guids.GetNewUniqueId(CString("Model"), 0, 0, 0);
    addText(modelId, "Generated model", "Model Name", false);
    const int diagramId = guids.GetNewUniqueId(CString("Diagram"), 0, 0, 0);
    CString guid;
    guids.GetObjectGUID(static_cast<unsigned>(diagramId), guid);
    guids.CreateObjectDomain(static_cast<ULONG>(diagramId), "Generated diagram", "DIAGRAM", guid,
                             0);
    addText(diagramId, "Generated diagram", "Diagram Name", false);
    // Objects the model had already (a new model's data dictionary) count too.
    summary.objects = static_cast<std::uint64_t>(guids.GetUniqueObjCount());

    char name[64];
    for (std::uint64_t i = summary.objects; i < options.objects; ++i) {
        const SObjectKind& kind = PickKind(maker);
        const int object =
            guids.GetNewUniqueId(CString(kind.type), static_cast<ULONG>(modelId), 0, 0);
        std::snprintf(name, sizeof name, "%s_%llu", kind.prefix,
                      static_cast<unsigned long long>(i));
        addText(object, name, kind.nameUsage, false);
        bool isLong = false;
        if (kind.definitionUsage && maker.Chance(50)) {
            const std::string text = maker.Sentence(8, isLong, kWords);
            addText(object, text, kind.definitionUsage, isLong);
        }
        if (kind.noteUsage && maker.Chance(30)) {
            const std::string text = maker.Sentence(5, isLong, kWords);
            addText(object, text, kind.noteUsage, isLong);
        }
        ++summary.objects;
    }
    if (options.everyManager) {
        GenerateManagerShares(model, options, diagramId, summary);
        GenerateMoreManagerShares(model, options, static_cast<ULONG>(modelId), summary);
    }
    return summary;
}

}  // namespace tessmeta
