// tessmeta props: an object's properties and display overrides; and the metadata
// parts of info and demo.
#include <cstdio>
#include <string>

#include "command.h"

namespace tessmeta::tool {
namespace {

// The object's type and its name in the "<type> Name" role, when it has them.
std::string Describe(CModelFile& model, ULONG objectId) {
    CString type;
    if (!model.GetGuidMgr().GetObjectType(objectId, type)) return "not a unique object";
    CNameSpaceMgr& names = model.GetNameSpaceMgr();
    CString name;
    const int usage = names.GetStringUsageTypeId(type + " Name");
    const int id = names.GetStringIdFromObjectAndUsageTypeIds(static_cast<int>(objectId), usage);
    if (usage && id) names.GetStringFromNameSpace(name, id);
    std::string text(type.GetString());
    if (!name.IsEmpty()) text += std::string(" \"") + name.GetString() + "\"";
    return text;
}

int PrintProperties(CModelFile& model, ULONG objectId) {
    CEnhMetaTableTbl& metaTables = model.GetMetaTableTbl();
    int count = 0;
    for (POSITION pos = metaTables.GetFirstRowPosition(); pos;) {
        const CKelMetaTable* table = metaTables.GetNextRow(pos);
        const auto list = model.GetPropertyMgr().ListProperties(table->MetaTable_ID, objectId);
        ULONG member = 0;
        for (const SObjectProperty& p : list) {
            if (p.memberId != member) {
                member = p.memberId;
                const CKelMetaClassMember* row = model.GetMetaClassMemberTbl().GetRow(member);
                std::printf("  %s (meta table %s, member %u):\n",
                            row ? static_cast<const char*>(row->Name) : "?",
                            static_cast<const char*>(table->Name), member);
            }
            std::printf("    %s / %s (%s) = \"%s\"%s\n",
                        p.propertyTypeName.IsEmpty() ? "?" : p.propertyTypeName.GetString(),
                        p.propertyName.IsEmpty() ? "?" : p.propertyName.GetString(),
                        PropertyDataTypeName(p.dataType), p.value.GetString(),
                        p.accepted ? "" : "  (no longer accepted)");
            ++count;
        }
    }
    return count;
}

int PrintOverrides(CModelFile& model, ULONG objectId) {
    CObjectPropOverrideMgr& overrides = model.GetObjectPropOverrideMgr();
    const auto colors = overrides.GetColorOverrides(objectId);
    const auto fonts = overrides.GetFontOverrides(objectId);
    if (colors.empty() && fonts.empty()) return 0;
    std::printf("  display overrides:\n");
    for (const SColorOverride& c : colors)
        std::printf("    colour %u = #%02x%02x%02x\n", c.colorIndex, c.rgb & 0xFF,
                    (c.rgb >> 8) & 0xFF, (c.rgb >> 16) & 0xFF);
    for (const SFontOverride& f : fonts)
        std::printf("    font %u = \"%s\" %u.%u pt%s%s%s%s\n", f.fontIndex, f.faceName.GetString(),
                    f.pointSize / 10, f.pointSize % 10, f.style & kFontBold ? " bold" : "",
                    f.style & kFontItalic ? " italic" : "",
                    f.style & kFontUnderline ? " underline" : "",
                    f.style & kFontStrikeOut ? " strike-out" : "");
    return static_cast<int>(colors.size() + fonts.size());
}

// The first object of the type, or 0.
ULONG FirstObjectOfType(CGuidMgr& guids, int typeId) {
    for (POSITION pos = guids.GetUniqueObjectStartPosition(); pos;) {
        const ULONG id = guids.GetNextUniqueObject(pos);
        if (typeId && guids.GetObjectTypeId(id) == typeId) return id;
    }
    return 0;
}

}  // namespace

int RunProps(const std::string& path, std::uint32_t objectId) {
    auto model = OpenModel(path);
    if (!model) return kExitBadInput;
    std::printf("object %u (%s):\n", objectId, Describe(*model, objectId).c_str());
    const int properties = PrintProperties(*model, objectId);
    const int overrides = PrintOverrides(*model, objectId);
    std::printf("%d propert%s, %d display override%s\n", properties, properties == 1 ? "y" : "ies",
                overrides, overrides == 1 ? "" : "s");
    return kExitOk;
}

void PrintMetadataInfo(CModelFile& model) {
    CPropertyMgr& props = model.GetPropertyMgr();
    CObjectPropOverrideMgr& overrides = model.GetObjectPropOverrideMgr();
    CSchemaObjectMgr& schema = model.GetSchemaObjectMgr();
    std::printf("\nmetadata:\n");
    std::printf("  %-26s %10d\n", "meta tables", model.GetMetaTableTbl().GetCount());
    std::printf("  %-26s %10d\n", "meta-class members", model.GetMetaClassMemberTbl().GetCount());
    std::printf("  %-26s %10d\n", "property types", props.GetPropertyTypeTbl().GetCount());
    std::printf("  %-26s %10d\n", "properties", props.GetPropertyTbl().GetCount());
    std::printf("  %-26s %10d\n", "allowed values", props.GetPropertyValueTbl().GetCount());
    std::printf("  %-26s %10d\n", "classes of objects", props.GetMetaClassTbl().GetCount());
    std::printf("  %-26s %10d\n", "property values", props.GetPropertyUsageTbl().GetCount());
    std::printf("  %-26s %10d\n", "colour overrides", overrides.GetColorOverrideTbl().GetCount());
    std::printf("  %-26s %10d\n", "font overrides", overrides.GetFontOverrideTbl().GetCount());
    std::printf("  %-26s %10d\n", "code objects", schema.GetCount());
}

SMetadataDemo BuildMetadataDemo(CModelFile& model) {
    CGuidMgr& guids = model.GetGuidMgr();
    CPropertyMgr& props = model.GetPropertyMgr();
    SMetadataDemo demo;
    demo.modelId = FirstObjectOfType(guids, guids.GetModelObjectTypeId());
    demo.entityId = FirstObjectOfType(guids, guids.GetEntityObjectTypeId());
    const ULONG entityTable = model.GetMetaTableTbl().GetTechKey(CEnhMetaTableTbl::Entity);
    const ULONG governance = props.InsertPropertyType("Governance", "Who owns what");
    const ULONG owner = props.DefineProperty(governance, "Data Owner", "", EPropertyDataType::Text);
    const ULONG status = props.DefineProperty(governance, "Status", "", EPropertyDataType::Text);
    const ULONG reviewed =
        props.DefineProperty(governance, "Reviewed", "", EPropertyDataType::Date);
    for (const char* value : {"Draft", "Approved", "Retired"})
        props.AddAllowedValue(status, value);
    for (ULONG property : {owner, status, reviewed})
        props.SetPropertyValidForTable(property, entityTable);
    props.InsertProperty(entityTable, demo.entityId, owner, "Sales team");
    props.InsertProperty(entityTable, demo.entityId, status, "Approved");
    props.InsertProperty(entityTable, demo.entityId, reviewed, "2024-03-01");
    demo.refused = props.InsertProperty(entityTable, demo.entityId, status, "Lost");

    CObjectPropOverrideMgr& overrides = model.GetObjectPropOverrideMgr();
    overrides.SetColorOverride(demo.entityId, 0, 0x00CCFFFF);
    overrides.SetFontOverride(demo.entityId, {0, "Arial", 100, kFontBold});

    CSchemaObjectMgr& schema = model.GetSchemaObjectMgr();
    const ULONG m = demo.modelId;
    const CString none;
    schema.GetStorageObjectTable().Insert(m, "TS_DATA", "dba", "Main tablespace",
                                          "DATAFILE 'data.dbf' SIZE 100M", 0, 0);
    schema.GetProcTable().Insert(m, "add_customer", "app", "Adds a customer",
                                 "BEGIN INSERT INTO customer ...; END;", 0, 0);
    schema.GetDbPackageTable().Insert(m, "orders_pkg", "app", "Order logic",
                                      "PACKAGE orders_pkg IS ...", "PACKAGE BODY orders_pkg ...", 0,
                                      0);
    schema.GetDbTriggerTable().Insert(m, "trg_order_audit", "app", "Audits orders",
                                      "AFTER INSERT ON order ...", 0, 0);
    schema.GetTemplatedProcTable().Insert(m, "ins_order", "app", "Generated insert",
                                          "%Insert(order)", 0, 0);
    demo.properties = static_cast<int>(props.ListProperties(entityTable, demo.entityId).size());
    demo.codeObjects = schema.GetCount();
    return demo;
}

int VerifyMetadataDemo(CModelFile& model, const SMetadataDemo& demo) {
    int problems = 0;
    const ULONG entityTable = model.GetMetaTableTbl().GetTechKey(CEnhMetaTableTbl::Entity);
    const auto list = model.GetPropertyMgr().ListProperties(entityTable, demo.entityId);
    if (static_cast<int>(list.size()) != demo.properties || list.empty() ||
        list.front().value != "Sales team") {
        std::printf("properties: expected %d, found %zu\n", demo.properties, list.size());
        ++problems;
    }
    if (demo.refused != EPropertyResult::NotAllowed) {
        std::printf("a value outside the allowed list was not refused\n");
        ++problems;
    }
    ULONG rgb = 0;
    if (!model.GetObjectPropOverrideMgr().GetColorOverride(demo.entityId, 0, rgb) ||
        rgb != 0x00CCFFFF) {
        std::printf("colour override lost\n");
        ++problems;
    }
    CString name;
    CEnhDbPackageTable& packages = model.GetSchemaObjectMgr().GetDbPackageTable();
    const CKelDbPackage* package = packages.GetFirstFKRow(demo.modelId);
    if (model.GetSchemaObjectMgr().GetCount() != demo.codeObjects || !package ||
        !packages.GetBodyValue(package, name) || name != "PACKAGE BODY orders_pkg ...") {
        std::printf("code objects: expected %d, found %d\n", demo.codeObjects,
                    model.GetSchemaObjectMgr().GetCount());
        ++problems;
    }
    std::printf("  properties set     %d (on object %u; \"Lost\" refused: %s)\n", demo.properties,
                demo.entityId, PropertyResultText(demo.refused));
    std::printf("  display overrides  %d\n",
                model.GetObjectPropOverrideMgr().GetColorOverrideTbl().GetCount() +
                    model.GetObjectPropOverrideMgr().GetFontOverrideTbl().GetCount());
    std::printf("  code objects       %d\n", model.GetSchemaObjectMgr().GetCount());
    return problems;
}

}  // namespace tessmeta::tool
