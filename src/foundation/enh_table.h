// CEnhTable: the load / edit / save pattern that most in-memory tables follow,
// written once. A table declares only what is its own, in a traits struct:
//
//   Row          its row class CKel<Thing>: the record-store row class C<Table>Base
//                plus a back pointer to the table (derive it from CEnhRow). The
//                record-store table (name, key kind) is the one of C<Table>Base.
//   kForeignKey  the foreign-key column (the owner's id, passed to GetNewUniqueId as
//                the model id), or nullptr for none.
//   kForeignKeyIndex  Tree (default): many rows per foreign key, walked with
//                GetFirstFKRow / GetNextFKRow. Map: at most one row per foreign key,
//                found with GetFKRow in one hash probe (the first row filed under a
//                key answers).
//   kTexts       the text columns (string ids of the name space), in column order,
//                each with the name of its usage type.
//   kObjectType  the object-type name of its unique objects, or nullptr.
//   kUniqueId    the unique-object id column; found by itself when the row has a
//                Global_User_ID column, else nullptr.
//   kKeyMap      FirstWins (default): a row whose key is already mapped is not
//                mapped again, so lookups find the first one loaded. LastWins: the
//                later row replaces the mapped one.
//   kKeySource   IdentityMgr (default): keys come from CIdentityMgr under the key
//                kind of the record-store table. OwnCounter: the table numbers its
//                rows with GetNextKey, raised past every key loaded.
//
// Inherit the defaults from CEnhTableTraits<Row> and restate only what differs.
// The table class then adds its named operations as one-line wrappers. Example, the
// storage-object table (foreign key Model_ID, four texts):
//
//   class CEnhStorageObjectTable;
//   class CKelStorageObject final
//       : public CEnhRow<CStorage_ObjectBase, CEnhStorageObjectTable> {};
//
//   struct SStorageObjectTraits : CEnhTableTraits<CKelStorageObject> {
//       static constexpr DWORD Row::*kForeignKey = &Row::Model_ID;
//       static constexpr std::array kTexts{
//           Text{&Row::Name, "Storage Object Name"}, Text{&Row::Owner, "Storage Object Owner"},
//           Text{&Row::Description, "Storage Object Description"},
//           Text{&Row::Value, "Storage Object Value"}};
//       static constexpr const char* kObjectType = "Storage Object";
//   };
//
//   class CEnhStorageObjectTable : public CEnhTextTable<SStorageObjectTraits> {
//     public:
//       using CEnhTextTable::CEnhTextTable;
//       int GetName(ULONG key, CString& out) { return GetText(key, 0, out); }
//       int SetName(ULONG key, const CString& text) { return SetText(key, 0, text); }
//       // ... the other columns alike.
//   };
//
// CEnhTextTable (at the end of this file) supplies both insert forms and the update
// of a table whose own columns are its foreign key and its texts. A table with
// other columns derives from CEnhTable and writes them as one-line wrappers over
// InsertTexts, InsertIds and UpdateRow:
//
//       ULONG Insert(ULONG modelId, const CString& name, ..., ULONG uniqueId, ULONG key) {
//           auto row = std::make_unique<CKelStorageObject>();
//           row->Model_ID = modelId;
//           row->Global_User_ID = uniqueId;
//           return InsertTexts(std::move(row), key, name, owner, description, value);
//       }
//
// Services. The name-space and identity services may be null. Without a name space
// no usage-type lookups, string registrations or string reads happen (usage type
// ids are 0). Without an identity service no unique objects are created or
// deleted, the object type id is 0, and inserts register no texts: the id form
// keeps the string ids it is given, the text form leaves the text columns 0.
//
// Load repairs. A table that corrects or drops stored rows as they load overrides
// AdmitLoadedRow: it sees each stored row before the row enters the table, may
// change it, and returns false to drop it.
//
// Extra indexes. A table with more maps keeps them itself and overrides the three
// hooks AddToExtraIndexes, RemoveFromExtraIndexes and SizeExtraIndexes; the
// pattern calls them wherever a row enters or leaves the table and when Init sizes
// its maps. CEnhRowMap and CEnhFieldTraits give a map of rows by one column.
// UpdateRow and SetText take a row out of the foreign-key index and the extra
// indexes before its columns change and file it again after, so no index keeps a
// stale entry.
//
// Other needs. Guarded saves and saves of several record-store tables use
// GuardedSave and ZMF_CHECKED_INSERT; write-through inserts and updates use
// WriteThroughInsert / WriteThroughUpdate (enh_table_base.h). A table whose keys or
// maps follow other rules altogether derives from CEnhTableBase directly and still
// uses its load loop and saves.
//
// Costs. A lookup by key is one hash probe of the key map, whose entries are the
// rows themselves (their link is a member of CEnhRow); it has as many buckets as
// the table had rows at its last save. Like the foreign-key index, it is filed on
// first use, from the row list (load order, then entry order: the same map as
// filing each row as it enters), so that opening a model touches neither for a
// table nobody asks. A walk by foreign key is one tree search, after which each next
// row is an array read.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "foundation/balanced_tree.h"
#include "foundation/enh_services.h"
#include "foundation/enh_table_base.h"
#include "platform/cmap.h"
#include "platform/cstring.h"
#include "platform/intrusive_map.h"
#include "platform/types.h"

