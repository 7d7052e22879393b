// The string table of the name space: every text of the model, interned once and
// known everywhere else by its string id.
//
// Two record-store tables hold it. Every string has one "SmallString" row; a text
// of 255 bytes or more is a long string, whose "SmallString" row has an empty text
// and the large flag, and whose text sits in a "LargeString" row under the same id.
//
// In memory each of the two tables keeps its rows in load-then-insert order and
// three maps over them: by id, by exact text and by text without case (the text
// maps of loaded rows are filed on first use). In every
// map the row added last among rows with equal keys is the one found; the others
// stay in the table (and are saved) but are not found. The small table's rows of
// long strings all have the empty text, so a lookup of the empty text finds the
// most recently added long string unless a true empty string came later.
//
// Ids come from the small table's own counter, raised at load past every id
// loaded; an id is never handed out twice while the model is open. Strings are
// never deleted while the model is open: only a purging save drops strings that
// no usage refers to (see CStringTablePair::Save).
#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/enh_table.h"
#include "foundation/enh_table_base.h"
#include "namespace/name_space_maps.h"
#include "platform/cstring.h"
#include "platform/id_slots.h"
#include "platform/types.h"
#include "zmflib/rows.h"
#include "zmflib/zmf_file.h"

class CEnhSmallStringTable;
class CEnhLargeStringTable;
class CEnhStringUsageTable;
class CUsedStringIds;

class CKelSmallString final : public CEnhRow<CSmallStringBase, CEnhSmallStringTable, false> {
  public:
    std::string_view GetText() const { return Text.GetValue().View(); }
    bool IsLarge() const { return Large_Flag != 0; }
};

class CKelLargeString final : public CEnhRow<CLargeStringBase, CEnhLargeStringTable, false> {
  public:
    std::string_view GetText() const { return Text.GetValue().View(); }
};

// The id slots of the short rows mark the long strings, so that a text found by
// id goes to the long row without reaching the short one first. A row's large flag
// is set before it enters the table and never changes there.
template <class Row>
struct SStringSlotMark : SNoSlotMark {};
template <>
struct SStringSlotMark<CKelSmallString> {
    static constexpr bool kUsed = true;
    static bool Of(const CKelSmallString& row) { return row.IsLarge(); }
};

// What the small and the large table share: the row list, the three maps, the
// load and the purging save.
template <class Row>
class CEnhStringTable : public CEnhTableBase {
  public:
    // The id map keeps its entries in the rows, in the key-map link every CEnhRow
    // has (a string's id is its key); the text maps, filed only when a text is
    // looked up, keep theirs apart, so that a row does not carry their links. The id
    // map too is filed on first use: the slots answer lookups by id.
    struct IdKey : tessmeta::CNameSpaceIdKey<Row, &Row::String_ID> {
        static CMapNextLink& Link(Row* row) { return row->KeyMapLink(); }
    };
    using TextKey = tessmeta::CNameSpaceTextKey<Row, &Row::Text>;
    using NoCaseKey = tessmeta::CNameSpaceNoCaseKey<Row, &Row::Text>;
    using IdMap = tessmeta::CNameSpaceRowMap<Row, IdKey>;
    using TextMap = tessmeta::CNameSpaceRowMap<Row, TextKey>;
    using NoCaseMap = tessmeta::CNameSpaceRowMap<Row, NoCaseKey>;

    // Loads every stored row. All three maps get `bucketCount` buckets, or as many
    // as the last save wrote rows (at least 1).
    using CEnhTableBase::Init;
    void Init(unsigned int bucketCount) override;

    Row* FindById(ULONG id) const {
        return m_byIdSlots.Find(id, [this](ULONG beyond) { return MapFind(beyond); });
    }
    // The same, and whether the row is marked (SStringSlotMark), told by its slot.
    Row* FindById(ULONG id, bool& marked) const {
        return m_byIdSlots.FindMarked(id, marked, [this](ULONG beyond) { return MapFind(beyond); });
    }
    Row* FindByText(std::string_view text) const {
        return FiledTextMap().Find(TextKey::Lookup(text));
    }
    Row* FindByTextNoCase(std::string_view text) const {
        return FiledNoCaseMap().Find(NoCaseKey::Lookup(text));
    }

