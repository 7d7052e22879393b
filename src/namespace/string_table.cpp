#include "namespace/string_table.h"

#include <algorithm>
#include <type_traits>
#include <utility>
#include <vector>

#include "namespace/string_usage_table.h"

// ---- CEnhStringTable ------------------------------------------------------------------

// Keys whose entry a purge removed while an older row with the same key may still be
// in the table, one list of hashes per map.
template <class Row>
struct CEnhStringTable<Row>::SLostKeys {
    std::vector<UINT> byId, byText, byTextNoCase;

    bool Empty() const { return byId.empty() && byText.empty() && byTextNoCase.empty(); }
};

template <class Row>
void CEnhStringTable<Row>::Init(unsigned int bucketCount) {
    // The maps are sized from the stored row count, which the read itself gives,
    // and filed on first use; lookups by id read the slots, which need the id map
    // only for ids beyond them.
    m_unsized = LoadSize(bucketCount);
    m_byIdSlots.Clear();
    m_byIdSlots.Reserve(StoredRowFigure() + 1);  // ids 1 to the stored row count
    m_byIdPending = m_byTextPending = m_byTextNoCasePending = true;
    // A string's text never changes while the model is open: the texts of loaded
    // rows live in the table's text arena (a store that read one into a heap block
    // gets that block back for the next read), and so do those of added rows.
    CStringArena& texts = TextArena();
    const std::size_t read = LoadPooledRows<Row>([this, &texts](CRowPtr<Row> row) {
        if (!row->Text.GetValue().IsInArena()) row->Text = texts.Store(row->GetText());
        OnLoaded(*Enter(std::move(row)));
    });
    SizeMaps(static_cast<ULONG>(read));
}

template <class Row>
void CEnhStringTable<Row>::SizeMaps(ULONG storedRows) const {
    if (!m_unsized) return;
    const UINT buckets = m_unsized->Buckets(storedRows);
    m_unsized.reset();
    m_byId.InitHashTable(buckets);
    m_byText.InitHashTable(buckets);
    m_byTextNoCase.InitHashTable(buckets);
}

template <class Row>
template <class Map>
Map& CEnhStringTable<Row>::File(Map& map, bool& pending) const {
    // Filed while the load still reads (an id beyond the slots): the stored rows
    // are counted for the size.
    if (m_unsized) {
        CTableBase* stored = *this;
        SizeMaps(m_unsized->NeedsRows() && stored ? stored->GetCount() : 0);
    }
    FileListedRows<Row>(pending, [&map](Row* row) { map.Add(row); });
    return map;
}

template <class Row>
auto CEnhStringTable<Row>::FiledIdMap() const -> IdMap& {
    return File(m_byId, m_byIdPending);
}

template <class Row>
auto CEnhStringTable<Row>::FiledTextMap() const -> TextMap& {
    return File(m_byText, m_byTextPending);
}

template <class Row>
auto CEnhStringTable<Row>::FiledNoCaseMap() const -> NoCaseMap& {
    return File(m_byTextNoCase, m_byTextNoCasePending);
}

template <class Row>
Row* CEnhStringTable<Row>::Enter(CRowPtr<Row> owned) {
    AddRow(owned.get());
    Row* row = owned.release();
    row->SetEnhTable(static_cast<typename Row::TableType*>(this));
    if (!m_byIdPending) m_byId.Add(row);
    // The map's rule: the row added last is found (a map filed here for the slots
    // takes this row in its walk).
    m_byIdSlots.Set(row->String_ID, row, static_cast<std::size_t>(GetRowCount()),
                    [this](ULONG other) { return MapFind(other); });
    if (!m_byTextPending) m_byText.Add(row);
    if (!m_byTextNoCasePending) m_byTextNoCase.Add(row);
    return row;
}