// Gives back the record-store table a save left with `table`, through the file
// the save wrote to (ReleaseStorageTables of a manager); nothing when none is held.
inline void ReleaseSavedTable(CEnhTableBase& table, int flag) {
    if (table.GetFile() && static_cast<CTableBase*>(table))
        table.GetFile()->ReleaseTable(table.GetTablePtrAddr(), flag);
}

// The back pointer of a row to its table, or (kKept false) nothing: rows of the
// largest tables, whose code never asks a row for its table, save 8 bytes each.
template <class Table, bool kKept>
class CEnhRowTableLink {
  public:
    Table* Get() const { return m_pTable; }
    void Set(Table* table) { m_pTable = table; }

  private:
    Table* m_pTable = nullptr;  // not owned: the table owns the row
};
template <class Table>
class CEnhRowTableLink<Table, false> {
  public:
    void Set(Table* /*table*/) {}
};

// A record-store row with a back pointer to the in-memory table that owns it, set
// when the row enters the table (unless `kKeepsTable` is false: then GetEnhTable
// does not exist). Copying copies every column and the back pointer (not the list
// links).
template <class RecordRow, class Table, bool kKeepsTable = true>
class CEnhRow : public RecordRow {
  public:
    using TableType = Table;

    Table* GetEnhTable() const { return m_table.Get(); }
    void SetEnhTable(Table* table) { m_table.Set(table); }

    // The row's link in its table's key map (CIntrusiveMap): the key map of a
    // CEnhTable, or the main map of a table that keys its rows itself (the string
    // tables' id maps); unused elsewhere. It keeps no hash: the key is the hash.
    CMapNextLink& KeyMapLink() { return m_keyMapLink; }

  private:
    [[no_unique_address]] CEnhRowTableLink<Table, kKeepsTable> m_table;
    CMapNextLink m_keyMapLink;
};

// Intrusive-map traits for rows by technical key (hash = key, so bucket = key mod
// count); the map grows past two rows per bucket (see cmap.h), so a table sized
// for its last save, or a new one with a single bucket, stays fast however many
// rows it gains.
template <class Row>
struct CEnhKeyMapTraits {
    static constexpr bool kGrow = true;
    using Probe = ULONG;
    static CMapNextLink& Link(Row* row) { return row->KeyMapLink(); }
    static ULONG Of(const Row* row) { return row->GetTechKey(); }
    static UINT Hash(ULONG key) { return key; }
    static bool Equal(const Row* stored, ULONG key) { return stored->GetTechKey() == key; }
};

// Map traits for rows by technical key (hash = key, so bucket = key mod count).
// Row maps grow past two rows per bucket (see cmap.h): a table sized for its last
// save, or a new one with a single bucket, stays fast however many rows it gains.
template <class Row>
struct CEnhTechKeyTraits {
    static constexpr bool kGrow = true;
    static UINT Hash(Row* row) { return row->GetTechKey(); }
    static bool Equal(Row* const& stored, Row* row) {
        return stored->GetTechKey() == row->GetTechKey();
    }
};

// Map traits for rows by one unsigned 32-bit column (hash = the column's value).
template <class Row, auto Column>
struct CEnhFieldTraits {
    static constexpr bool kGrow = true;
    static UINT Hash(Row* row) { return row->*Column; }
    static bool Equal(Row* const& stored, Row* row) { return stored->*Column == row->*Column; }
};

