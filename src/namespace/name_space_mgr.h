// CNameSpaceMgr: the model's name space. Every text of the model is interned once
// in the string table and referred to by its string id; a usage records that an
// object uses a string in a role (usage type). The manager owns the string tables,
// the usage table and the usage-type table, loads them when the model is opened and
// rewrites them when it is saved.
//
// Lifecycle: construct with the model file (all four record-store tables are opened)
// -> Init (load) -> lookups and edits in memory -> Save (rewrite) ->
// ReleaseStorageTables -> destroy. Init runs once, before anything else.
//
// Texts are taken as CString or as C strings (null reads as the empty text); both
// overloads behave the same. Any lookup or edit of usages first completes a
// deferred usage load, so deferral never changes an answer.
//
// Cached usage-type ids: one accessor per built-in usage type, Get<Stem>UsageId(),
// listed with their stems in usage_types.h. They hold 0 until Init has loaded the
// usage types.
#pragma once

#include <array>
#include <memory>
#include <string_view>

#include "foundation/enh_services.h"
#include "namespace/string_table.h"
#include "namespace/string_usage_table.h"
#include "namespace/string_usage_type_table.h"
#include "namespace/usage_types.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "zmflib/zmf_file.h"

class CNameSpaceMgr : public INameSpaceService {
  public:
    // Builds the string tables, the usage table and the usage-type table over
    // `file` (borrowed, as every file the manager is given).
    explicit CNameSpaceMgr(CZmfFile* file);
    virtual ~CNameSpaceMgr();
    CNameSpaceMgr(const CNameSpaceMgr&) = delete;
    CNameSpaceMgr& operator=(const CNameSpaceMgr&) = delete;

    // ---- load and save ----------------------------------------------------------

    // Loads the name space; a bucket count of 0 sizes a table's maps from the size
    // figure its last save stored. Unless `stringsOnly` is set: loads the usages
    // (building the role tree when `buildRoleIndex` is set, and with
    // `deferUsageLoad` only finding where they start), then the usage types, adding
    // the missing built-in ones, and fills the usage-type id cache. Then loads the
    // strings. With `stringsOnly` the manager serves string lookups only: it has no
    // usage and no usage type in memory. Always 1.
    int Init(unsigned int usageBucketCount, unsigned int stringBucketCount, int stringsOnly,
             int buildRoleIndex, int deferUsageLoad);

    // Rewrites "SmallString" and "LargeString" (purging unused strings when
    // `purgeStrings` is set, see CStringTablePair::Save), then "StringUsage" when
    // `writeUsages` is set, then "StringUsageType". Each table's save is guarded: a
    // failed insert ends that table's save after the trace
    // "Flush to zmflib Failure at line: <n>". Nothing is reported to the caller.
    // Note that a purge asks the usages in memory: after a strings-only Init every
    // unused string of 6 bytes or more goes.
    void Save(CZmfFile* file, int writeUsages, int purgeStrings);

    // Gives back, with `flag`, the record-store tables still held: those of the
    // string and usage-type tables, and the usage table's once its load is complete
    // (a deferred load that has not completed still reads from its table).
    void ReleaseStorageTables(int flag);

    // Deferred usage load: reads up to `count` more usages (0: all that are left);
    // returns how many it read.
    int LoadStringUsageRows(int count);
    int IsStringUsageLoadComplete() const;

    // ---- strings ----------------------------------------------------------------

    // The id of a text, interning it when new (the empty text: see string_table.h).
    int AddToStringTable(const CString& text);
    int AddToStringTable(const char* text);
    // Interns without recording a usage; 0 for the empty text.
    int AddConstString(const CString& text);
    int AddConstString(const char* text);
    // Does nothing (strings go only at a purging save); 0.
    int DeleteConstString(const CString& text);
    int DeleteConstString(const char* text);

    // The id of a text, exactly or without regard to case; 0 when absent.
    ULONG GetStringIdFromString(const CString& text) const;
    ULONG GetStringIdFromString(const char* text) const;
    ULONG GetStringIdFromStringNoCase(const CString& text) const;
    ULONG GetStringIdFromStringNoCase(const char* text) const;

    // The text of an id: empty for 0, GetInvalidStringValue() for an unknown id.
    void GetStringFromNameSpace(CString& out, LONG id) override;
    // The same text without a copy. The view reads the name space's own copy and
    // stays valid until that string changes or goes (a purging save); copy it to
    // keep it longer.
    std::string_view GetStringView(LONG id) const;
    std::string_view GetStringView(LONG id, CString& /*scratch*/) override {
        return GetStringView(id);
    }
    // The same; always 1.
    int GetString(CString& out, int id);
    // "ERROR: String not found in file".
    static const CString& GetInvalidStringValue();