template <class Row>
int CEnhStringTable<Row>::SaveStrings(CZmfFile* file, int purge, const CUsedStringIds& used) {
    SLostKeys lost;
    const int result = tessmeta::GuardedSave([&] {
        CTableBase* table = BeginSave(file, Row::Desc().name, GetRowCount());
        if (!table) throw __LINE__;
        for (POSITION pos = GetFirstRowPosition(); pos;) {
            Row* row = GetNextRow(pos);  // moves on first: the row may go below
            if (!purge || used.Contains(row->String_ID) || SurvivesPurge(*row))
                ZMF_CHECKED_INSERT(table, row);
            else
                Purge(row, lost);
        }
        return 1;
    });
    // Also after a failed save: the rows purged until then are gone.
    if (!lost.Empty()) RefileShadowedRows(lost);
    return result;
}

template <class Row>
void CEnhStringTable<Row>::Purge(Row* row, SLostKeys& lost) {
    // A pending text map is filed later from the rows still listed: nothing to
    // undo. The slot needs the id map's answer once the row has left it.
    if (FiledIdMap().Remove(row)) lost.byId.push_back(IdKey::Hash(IdKey::Of(row)));
    SyncSlot(row->String_ID);
    if (!m_byTextPending && m_byText.Remove(row))
        lost.byText.push_back(TextKey::Hash(TextKey::Of(row)));
    if (!m_byTextNoCasePending && m_byTextNoCase.Remove(row))
        lost.byTextNoCase.push_back(NoCaseKey::Hash(NoCaseKey::Of(row)));
    Remove(row);
}

// A purged row may have been the one found under a key that an older row shares
// (two case variants, the empty text of long strings). The older row is found
// again, as it would be after reloading the saved file: among the rows left with
// that key, the last in table order.
template <class Row>
void CEnhStringTable<Row>::RefileShadowedRows(SLostKeys& lost) {
    auto refile = [this](auto& map, std::vector<UINT>& hashes, auto key) {
        if (hashes.empty()) return;
        std::sort(hashes.begin(), hashes.end());
        std::vector<Row*> candidates;
        for (POSITION pos = GetFirstRowPosition(); pos;) {
            Row* row = GetNextRow(pos);
            if (std::binary_search(hashes.begin(), hashes.end(), key.Hash(key.Of(row))))
                candidates.push_back(row);
        }
        for (auto it = candidates.rbegin(); it != candidates.rend(); ++it) {
            if (!map.Find(key.Of(*it))) map.Add(*it);
        }
        if constexpr (std::is_same_v<decltype(key), IdKey>)
            for (Row* row : candidates)
                SyncSlot(row->String_ID);
    };
    refile(FiledIdMap(), lost.byId, IdKey{});
    refile(m_byText, lost.byText, TextKey{});
    refile(m_byTextNoCase, lost.byTextNoCase, NoCaseKey{});
}

template class CEnhStringTable<CKelSmallString>;
template class CEnhStringTable<CKelLargeString>;

// ---- the two tables ---------------------------------------------------------------------

CEnhSmallStringTable::CEnhSmallStringTable(CZmfFile* file)
    : CEnhStringTable(file, CSmallStringBase::Desc().name) {}

CKelSmallString* CEnhSmallStringTable::Add(ULONG id, std::string_view text, bool large) {
    CRowPtr<CKelSmallString> row = NewPooledRow<CKelSmallString>();
    row->String_ID = id;
    if (!large) row->Text = TextArena().Store(text);
    row->Large_Flag = large ? 1 : 0;
    return Enter(std::move(row));
}

CEnhLargeStringTable::CEnhLargeStringTable(CZmfFile* file)
    : CEnhStringTable(file, CLargeStringBase::Desc().name) {}

CKelLargeString* CEnhLargeStringTable::Add(ULONG id, std::string_view text) {
    CRowPtr<CKelLargeString> row = NewPooledRow<CKelLargeString>();
    row->String_ID = id;
    row->Text = TextArena().Store(text);
    return Enter(std::move(row));
}

// ---- CStringTablePair -------------------------------------------------------------------