// A map from row to row; look a row up with a probe row holding the sought fields.
template <class Row, class Traits>
using CEnhRowMap = CMap<Row*, Row*, Row*, Row*, Traits>;

template <class Row>
struct SEnhTextColumn {
    DWORD Row::*column;         // the string id column
    const char* usageTypeName;  // its usage type in the name space
};

enum class EEnhKeyMap { FirstWins, LastWins };
enum class EEnhFKIndex { Tree, Map };
enum class EEnhKeySource { IdentityMgr, OwnCounter };

// The Global_User_ID column of a row class, or null when it has none.
template <class Row>
constexpr DWORD Row::*DefaultUniqueIdColumn() {
    if constexpr (requires { &Row::Global_User_ID; }) {
        return &Row::Global_User_ID;
    } else {
        return nullptr;
    }
}

// The defaults of a table's traits; see the top of this file.
template <class RowT>
struct CEnhTableTraits {
    using Row = RowT;
    using Text = SEnhTextColumn<RowT>;

    static constexpr DWORD Row::*kForeignKey = nullptr;
    static constexpr EEnhFKIndex kForeignKeyIndex = EEnhFKIndex::Tree;
    static constexpr std::array<Text, 0> kTexts{};
    static constexpr const char* kObjectType = nullptr;
    static constexpr DWORD Row::*kUniqueId = DefaultUniqueIdColumn<RowT>();
    static constexpr EEnhKeyMap kKeyMap = EEnhKeyMap::FirstWins;
    static constexpr EEnhKeySource kKeySource = EEnhKeySource::IdentityMgr;
};

template <class Traits>
class CEnhTable : public CEnhTableBase {
  public:
    using Row = typename Traits::Row;
    using KeyMap = CIntrusiveMap<Row, CEnhKeyMapTraits<Row>>;

    static constexpr std::size_t kTextCount = Traits::kTexts.size();
    static constexpr bool kHasForeignKey = Traits::kForeignKey != nullptr;
    static constexpr bool kFKTree = kHasForeignKey && Traits::kForeignKeyIndex == EEnhFKIndex::Tree;
    static constexpr bool kFKMap = kHasForeignKey && Traits::kForeignKeyIndex == EEnhFKIndex::Map;
    static constexpr bool kHasUniqueId = Traits::kUniqueId != nullptr;

    static_assert(std::is_base_of_v<CDbObjectBase, Row>, "rows are record-store rows");
    static_assert(std::is_default_constructible_v<Row>, "rows are made empty, then read");

    // Opens the record-store table; looks up the usage type of each text column
    // (in column order), then the object type. All pointers are borrowed; `keys`
    // null means the file's key allocator.
    CEnhTable(INameSpaceService* nameSpace, CIdentityMgr* keys, IObjectIdentityService* identity,
              CZmfFile* file)
        : CEnhTableBase(file, TableName()),
          m_pNameSpace(nameSpace),
          m_pKeys(keys ? keys : (file ? file->GetIdentityMgr() : nullptr)),
          m_pIdentity(identity) {
        if constexpr (kFKTree) {
            m_pFKIndex = std::make_unique<CBalancedTree>();
            m_pFKIndex->Init();
        }
        ResolveUsageTypes();
        if (m_pIdentity && Traits::kObjectType)
            m_nObjectTypeId = m_pIdentity->GetObjectTypeId(Traits::kObjectType);
    }

    using CEnhTableBase::Init;
    // Loads every stored row. The key map gets `bucketCount` buckets, or as many
    // as the last save wrote rows (at least 1). Call once, right after construction.
    void Init(unsigned int bucketCount) override {
        const UINT buckets = LoadBucketCount(bucketCount);
        m_keyMap.InitHashTable(buckets, TRUE);
        if constexpr (kFKMap) m_fkMap.InitHashTable(buckets, FALSE);
        SizeExtraIndexes(buckets);
        // The key map and the foreign-key index are filed on first use, from the
        // rows in load order: the same inserts in the same order as at load, so the
        // same map and tree, but a load whose keys are never asked for does not pay
        // for them.
        m_keyMapPending = true;
        m_fkIndexPending = true;
        LoadPooledRows<Row>([this](CRowPtr<Row> row) {
            if (AdmitLoadedRow(*row)) EnterRow(std::move(row));
        });
    }

