// Colour and font overrides: set, replace, clear, list, removal with the object,
// the overrides' own unique objects, and persistence through a real .zmf file.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "model/model_file.h"
#include "support/test_support.h"

using tessmeta::CModelFile;
using tessmeta::test::TempDir;

namespace {

std::string Fonts(const CObjectPropOverrideMgr& mgr, ULONG object) {
    std::string out;
    for (const SFontOverride& f : mgr.GetFontOverrides(object))
        out += std::to_string(f.fontIndex) + ":" + std::string(f.faceName) + "/" +
               std::to_string(f.pointSize) + "/" + std::to_string(f.style) + " ";
    return out;
}

TEST(ObjectPropOverride, SetReplaceClearAndRemoveWithTheObject) {
    TempDir dir;
    auto model = CModelFile::CreateInMemory();
    CGuidMgr& guids = model->GetGuidMgr();
    const int diagramModel = guids.GetNewUniqueId(CString("Model"), 0, 0, 0);
    const auto entity = static_cast<ULONG>(
        guids.GetNewUniqueId(CString("Entity"), static_cast<ULONG>(diagramModel), 0, 0));
    const auto other = static_cast<ULONG>(guids.GetNewUniqueId(CString("Entity"), 0, 0, 0));
    CObjectPropOverrideMgr& mgr = model->GetObjectPropOverrideMgr();

    const ULONG fill = mgr.SetColorOverride(entity, 0, 0x112233);
    ASSERT_NE(fill, 0u);
    EXPECT_EQ(mgr.SetColorOverride(entity, 2, 0x445566), fill + 1);
    EXPECT_EQ(mgr.SetColorOverride(entity, 0, 0x778899), fill);  // replaced in place
    EXPECT_EQ(mgr.SetColorOverride(0, 0, 1), 0u);
    EXPECT_EQ(mgr.SetColorOverride(9999, 0, 1), 0u);  // not a unique object
    mgr.SetColorOverride(other, 0, 0xABCDEF);
    ULONG rgb = 7;
    EXPECT_EQ(mgr.GetColorOverride(entity, 1, rgb), 0);
    EXPECT_EQ(rgb, 7u);
    ASSERT_EQ(mgr.GetColorOverride(entity, 0, rgb), 1);
    EXPECT_EQ(rgb, 0x778899u);

    // The override is an object of the overridden object's model.
    LONG type, owner, plex1, plex2;
    const auto overrideObject =
        static_cast<LONG>(mgr.GetColorOverrideTbl().GetRow(fill)->Global_User_ID);
    ASSERT_TRUE(guids.GetObjectTypeAndModelIds(overrideObject, type, owner, plex1, plex2));
    EXPECT_EQ(type, guids.GetObjectColorOverrideObjectTypeId());
    EXPECT_EQ(owner, diagramModel);

    EXPECT_NE(mgr.SetFontOverride(entity, {1, "Arial", 95, kFontBold | kFontItalic}), 0u);
    EXPECT_NE(mgr.SetFontOverride(entity, {0, "Courier", 100, 0}), 0u);
    EXPECT_NE(mgr.SetFontOverride(entity, {1, "Tahoma", 120, kFontUnderline}), 0u);
    EXPECT_EQ(mgr.SetFontOverride(entity, {2, "Arial", 100, 16}), 0u);  // no such style
    EXPECT_EQ(mgr.SetFontOverride(entity, {2, "", 100, 0}), 0u);
    EXPECT_EQ(Fonts(mgr, entity), "1:Tahoma/120/4 0:Courier/100/0 ");
    SFontOverride font;
    EXPECT_EQ(mgr.GetFontOverride(entity, 5, font), 0);
    EXPECT_EQ(mgr.ClearFontOverride(entity, 0), 1);
    EXPECT_EQ(mgr.ClearFontOverride(entity, 0), 0);
    EXPECT_EQ(mgr.ClearColorOverride(entity, 2), 1);

    ASSERT_TRUE(model->SaveAs(dir.File("o.zmf")));
    model.reset();
    std::string error;
    model = CModelFile::Open(dir.File("o.zmf"), &error);
    ASSERT_TRUE(model) << error;
    CObjectPropOverrideMgr& reloaded = model->GetObjectPropOverrideMgr();
    ASSERT_EQ(reloaded.GetFontOverride(entity, 1, font), 1);
    EXPECT_EQ(font.faceName, "Tahoma");
    EXPECT_EQ(reloaded.GetColorOverrides(entity).size(), 1u);

    const int objects = model->GetGuidMgr().GetUniqueObjCount();
    EXPECT_EQ(reloaded.RemoveObjectOverrides(entity), 2);
    EXPECT_EQ(reloaded.RemoveObjectOverrides(entity), 0);
    EXPECT_EQ(model->GetGuidMgr().GetUniqueObjCount(), objects - 2);  // still New: gone
    EXPECT_EQ(reloaded.GetColorOverrides(other).size(), 1u);
}

}  // namespace
