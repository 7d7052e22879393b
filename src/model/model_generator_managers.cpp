// The generator's share of the data dictionary, properties, meta-class members,
// repository modifications and views: what a working model of the generated size
// holds besides its objects, each made through its manager's public calls.
#include <cstdio>
#include <vector>

#include "model/model_generator_detail.h"

namespace tessmeta {
namespace {

// The generated objects of the kinds the shares attach to, in id order.
struct SObjectsByKind {
    std::vector<ULONG> entities, attributes, indexes;
};

SObjectsByKind CollectObjects(CGuidMgr& guids) {
    SObjectsByKind found;
    const int entity = guids.GetEntityObjectTypeId();
    const int attribute = guids.GetAttributeObjectTypeId();
    const int index = guids.GetIndexObjectTypeId();
    const auto count = static_cast<ULONG>(guids.GetUniqueObjCount());
    for (ULONG id = 1; id <= count; ++id) {
        const int type = guids.GetObjectTypeId(id);
        if (type == entity)
            found.entities.push_back(id);
        else if (type == attribute)
            found.attributes.push_back(id);
        else if (type == index)
            found.indexes.push_back(id);
    }
    return found;
}

// Domains (one per 200 objects), defaults, rules and user data types (one per
// 1,000 each), each with its own unique object; one attribute in ten bound to a
// domain. An attachment type valid on entities with five attachments, one bound
// to every 50th entity. The system libraries and triggers of platform 1, and one
// procedure per 10,000 objects.
void GenerateDictionary(CModelFile& model, const SGenerateOptions& options,
                        const SObjectsByKind& objects, SGenerateSummary& summary) {
    CGuidMgr& guids = model.GetGuidMgr();
    CDictObjectMgr& dictionary = model.GetDictObjectMgr();
    CRefObjectMgr& refs = model.GetRefObjectMgr();
    const DWORD main = dictionary.GetDiagramSpecificData_Dictionary_ID();
    auto item = [&](const char* type, DWORD (CDictObjectMgr::*insert)(DWORD, DWORD)) {
        const int object = guids.GetNewUniqueId(CString(type), 0, 0, 0);
        return object > 0 ? (dictionary.*insert)(main, static_cast<DWORD>(object)) : 0;
    };
    std::vector<DWORD> domains;
    for (std::uint64_t i = 0; i < options.objects / 200; ++i)
        if (const DWORD domain = item("Domain", &CDictObjectMgr::InsertDomain)) {
            domains.push_back(domain);
            ++summary.domains;
        }
    for (std::uint64_t i = 0; i < options.objects / 1000; ++i) {
        summary.defaults += item("Default", &CDictObjectMgr::InsertDefault) != 0;
        summary.rules += item("Rule", &CDictObjectMgr::InsertRule) != 0;
        summary.userDataTypes += item("User Data Type", &CDictObjectMgr::InsertUserDatatype) != 0;
    }
    const ULONG attributeTable = model.GetMetaTableTbl().GetTechKey(CEnhMetaTableTbl::Attribute);
    if (!domains.empty())
        for (std::size_t i = 0; i < objects.attributes.size(); i += 10)
            summary.bindings +=
                refs.InsertBoundDictObject(domains[(i / 10) % domains.size()], attributeTable,
                                           objects.attributes[i], CString()) != 0;

    // Attachment type valid on meta table 1 (entities), bound there.
    DWORD registry = 0;
    CString typeName("Steward"), typeText("Who looks after the data"), none;
    const DWORD type =
        dictionary.InsertAttachmentType(typeName, typeText, 0, main, registry, FALSE);
    dictionary.InsertValidAttachmentType(type, 1, 0, 0, registry, FALSE);
    std::vector<DWORD> attachments;
    char text[48];
    for (int i = 0; i < 5; ++i) {
        std::snprintf(text, sizeof text, "Team %d", i + 1);
        CString name(text), value("steward");
        DWORD attachmentItem = 0;
        if (dictionary.InsertAttachment(type, name, none, value, 0, attachmentItem, FALSE)) {
            attachments.push_back(attachmentItem);
            ++summary.attachments;
        }
    }
    if (!attachments.empty())
        for (std::size_t i = 0; i < objects.entities.size(); i += 50)
            summary.bindings +=
                refs.InsertBoundDictObject(attachments[(i / 50) % attachments.size()], 1,
                                           objects.entities[i], CString()) != 0;

    CList<DWORD, DWORD> libraries, triggers;
    dictionary.InsertSystemTriggerLibs(1, libraries);
    dictionary.InsertSystemTriggers(1, triggers);
    summary.libraries += static_cast<std::uint64_t>(libraries.GetCount());
    summary.triggers += static_cast<std::uint64_t>(triggers.GetCount());
    for (std::uint64_t i = 0; i < options.objects / 10000; ++i) {
        std::snprintf(text, sizeof text, "proc_%llu", static_cast<unsigned long long>(i));
        CString name(text), description("Generated procedure"), body("BEGIN NULL; END;");
        DWORD procedureItem = 0;
        summary.procedures +=
            dictionary.InsertProcedure(name, description, body, 0, main, procedureItem, FALSE) != 0;
    }
}

// Three properties of a classification valid on entities, set on one entity in
// five (a sensitivity from its allowed values, a retention in days, whether it
// holds personal data); one member per index naming the attribute it covers.
void GenerateMetadata(CModelFile& model, const SObjectsByKind& objects, CTextMaker& maker,
                      SGenerateSummary& summary) {
    CPropertyMgr& props = model.GetPropertyMgr();
    const ULONG entityTable = model.GetMetaTableTbl().GetTechKey(CEnhMetaTableTbl::Entity);
    const ULONG type = props.InsertPropertyType("Classification", "How the data is handled");
    const ULONG properties[] = {
        props.DefineProperty(type, "Sensitivity", "", EPropertyDataType::Text),
        props.DefineProperty(type, "Retention Days", "", EPropertyDataType::Integer),
        props.DefineProperty(type, "Personal Data", "", EPropertyDataType::Boolean)};
    constexpr const char* kLevels[] = {"Public", "Internal", "Confidential"};
    for (const char* value : kLevels)
        props.AddAllowedValue(properties[0], value);
    for (ULONG property : properties)
        props.SetPropertyValidForTable(property, entityTable);
    char days[16];
    for (std::size_t i = 0; i < objects.entities.size(); i += 5) {
        std::snprintf(days, sizeof days, "%u", 30 * (maker.Below(24) + 1));
        const char* values[] = {kLevels[maker.Below(std::size(kLevels))], days,
                                maker.Chance(20) ? "true" : "false"};
        for (std::size_t p = 0; p < std::size(properties); ++p)
            summary.propertyValues +=
                props.InsertProperty(entityTable, objects.entities[i], properties[p], values[p]) ==
                EPropertyResult::Done;
    }
    CEnhMetaClassMemberTbl& members = model.GetMetaClassMemberTbl();
    const ULONG indexTable = model.GetMetaTableTbl().GetTechKey(CEnhMetaTableTbl::Indexes);
    if (!objects.attributes.empty())
        for (ULONG index : objects.indexes)
            summary.metaClassMembers +=
                members.Insert(indexTable, CString("Index Member"), index, nullptr,
                               objects.attributes[maker.Below(objects.attributes.size())]) != 0;
}

// One object in 200 held in the repository and modified locally.
void GenerateModifications(CModelFile& model, CTextMaker& maker, SGenerateSummary& summary) {
    CGuidMgr& guids = model.GetGuidMgr();
    CRepoTableManager& repository = model.GetRepoTableManager();
    const auto count = static_cast<ULONG>(guids.GetUniqueObjCount());
    for (ULONG id = 1; id <= count; ++id) {
        if (maker.Below(200) != 0) continue;
        guids.FlagOnRepoStatus(id, 2, true);
        summary.modifications +=
            repository.InsertObjectModificationRow(id, CEnhRepoObjModTable::kModified, 0) != 0;
    }
}

// One view per 100 entities, over two of them: two components, four columns,
// three fields (two of columns, one an expression) and two column usages.
void GenerateViews(CModelFile& model, ULONG modelId, const SObjectsByKind& objects,
                   CTextMaker& maker, SGenerateSummary& summary) {
    if (objects.entities.empty()) return;
    CViewMetaDataMgr& views = model.GetViewMetaDataMgr();
    char text[48];
    for (std::uint64_t i = 0; i < objects.entities.size() / 100; ++i) {
        SViewTexts texts;
        std::snprintf(text, sizeof text, "V_SUMMARY_%llu", static_cast<unsigned long long>(i));
        texts.name = text;
        texts.definition = "Totals per customer.";
        texts.where = "c.id = o.customer_id";
        const ULONG view = views.InsertView(modelId, texts, 0);
        if (!view) continue;
        ++summary.views;
        const ULONG left = objects.entities[maker.Below(objects.entities.size())];
        const ULONG right = objects.entities[maker.Below(objects.entities.size())];
        const ULONG c = views.InsertViewComponent(view, left, "CUSTOMER", "c", 1);
        const ULONG o = views.InsertViewComponent(view, right, "ORDER", "o", 2);
        const ULONG name = views.InsertViewColumn(view, c, 0, "name");
        const ULONG id = views.InsertViewColumn(view, c, 0, "id");
        const ULONG customer = views.InsertViewColumn(view, o, 0, "customer_id");
        views.InsertViewColumn(view, o, 0, "amount");
        views.InsertViewFieldColumn(views.InsertViewField(view, "name", "", 1), name, 1);
        views.InsertViewFieldColumn(views.InsertViewField(view, "customer", "", 2), id, 1);
        views.InsertViewField(view, "total", "SUM(o.amount)", 3);
        views.InsertViewColumnUsage(id, kViewClauseWhere, 1, 0);
        views.InsertViewColumnUsage(customer, kViewClauseWhere, 2, 0);
        summary.viewParts += 2 + 4 + 3;  // components, columns, fields
    }
}

}  // namespace

void GenerateMoreManagerShares(CModelFile& model, const SGenerateOptions& options, ULONG modelId,
                               SGenerateSummary& summary) {
    CTextMaker maker(options.seed ^ 0xd1c7u);
    const SObjectsByKind objects = CollectObjects(model.GetGuidMgr());
    GenerateDictionary(model, options, objects, summary);
    GenerateMetadata(model, objects, maker, summary);
    GenerateViews(model, modelId, objects, maker, summary);
    GenerateModifications(model, maker, summary);
}

}  // namespace tessmeta