    // The row mapped under `key`, or null.
    Row* GetRow(ULONG key) const { return Keys().Find(key); }

    // Deletes the row mapped under `key` and, through the services, its strings
    // (in column order) and its unique object (passing `reallyDelete` on to
    // DeleteObject). 0 when there is no such row.
    int Delete(ULONG key, int reallyDelete = 0) {
        Row* row = GetRow(key);
        if (!row) return 0;
        const DWORD uniqueId = UniqueIdOf(*row);
        Keys().RemoveKey(key);
        UnfileForeignKey(row);
        RemoveFromExtraIndexes(row);
        Remove(row);
        ReleaseTexts(uniqueId);
        if (kHasUniqueId && m_pIdentity)
            m_pIdentity->DeleteObject(static_cast<int>(uniqueId), reallyDelete);
        return 1;
    }

    // Deletes every row under `foreignKey`, in the order the index yields them.
    // Returns how many went.
    int DeleteAllFKRows(ULONG foreignKey) requires kFKTree {
        return DeleteWalk(GetFirstFKRow(foreignKey), [this] { return GetNextFKRow(); });
    }

    // Deletes the rows a walk yields: `first`, then each `next()` until null. The
    // keys are collected first, because no index may change while it is walked.
    // Returns how many went.
    template <class Next>
    int DeleteWalk(Row* first, Next&& next) {
        std::vector<ULONG> keys;
        for (Row* row = first; row; row = next())
            keys.push_back(row->GetTechKey());
        int deleted = 0;
        for (ULONG key : keys)
            deleted += Delete(key);
        return deleted;
    }

    // The rows under one foreign key: the first, then each next one, then null.
    // Any other search or delete on this table ends the walk.
    Row* GetFirstFKRow(ULONG foreignKey) requires kFKTree {
        return static_cast<Row*>(FKIndex().GetFirst(FKIndexKey(foreignKey)));
    }
    Row* GetNextFKRow() requires kFKTree { return static_cast<Row*>(FKIndex().GetNext()); }

    // The row filed under a foreign key (the first one filed), or null.
    Row* GetFKRow(ULONG foreignKey) requires kFKMap {
        Row probe;
        probe.*Traits::kForeignKey = foreignKey;
        Row* found = nullptr;
        FKMap().Lookup(&probe, found);
        return found;
    }

    // All rows in list order.
    int GetCount() const { return GetRowCount(); }
    Row* GetNextRow(POSITION& position) const {
        return static_cast<Row*>(CEnhTableBase::GetNextRow(position));
    }

    // The text of text column `column` (0-based, as in kTexts). 1 when read; 0 for an
    // unknown key or column, or without a name space (`out` is then untouched).
    int GetText(ULONG key, int column, CString& out) const {
        const Row* row = GetRow(key);
        return row ? GetText(row, column, out) : 0;
    }
    int GetText(const Row* row, int column, CString& out) const {
        if (!row || !m_pNameSpace || !IsTextColumn(column)) return 0;
        const DWORD id = row->*Traits::kTexts[static_cast<std::size_t>(column)].column;
        m_pNameSpace->GetStringFromNameSpace(out, static_cast<LONG>(id));
        return 1;
    }
    // Makes `text` the string of the column for the row's unique object, storing the
    // id the name space returns. Same results as GetText.
    int SetText(ULONG key, int column, const CString& text) {
        Row* row = GetRow(key);
        return row ? SetText(row, column, text) : 0;
    }
    int SetText(Row* row, int column, const CString& text) {
        if (!row || !m_pNameSpace || !IsTextColumn(column)) return 0;
        const auto index = static_cast<std::size_t>(column);
        const DWORD id = static_cast<DWORD>(m_pNameSpace->AddOrUpdateString(
            text, static_cast<int>(UniqueIdOf(*row)), m_usageTypeIds[index]));
        if (id != row->*Traits::kTexts[index].column) {
            RemoveFromExtraIndexes(row);
            row->*Traits::kTexts[index].column = id;
            AddToExtraIndexes(row);
        }
        return 1;
    }

