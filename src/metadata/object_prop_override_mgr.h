// CObjectPropOverrideMgr: per-object colour and font overrides of diagram display.
//
// A model object draws in the colours and fonts of its defaults unless it overrides
// them. An object may override each of its colours (by colour index: which part of
// the object, e.g. fill, outline, text, as the host numbers them) with an RGB value
// ("Object_Color_Override"), and each of its fonts (by font index: which text of
// the object) with a face name, a size and a style ("Object_Font_Override"). Each
// override is a unique object ("Object Color Override", "Object Font Override") of
// the overridden object's model.
//
// An object holds at most one override per colour index and one per font index:
// setting again replaces the value. When an object is deleted, the host calls
// RemoveObjectOverrides so that its overrides go with it. Overrides of objects the
// identity manager does not know are refused (when there is one).
#pragma once

#include <memory>
#include <vector>

#include "foundation/enh_table.h"
#include "identity/guid_mgr.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "zmflib/rows.h"
#include "zmflib/zmf_file.h"

class CEnhObjectColorOverrideTbl;
class CKelObjectColorOverride final
    : public CEnhRow<CObject_Color_OverrideBase, CEnhObjectColorOverrideTbl> {};
struct SObjectColorOverrideTraits : CEnhTableTraits<CKelObjectColorOverride> {
    static constexpr DWORD Row::*kForeignKey = &Row::Object_ID;
    static constexpr const char* kObjectType = "Object Color Override";
};
class CEnhObjectColorOverrideTbl : public CEnhTable<SObjectColorOverrideTraits> {
  public:
    using CEnhTable::CEnhTable;
    ULONG Insert(std::unique_ptr<CKelObjectColorOverride> row) {
        return InsertIds(std::move(row), 0);
    }
};

class CEnhObjectFontOverrideTbl;
class CKelObjectFontOverride final
    : public CEnhRow<CObject_Font_OverrideBase, CEnhObjectFontOverrideTbl> {};
struct SObjectFontOverrideTraits : CEnhTableTraits<CKelObjectFontOverride> {
    static constexpr DWORD Row::*kForeignKey = &Row::Object_ID;
    static constexpr const char* kObjectType = "Object Font Override";
};
class CEnhObjectFontOverrideTbl : public CEnhTable<SObjectFontOverrideTraits> {
  public:
    using CEnhTable::CEnhTable;
    ULONG Insert(std::unique_ptr<CKelObjectFontOverride> row) {
        return InsertIds(std::move(row), 0);
    }
};

// Font style bits.
enum EFontStyle : DWORD {
    kFontBold = 1,
    kFontItalic = 2,
    kFontUnderline = 4,
    kFontStrikeOut = 8,
    kFontStyleMask = 15,
};

struct SColorOverride {
    ULONG colorIndex = 0;
    ULONG rgb = 0;  // 0x00BBGGRR
};

struct SFontOverride {
    ULONG fontIndex = 0;
    CString faceName;
    ULONG pointSize = 0;  // tenths of a point
    ULONG style = 0;      // EFontStyle bits
};

class CObjectPropOverrideMgr {
  public:
    // Opens both tables of `file`; `guids` (borrowed, may be null) creates and
    // deletes the overrides' unique objects and knows which objects exist.
    CObjectPropOverrideMgr(CZmfFile* file, CGuidMgr* guids);
    ~CObjectPropOverrideMgr();
    CObjectPropOverrideMgr(const CObjectPropOverrideMgr&) = delete;
    CObjectPropOverrideMgr& operator=(const CObjectPropOverrideMgr&) = delete;

    int Init(unsigned int bucketCount);
    // Rewrites both tables; 1 when every row was written.
    int Save(CZmfFile* file);
    void ReleaseStorageTables(int flag);

    // Sets (or replaces) the colour; returns the override's key, 0 for object 0 or
    // an object the identity manager does not know.
    ULONG SetColorOverride(ULONG objectId, ULONG colorIndex, ULONG rgb);
    // 1 with the colour in `rgb`; 0 (rgb untouched) when not overridden.
    int GetColorOverride(ULONG objectId, ULONG colorIndex, ULONG& rgb) const;
    int ClearColorOverride(ULONG objectId, ULONG colorIndex);

    // As the colours; 0 also for style bits outside kFontStyleMask or an empty face.
    ULONG SetFontOverride(ULONG objectId, const SFontOverride& font);
    int GetFontOverride(ULONG objectId, ULONG fontIndex, SFontOverride& font) const;
    int ClearFontOverride(ULONG objectId, ULONG fontIndex);

    // The object's overrides, in the order set.
    std::vector<SColorOverride> GetColorOverrides(ULONG objectId) const;
    std::vector<SFontOverride> GetFontOverrides(ULONG objectId) const;

    // Removes every override of the object; returns how many.
    int RemoveObjectOverrides(ULONG objectId);

    CEnhObjectColorOverrideTbl& GetColorOverrideTbl() const { return *m_colors; }
    CEnhObjectFontOverrideTbl& GetFontOverrideTbl() const { return *m_fonts; }

  private:
    bool IsKnownObject(ULONG objectId) const;
    // A new override object of the object's model.
    DWORD NewOverrideObject(int typeId, ULONG objectId) const;
    CKelObjectColorOverride* FindColor(ULONG objectId, ULONG colorIndex) const;
    CKelObjectFontOverride* FindFont(ULONG objectId, ULONG fontIndex) const;

    CGuidMgr* m_pGuids;  // not owned; may be null
    std::unique_ptr<CEnhObjectColorOverrideTbl> m_colors;
    std::unique_ptr<CEnhObjectFontOverrideTbl> m_fonts;
};