CStringTablePair::CStringTablePair(CZmfFile* file)
    : m_pSmall(std::make_unique<CEnhSmallStringTable>(file)),
      m_pLarge(std::make_unique<CEnhLargeStringTable>(file)),
      m_pFile(file) {}

CStringTablePair::~CStringTablePair() = default;

void CStringTablePair::Init(unsigned int bucketCount) {
    m_pSmall->Init(bucketCount);
    m_pLarge->Init();
    m_pFile = nullptr;
}

int CStringTablePair::Save(CZmfFile* file, int purge) {
    m_pFile = file;
    CUsedStringIds used;
    if (m_pUsages) {
        // Like every question to the usage table, this one completes a deferred
        // load; it is asked purging or not, so that after a save every usage is in
        // memory and the usage table's record-store table can be given back.
        m_pUsages->CompleteLoad();
        if (purge) used = m_pUsages->CollectUsedStringIds();
    }
    const int small = m_pSmall->Save(file, purge, used);
    const int large = m_pLarge->Save(file, purge, used);
    return small && large ? 1 : 0;
}

void CStringTablePair::ReleaseStorageTables(int flag) {
    for (CEnhTableBase* table : {static_cast<CEnhTableBase*>(m_pSmall.get()),
                                 static_cast<CEnhTableBase*>(m_pLarge.get())}) {
        CTableBase** handle = table->GetTablePtrAddr();
        if (*handle && table->GetFile()) table->GetFile()->ReleaseTable(handle, flag);
    }
}

void CStringTablePair::AddRows(ULONG id, std::string_view text) {
    const bool large = text.size() >= static_cast<size_t>(kLargeTextLength);
    m_pSmall->Add(id, text, large);
    if (large) m_pLarge->Add(id, text);
}

ULONG CStringTablePair::AddToStringTable(std::string_view text) {
    if (const ULONG id = GetStringId(text)) return id;
    const ULONG id = m_pSmall->NewStringId();
    AddRows(id, text);
    return id;
}

ULONG CStringTablePair::GetStringId(std::string_view text) const {
    if (text.size() >= static_cast<size_t>(kLargeTextLength)) {
        const CKelLargeString* row = m_pLarge->FindByText(text);
        return row ? row->String_ID : 0;
    }
    const CKelSmallString* row = m_pSmall->FindByText(text);
    return row ? row->String_ID : 0;
}

ULONG CStringTablePair::GetStringIdNoCase(std::string_view text) const {
    if (text.size() >= static_cast<size_t>(kLargeTextLength)) {
        const CKelLargeString* row = m_pLarge->FindByTextNoCase(text);
        return row ? row->String_ID : 0;
    }
    const CKelSmallString* row = m_pSmall->FindByTextNoCase(text);
    return row ? row->String_ID : 0;
}

bool CStringTablePair::GetText(ULONG id, CString& out) const {
    std::string_view text;
    if (!FindText(id, text)) return false;
    out = text;
    return true;
}

bool CStringTablePair::FindText(ULONG id, std::string_view& out) const {
    if (id == 0) {
        out = {};
        return true;
    }
    bool large = false;
    const CKelSmallString* row = m_pSmall->FindById(id, large);
    if (!row) return false;
    if (!large) {
        out = row->GetText();
        return true;
    }
    const CKelLargeString* longRow = m_pLarge->FindById(id);
    if (!longRow) return false;
    out = longRow->GetText();
    return true;
}

int CStringTablePair::CopyToStringTable(std::string_view text, ULONG id) {
    if (id == 0) return 0;
    if (m_pSmall->FindById(id)) return 1;
    AddRows(id, text);
    return 1;
}

void CStringTablePair::GetNext(POSITION& position, LONG& id, CString& text) const {
    const CKelSmallString* row = m_pSmall->GetNextRow(position);
    id = static_cast<LONG>(row->String_ID);
    if (!row->IsLarge()) {
        text = row->GetText();
        return;
    }
    const CKelLargeString* large = m_pLarge->FindById(row->String_ID);
    text = large ? large->GetText() : std::string_view();
}