    // Rewrites the record-store table from memory, in list order. The plain form
    // returns the last insert's result (1 for no rows) and goes on after a failed
    // insert; the guarded form stops at the first one and returns 0 (see
    // enh_table_base.h). The handle is kept until the owner releases it.
    int Save(CZmfFile* file) { return SaveRows(file, TableName()); }
    int SaveGuarded(CZmfFile* file) { return SaveRowsGuarded(file, TableName()); }

    // Inspection.
    const KeyMap& GetKeyMap() const { return Keys(); }
    int GetUsageTypeId(int column) const {
        return IsTextColumn(column) ? m_usageTypeIds[static_cast<std::size_t>(column)] : 0;
    }
    int GetObjectTypeId() const { return m_nObjectTypeId; }

  protected:
    static const char* TableName() { return Row::Desc().name; }

    // Public insert, id form. `row` holds the columns, its text columns string ids
    // and its unique-id column the caller's id (0: create one). Returns the key.
    ULONG InsertIds(std::unique_ptr<Row> row, ULONG key) {
        PrepareNewRow(*row, key);
        if (RegistersTexts()) {
            const int uniqueId = static_cast<int>(UniqueIdOf(*row));
            for (std::size_t i = 0; i < kTextCount; ++i)
                m_pNameSpace->AddOrUpdateString(
                    static_cast<int>(row.get()->*Traits::kTexts[i].column), uniqueId,
                    m_usageTypeIds[i]);
        }
        return EnterRow(std::move(row));
    }

    // Public insert, text form: as InsertIds, with one text per text column (in
    // column order) interned for the row's unique object.
    template <std::same_as<CString>... Texts>
    ULONG InsertTexts(std::unique_ptr<Row> row, ULONG key, const Texts&... texts) {
        static_assert(sizeof...(Texts) == kTextCount, "one text per text column");
        const std::array<const CString*, kTextCount> text{&texts...};
        PrepareNewRow(*row, key);
        if (RegistersTexts()) {
            const int uniqueId = static_cast<int>(UniqueIdOf(*row));
            for (std::size_t i = 0; i < kTextCount; ++i)
                row.get()->*Traits::kTexts[i].column = static_cast<DWORD>(
                    m_pNameSpace->AddString(*text[i], uniqueId, m_usageTypeIds[i]));
        }
        return EnterRow(std::move(row));
    }

    // Update: `assign(Row&)` overwrites columns of the row mapped under `key` (never
    // the key; string ids are stored as given, usages untouched). A row whose
    // foreign key changes is re-filed in the index (one that keeps it stays in its
    // place among its siblings); extra indexes re-file it always. 0 when there is no
    // such row.
    template <class Assign>
    int UpdateRow(ULONG key, Assign&& assign) {
        Row* row = GetRow(key);
        return row ? UpdateRow(row, std::forward<Assign>(assign)) : 0;
    }
    template <class Assign>
    int UpdateRow(Row* row, Assign&& assign) {
        const DWORD oldForeignKey = ForeignKeyOf(*row);
        RemoveFromExtraIndexes(row);
        if constexpr (kFKTree) FKIndex();  // filed with the old key first
        if constexpr (kFKMap) UnfileForeignKey(row);
        std::forward<Assign>(assign)(*row);
        if constexpr (kFKTree) {
            if (ForeignKeyOf(*row) != oldForeignKey) {
                FKIndex().Delete(FKIndexKey(oldForeignKey), row);
                FKIndex().Insert(FKIndexKey(*row), row);
            }
        }
        if constexpr (kFKMap) FileForeignKey(row);
        AddToExtraIndexes(row);
        return 1;
    }

    // Internal insert: a filled row enters the table (list, key, key map, foreign-key
    // index, extra indexes). A row without a key gets one; a given key is declared
    // so that no later allocation repeats it. Returns the key.
    ULONG EnterRow(CRowPtr<Row> owned) {
        AddRow(owned.get());
        Row* row = owned.release();
        if constexpr (requires { typename Row::TableType; })
            row->SetEnhTable(static_cast<typename Row::TableType*>(this));
        SettleKey(*row);
        if (!m_keyMapPending) MapByKey(row);
        if (!m_fkIndexPending) FileForeignKey(row);
        AddToExtraIndexes(row);
        return row->GetTechKey();
    }