    int GetCount() const { return GetRowCount(); }
    Row* GetNextRow(POSITION& position) const {
        return static_cast<Row*>(CEnhTableBase::GetNextRow(position));
    }

    // Inspection (the text maps are filed first).
    const IdMap& GetIdMap() const { return FiledIdMap(); }
    const TextMap& GetTextMap() const { return FiledTextMap(); }
    const NoCaseMap& GetNoCaseMap() const { return FiledNoCaseMap(); }

  protected:
    // Strings leave only through a purging save: their rows live beside their
    // texts, so that a string found by id or by text is one reach of memory.
    CEnhStringTable(CZmfFile* file, const char* tableName) : CEnhTableBase(file, tableName) {
        KeepRowsBesideTexts();
    }

    // A filled row enters the list and the three maps. Returns it.
    Row* Enter(CRowPtr<Row> row);

    // Rewrites the record-store table in list order. With `purge` set, a row is
    // written only when `used` holds its id or SurvivesPurge says so; any other
    // row leaves the maps and the table for good. Guarded: the first failed insert
    // ends the save with 0; rows purged until then stay purged.
    int SaveStrings(CZmfFile* file, int purge, const CUsedStringIds& used);

    // Whether an unused row is written by a purging save anyway.
    virtual bool SurvivesPurge(const Row& /*row*/) const { return false; }
    // Called for each row read by Init, after it has entered the table.
    virtual void OnLoaded(const Row& /*row*/) {}

  private:
    struct SLostKeys;
    void Purge(Row* row, SLostKeys& lost);
    void RefileShadowedRows(SLostKeys& lost);

    // The maps, filed first if the load left them pending. Filing later, from the
    // row list, makes the same entries in the same order as filing each row when it
    // entered the table: a session that never looks a text up (or an id beyond the
    // slots) does not pay for them.
    IdMap& FiledIdMap() const;
    TextMap& FiledTextMap() const;
    NoCaseMap& FiledNoCaseMap() const;
    template <class Map>
    Map& File(Map& map, bool& pending) const;

    // The id map's answers, one slot per id (id_slots.h).
    Row* MapFind(ULONG id) const { return FiledIdMap().Find(IdKey::Lookup(id)); }
    void SyncSlot(ULONG id) {
        m_byIdSlots.Sync(id, [this](ULONG other) { return MapFind(other); });
    }

    mutable IdMap m_byId;
    CIdSlots<Row, SStringSlotMark<Row>> m_byIdSlots;
    mutable TextMap m_byText;
    mutable NoCaseMap m_byTextNoCase;
    // Gives the maps their load size, for `storedRows` rows, unless done already.
    void SizeMaps(ULONG storedRows) const;
    // Set while a load has not sized the maps yet.
    mutable std::optional<SLoadSize> m_unsized;
    mutable bool m_byIdPending = false;
    mutable bool m_byTextPending = false;
    mutable bool m_byTextNoCasePending = false;
};

// "SmallString": one row per string.
class CEnhSmallStringTable final : public CEnhStringTable<CKelSmallString> {
  public:
    // Shorter unused texts survive every purge.
    static constexpr int kPurgeKeepLength = 6;

    explicit CEnhSmallStringTable(CZmfFile* file);

    // The next string id (the counter moves on).
    ULONG NewStringId() { return static_cast<ULONG>(GetNextKey()); }
    // Adds a row; `large` rows keep an empty text here.
    CKelSmallString* Add(ULONG id, std::string_view text, bool large);

    int Save(CZmfFile* file, int purge, const CUsedStringIds& used) {
        return SaveStrings(file, purge, used);
    }