    // Enters `text` under `id` unless the id is taken (then nothing changes): 1, or
    // 0 for id 0. The id counter is not raised: copy only ids that are at or below
    // it, or copy before interning anything new.
    int CopyToStringTable(const CString& text, int id);
    int CopyToStringTable(const char* text, int id);

    // Every string in table order: rows as loaded, then as interned.
    POSITION GetStringStartPosition() const;
    void GetNextString(POSITION& position, LONG& id, CString& text) const;

    // ---- usages -----------------------------------------------------------------

    // Makes `text` the string of (objectId, usageTypeId) and returns its id; the
    // empty text removes the usage and returns 0. With `recordUsage` 0 the text is
    // only interned. The three names below are the same operation.
    int UpdateNameSpace(int objectId, const CString& text, int usageTypeId, int recordUsage);
    int AddString(const CString& text, int objectId, int usageTypeId) override;
    int AddString(const char* text, int objectId, int usageTypeId);
    int UpdateString(const CString& text, int objectId, int usageTypeId);
    int UpdateString(const char* text, int objectId, int usageTypeId);
    int AddOrUpdateString(const CString& text, int objectId, int usageTypeId) override;
    int AddOrUpdateString(const char* text, int objectId, int usageTypeId);

    // Makes `stringId` the string of (objectId, usageTypeId); string id 0 removes
    // the usage. Always 0.
    int AddString(int stringId, int objectId, int usageTypeId);
    int UpdateString(int stringId, int objectId, int usageTypeId);
    int AddOrUpdateString(int stringId, int objectId, int usageTypeId) override;

    // Removes the usage of (objectId, usageTypeId); the string stays. 1, or 0 when
    // there was none.
    int DeleteString(int objectId, int usageTypeId) override;

    // The string id of (objectId, usageTypeId), or 0.
    int GetStringIdFromObjectAndUsageTypeIds(int objectId, int usageTypeId);

    // The objects that use `stringId` in the role `usageTypeId`, one per call, then
    // 0. A negative string id finds nothing.
    int GetFirstUsageObjectId(int usageTypeId, int stringId);
    int GetNextUsageObjectId();

    // Every usage of `stringId`: 1 with its object and usage type, then 0 with both
    // set to 0.
    int GetFirstUsageIdsFromStringId(int stringId, LONG& objectId, LONG& usageTypeId);
    int GetNextUsageIdsFromStringId(LONG& objectId, LONG& usageTypeId);

    // Gives the usage of (objectId, usageTypeId) a new object id and usage type, in
    // place and without re-indexing it (see CEnhStringUsageTable::FixUsage). 1, or 0
    // when there is no such usage.
    int FixStringUsageUnqObjId(LONG objectId, LONG usageTypeId, LONG newObjectId,
                               LONG newUsageTypeId);

    // ---- usage types ------------------------------------------------------------

    // The id of the usage type with this exact name, or 0.
    int GetStringUsageTypeId(const CString& name) override;
    int GetStringUsageTypeId(const char* name);

    // Fills the cache behind the accessors below from the usage-type table.
    void InitStringUsageIds();

#define TESSMETA_USAGE_ACCESSOR(stem, name)            \
    int Get##stem##UsageId() const {                   \
        return m_usageTypeIds[tessmeta::kUsage##stem]; \
    }
    TESSMETA_STRING_USAGE_TYPES(TESSMETA_USAGE_ACCESSOR)
#undef TESSMETA_USAGE_ACCESSOR

    // ---- the tables, for inspection ---------------------------------------------

    CStringTablePair& GetStringTablePair() {
        return *m_pStrings;
    }
    CEnhStringUsageTable& GetStringUsageTable() {
        return *m_pUsages;
    }
    CEnhStringUsageTypeTable& GetStringUsageTypeTable() {
        return *m_pUsageTypes;
    }

  private:
    int SetTextUsage(int objectId, std::string_view text, int usageTypeId, bool recordUsage);
    int SetIdUsage(int stringId, int objectId, int usageTypeId);
    static int ToUsageResult(const CKelStringUsage* row, LONG& objectId, LONG& usageTypeId);

    std::unique_ptr<CEnhStringUsageTable> m_pUsages;
    std::unique_ptr<CStringTablePair> m_pStrings;
    std::unique_ptr<CEnhStringUsageTypeTable> m_pUsageTypes;
    CZmfFile* m_pFile;  // not owned; null between Init and Save
    std::array<int, tessmeta::kStringUsageTypeCount> m_usageTypeIds{};
};