    // The foreign-key index, filed first if the load left it pending.
    CBalancedTree& FKIndex() requires kFKTree {
        FileLoadedForeignKeys();
        return *m_pFKIndex;
    }
    // Rows by foreign key (hash = the foreign key).
    struct SFKMapTraits {
        static constexpr bool kGrow = true;
        static UINT Hash(Row* row) { return ForeignKeyOf(*row); }
        static bool Equal(Row* const& stored, Row* row) {
            return ForeignKeyOf(*stored) == ForeignKeyOf(*row);
        }
    };
    using FKMapType = CEnhRowMap<Row, SFKMapTraits>;
    FKMapType& FKMap() requires kFKMap {
        FileLoadedForeignKeys();
        return m_fkMap;
    }

    // Extra indexes of a table (see the top of this file). Called after a row has
    // entered the list and the key map, before a row leaves the list, and with the
    // bucket count Init gives the key map.
    virtual void AddToExtraIndexes(Row* /*row*/) {}
    virtual void RemoveFromExtraIndexes(Row* /*row*/) {}
    virtual void SizeExtraIndexes(UINT /*bucketCount*/) {}
    // Load repairs (see the top of this file): false drops the stored row.
    virtual bool AdmitLoadedRow(Row& /*row*/) { return true; }

    INameSpaceService* GetNameSpace() const { return m_pNameSpace; }
    CIdentityMgr* GetKeys() const { return m_pKeys; }
    IObjectIdentityService* GetIdentity() const { return m_pIdentity; }

  private:
    static constexpr bool IsTextColumn(int column) {
        return column >= 0 && static_cast<std::size_t>(column) < kTextCount;
    }
    // The foreign key widened to the tree's key: high half 0.
    static std::int64_t FKIndexKey(ULONG foreignKey) {
        return static_cast<std::int64_t>(foreignKey);
    }
    static std::int64_t FKIndexKey(const Row& row) { return FKIndexKey(ForeignKeyOf(row)); }
    static DWORD ForeignKeyOf(const Row& row) {
        if constexpr (kHasForeignKey) return row.*Traits::kForeignKey;
        return 0;
    }
    static DWORD UniqueIdOf(const Row& row) {
        if constexpr (kHasUniqueId) return row.*Traits::kUniqueId;
        return 0;
    }
    static int KeyKind() { return Row::Desc().keyKind; }

    bool RegistersTexts() const { return kTextCount > 0 && m_pNameSpace && m_pIdentity; }

    void ResolveUsageTypes() {
        if (!m_pNameSpace) return;
        for (std::size_t i = 0; i < kTextCount; ++i)
            m_usageTypeIds[i] = m_pNameSpace->GetStringUsageTypeId(Traits::kTexts[i].usageTypeName);
    }

    ULONG AllocateKey() {
        if constexpr (Traits::kKeySource == EEnhKeySource::OwnCounter)
            return static_cast<ULONG>(GetNextKey());
        return m_pKeys ? m_pKeys->AllocKeyValue(KeyKind()) : 0;
    }
    void DeclareKey(ULONG key) {
        if constexpr (Traits::kKeySource == EEnhKeySource::OwnCounter) {
            RaiseNextKey(key);
        } else if (m_pKeys) {
            m_pKeys->SetKeyValue(KeyKind(), key);
        }
    }
    void SettleKey(Row& row) {
        if (const ULONG key = row.GetTechKey())
            DeclareKey(key);
        else
            row.SetTechKey(AllocateKey());
    }

    // Key first (the unique object is created with it), then the unique object.
    void PrepareNewRow(Row& row, ULONG key) {
        row.SetTechKey(key ? key : AllocateKey());
        if constexpr (kHasUniqueId) {
            if (m_pIdentity && row.*Traits::kUniqueId == 0)
                row.*Traits::kUniqueId = static_cast<DWORD>(m_pIdentity->GetNewUniqueId(
                    m_nObjectTypeId, ForeignKeyOf(row), row.GetTechKey(), 0));
        }
    }