  protected:
    bool SurvivesPurge(const CKelSmallString& row) const override {
        return !row.IsLarge() && row.Text.GetLength() < kPurgeKeepLength;
    }
    void OnLoaded(const CKelSmallString& row) override { RaiseNextKey(row.String_ID); }
};

// "LargeString": the texts of the long strings.
class CEnhLargeStringTable final : public CEnhStringTable<CKelLargeString> {
  public:
    explicit CEnhLargeStringTable(CZmfFile* file);

    // The load without arguments sizes the maps from the stored size figure.
    void Init() override { Init(0); }
    using CEnhStringTable::Init;

    CKelLargeString* Add(ULONG id, std::string_view text);

    int Save(CZmfFile* file, int purge, const CUsedStringIds& used) {
        return SaveStrings(file, purge, used);
    }
};

// The two string tables together: interning, lookups, iteration, load and save.
// CNameSpaceMgr owns one and forwards its string operations here.
class CStringTablePair {
  public:
    // Texts of this length or longer are long strings.
    static constexpr int kLargeTextLength = 255;

    // Opens both record-store tables of `file` (borrowed).
    explicit CStringTablePair(CZmfFile* file);
    ~CStringTablePair();
    CStringTablePair(const CStringTablePair&) = delete;
    CStringTablePair& operator=(const CStringTablePair&) = delete;

    // The usage table a purging save asks (borrowed; may stay null: then no string
    // counts as used).
    void SetStringUsageTable(CEnhStringUsageTable* usages) { m_pUsages = usages; }

    // Loads the small table with `bucketCount` (0: its size figure), then the large
    // table with its size figure, and forgets the file.
    void Init(unsigned int bucketCount);

    // "SmallString" first, then "LargeString", each a guarded save; 1 when both
    // succeed. Completes a deferred usage load first. With `purge` set, a string is
    // written when a usage refers to it, or when it is a short text of fewer than 6
    // bytes; every other string is dropped from memory and file (its id is not
    // handed out again).
    int Save(CZmfFile* file, int purge);

    // Gives back the record-store tables a save left held.
    void ReleaseStorageTables(int flag);

    // The id of `text`, interning it when new. Note that the empty text finds what
    // GetStringId finds for it (see the top of this file).
    ULONG AddToStringTable(std::string_view text);
    // Ids by text, or 0. Long texts are looked up among the long strings.
    ULONG GetStringId(std::string_view text) const;
    ULONG GetStringIdNoCase(std::string_view text) const;
    // The text of `id`: the empty text for 0; false (and `out` untouched) for an id
    // that names no string.
    bool GetText(ULONG id, CString& out) const;
    // The same without a copy: the view reads the row's own text and stays valid
    // until that string changes or leaves the table.
    bool FindText(ULONG id, std::string_view& out) const;
    // Enters `text` under `id` unless the id is taken (then nothing changes); 1, or
    // 0 for id 0. The id counter is not raised: copy only ids at or below it.
    int CopyToStringTable(std::string_view text, ULONG id);

    // Every string in table order: rows as loaded, then as added.
    POSITION GetStartPosition() const { return m_pSmall->GetFirstRowPosition(); }
    void GetNext(POSITION& position, LONG& id, CString& text) const;

    CEnhSmallStringTable& GetSmallTable() { return *m_pSmall; }
    const CEnhSmallStringTable& GetSmallTable() const { return *m_pSmall; }
    CEnhLargeStringTable& GetLargeTable() { return *m_pLarge; }
    const CEnhLargeStringTable& GetLargeTable() const { return *m_pLarge; }

  private:
    void AddRows(ULONG id, std::string_view text);

    std::unique_ptr<CEnhSmallStringTable> m_pSmall;
    std::unique_ptr<CEnhLargeStringTable> m_pLarge;
    CZmfFile* m_pFile;                          // not owned; null between Init and Save
    CEnhStringUsageTable* m_pUsages = nullptr;  // not owned
};