    // Files every loaded row under its foreign key, in load order, the first time
    // the index is needed.
    void FileLoadedForeignKeys() {
        FileListedRows<Row>(m_fkIndexPending, [this](Row* row) { FileForeignKey(row); });
    }
    void FileForeignKey(Row* row) {
        if constexpr (kFKTree) m_pFKIndex->Insert(FKIndexKey(*row), row);
        if constexpr (kFKMap) {
            Row*& filed = m_fkMap[row];
            if (!filed) filed = row;
        }
    }
    void UnfileForeignKey(Row* row) {
        if constexpr (kFKTree) FKIndex().Delete(FKIndexKey(*row), row);
        if constexpr (kFKMap) {
            Row* filed = nullptr;
            if (FKMap().Lookup(row, filed) && filed == row) m_fkMap.RemoveKey(row);
        }
    }

    // The key map, filed first if the load left it pending.
    KeyMap& Keys() const {
        FileListedRows<Row>(m_keyMapPending, [this](Row* row) { MapByKey(row); });
        return m_keyMap;
    }
    void MapByKey(Row* row) const { m_keyMap.Add(row, Traits::kKeyMap == EEnhKeyMap::LastWins); }

    void ReleaseTexts(DWORD uniqueId) {
        if (!m_pNameSpace) return;
        for (std::size_t i = 0; i < kTextCount; ++i)
            m_pNameSpace->DeleteString(static_cast<int>(uniqueId), m_usageTypeIds[i]);
    }

    mutable KeyMap m_keyMap;                    // rows by technical key
    mutable bool m_keyMapPending = false;       // loaded rows not yet filed in it
    INameSpaceService* m_pNameSpace;            // not owned; may be null
    CIdentityMgr* m_pKeys;                      // not owned
    IObjectIdentityService* m_pIdentity;        // not owned; may be null
    std::unique_ptr<CBalancedTree> m_pFKIndex;  // rows by foreign key; null without a tree
    FKMapType m_fkMap{10};                      // rows by foreign key; kFKMap only
    bool m_fkIndexPending = false;              // loaded rows not yet filed in it
    std::array<int, kTextCount> m_usageTypeIds{};
    int m_nObjectTypeId = 0;
};

// CEnhTextTable: a table whose own columns are its foreign key and its texts, each
// row a unique object (kForeignKey, kTexts and the unique-id column are required).
// It supplies the two insert forms and the update of the model member for any
// number of text columns, in column order:
//   Insert(foreignKey, const CString& text..., uniqueId, key)   texts interned
//   Insert(foreignKey, ULONG stringId..., uniqueId, key)        string ids kept
//   Update(key, foreignKey, ULONG stringId...)
// uniqueId 0 creates the row's unique object; key 0 allocates one. A table then
// only names its traits (see the example at the top of this file).
template <class Traits, class = std::make_index_sequence<Traits::kTexts.size()>>
class CEnhTextTable;

template <class Traits, std::size_t... I>
class CEnhTextTable<Traits, std::index_sequence<I...>> : public CEnhTable<Traits> {
    using Base = CEnhTable<Traits>;
    template <std::size_t>
    using TextArg = const CString&;
    template <std::size_t>
    using IdArg = ULONG;

  public:
    using Row = typename Base::Row;
    static_assert(Base::kHasForeignKey && Base::kHasUniqueId,
                  "a text table has a foreign key and a unique object per row");

    using Base::Base;

    ULONG Insert(ULONG foreignKey, TextArg<I>... texts, ULONG uniqueId, ULONG key) {
        return this->InsertTexts(NewRow(foreignKey, uniqueId), key, texts...);
    }
    ULONG Insert(ULONG foreignKey, IdArg<I>... stringIds, ULONG uniqueId, ULONG key) {
        auto row = NewRow(foreignKey, uniqueId);
        ((row.get()->*Traits::kTexts[I].column = stringIds), ...);
        return this->InsertIds(std::move(row), key);
    }
    // Overwrites the foreign key and the string ids (usages untouched); 0 when there
    // is no such row.
    int Update(ULONG key, ULONG foreignKey, IdArg<I>... stringIds) {
        return this->UpdateRow(key, [&](Row& row) {
            row.*Traits::kForeignKey = foreignKey;
            ((row.*Traits::kTexts[I].column = stringIds), ...);
        });
    }

  private:
    static std::unique_ptr<Row> NewRow(ULONG foreignKey, ULONG uniqueId) {
        auto row = std::make_unique<Row>();
        row.get()->*Traits::kForeignKey = foreignKey;
        row.get()->*Traits::kUniqueId = uniqueId;
        return row;
    }
};
