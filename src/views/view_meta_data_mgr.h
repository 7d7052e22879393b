// CViewMetaDataMgr: the metadata of the database views of one model.
//
// A view (CKelViewTable) reads components (tables or other views), uses columns of
// them, selects fields made of those columns or of expressions, and refers to
// columns in its WHERE, GROUP BY, HAVING and ORDER BY clauses. That is enough to
// show a view and to write its SELECT again (GetViewSelect); docs/views.md has the
// model table by table.
//
// Every row is a unique object, created when the row is inserted and deleted with
// it; its texts are usages of the name space. The unique objects of a view's rows
// carry the view's model id.
//
// Cascades (each delete removes what can no longer stand):
//   view          -> its column usages, field columns, fields, columns, components
//   component     -> its columns (and what they cascade to)
//   column        -> its usages and field columns; a field without an expression
//                    that loses its last column goes too
//   field         -> its field columns
// Inserts check that the rows they refer to exist and belong to the same view, and
// return 0 (nothing made) otherwise.
//
// Life cycle: construct after the name space is loaded (the manager adds its usage
// types to the name space if the model lacks them), Init once, work in memory, Save,
// ReleaseStorageTables.
//
// Walks: GetFirst<Thing>FKRow / GetNext<Thing>FKRow give the rows of one view (of
// one model for views), then null. Another walk of the same table, or a change to
// it, ends a walk.
#pragma once

#include <memory>
#include <vector>

#include "identity/guid_mgr.h"
#include "namespace/name_space_mgr.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "views/view_tables.h"
#include "zmflib/zmf_file.h"

// The texts of a view, in EViewText order.
struct SViewTexts {
    CString name, owner, definition, note, where, having;
};

class CViewMetaDataMgr {
  public:
    // All three borrowed. `names` must be loaded; `guids` creates and deletes the
    // rows' unique objects.
    CViewMetaDataMgr(CNameSpaceMgr* names, CGuidMgr* guids, CZmfFile* file);
    virtual ~CViewMetaDataMgr();
    CViewMetaDataMgr(const CViewMetaDataMgr&) = delete;
    CViewMetaDataMgr& operator=(const CViewMetaDataMgr&) = delete;

    // ---- persistence -------------------------------------------------------------

    // Loads the six tables (views first). Always 1.
    int Init();
    // Rewrites the six tables in `file`, in load order. 1 when all were written.
    int Save(CZmfFile* file);
    // Gives back the record-store tables held since Save.
    void ReleaseStorageTables(int flag);

    // ---- inserts: the new row's key, or 0 ------------------------------------------

    ULONG InsertView(ULONG modelId, const SViewTexts& texts, ULONG selectFlags, ULONG uniqueId = 0,
                     ULONG key = 0);
    // `objectId`: the table or view read (0: not known to the model).
    ULONG InsertViewComponent(ULONG viewId, ULONG objectId, const CString& name,
                              const CString& alias, ULONG position, ULONG uniqueId = 0,
                              ULONG key = 0);
    // A column of component `componentId` of the view; `objectId` the column it stands for.
    ULONG InsertViewColumn(ULONG viewId, ULONG componentId, ULONG objectId, const CString& name,
                           ULONG uniqueId = 0, ULONG key = 0);
    // An empty `expression`: the field is its column(s), see InsertViewFieldColumn.
    ULONG InsertViewField(ULONG viewId, const CString& name, const CString& expression,
                          ULONG position, ULONG uniqueId = 0, ULONG key = 0);
    // Column `columnId` as part `position` of field `fieldId` (same view).
    ULONG InsertViewFieldColumn(ULONG fieldId, ULONG columnId, ULONG position, ULONG uniqueId = 0,
                                ULONG key = 0);
    // Column `columnId` in clause `clause` (tessmeta::EViewClause).
    ULONG InsertViewColumnUsage(ULONG columnId, ULONG clause, ULONG position, ULONG flags,
                                ULONG uniqueId = 0, ULONG key = 0);

    // ---- updates of the non-text columns: 1, or 0 for an unknown key ----------------
    // Texts are set through the tables' SetText (text numbers in view_tables.h).

    // Moving a view to another model moves the unique objects of all its rows.
    int UpdateView(ULONG key, ULONG modelId, ULONG selectFlags);
    int UpdateViewComponent(ULONG key, ULONG objectId, ULONG position);
    int UpdateViewColumn(ULONG key, ULONG objectId);
    int UpdateViewField(ULONG key, ULONG position);
    int UpdateViewFieldColumn(ULONG key, ULONG position);
    int UpdateViewColumnUsage(ULONG key, ULONG clause, ULONG position, ULONG flags);

    // ---- deletes with their cascades: 1, or 0 for an unknown key --------------------

    int DeleteView(ULONG key);
    int DeleteViewComponent(ULONG key);
    int DeleteViewColumn(ULONG key);
    int DeleteViewField(ULONG key);
    int DeleteViewFieldColumn(ULONG key);
    int DeleteViewColumnUsage(ULONG key);

    // ---- lookups and walks ------------------------------------------------------------

    CKelViewTable* GetViewRow(ULONG key) const { return m_pViews->GetRow(key); }
    CKelViewComponent* GetViewComponentRow(ULONG key) const { return m_pComponents->GetRow(key); }
    CKelViewColumn* GetViewColumnRow(ULONG key) const { return m_pColumns->GetRow(key); }
    CKelViewField* GetViewFieldRow(ULONG key) const { return m_pFields->GetRow(key); }
    CKelViewFieldColumn* GetViewFieldColumnRow(ULONG key) const {
        return m_pFieldColumns->GetRow(key);
    }
    CKelViewColumnUsage* GetViewColumnUsageRow(ULONG key) const { return m_pUsages->GetRow(key); }

    CKelViewTable* GetFirstViewFKRow(ULONG modelId) { return m_pViews->GetFirstFKRow(modelId); }
    CKelViewTable* GetNextViewFKRow() { return m_pViews->GetNextFKRow(); }
    CKelViewComponent* GetFirstViewComponentFKRow(ULONG viewId) {
        return m_pComponents->GetFirstFKRow(viewId);
    }
    CKelViewComponent* GetNextViewComponentFKRow() { return m_pComponents->GetNextFKRow(); }
    CKelViewColumn* GetFirstViewColumnFKRow(ULONG viewId) {
        return m_pColumns->GetFirstFKRow(viewId);
    }
    CKelViewColumn* GetNextViewColumnFKRow() { return m_pColumns->GetNextFKRow(); }
    CKelViewField* GetFirstViewFieldFKRow(ULONG viewId) { return m_pFields->GetFirstFKRow(viewId); }
    CKelViewField* GetNextViewFieldFKRow() { return m_pFields->GetNextFKRow(); }
    CKelViewFieldColumn* GetFirstViewFieldColumnFKRow(ULONG viewId) {
        return m_pFieldColumns->GetFirstFKRow(viewId);
    }
    CKelViewFieldColumn* GetNextViewFieldColumnFKRow() { return m_pFieldColumns->GetNextFKRow(); }
    CKelViewColumnUsage* GetFirstViewColumnUsageFKRow(ULONG viewId) {
        return m_pUsages->GetFirstFKRow(viewId);
    }
    CKelViewColumnUsage* GetNextViewColumnUsageFKRow() { return m_pUsages->GetNextFKRow(); }

    // ---- edit state and SELECT ----------------------------------------------------------

    // Folds the view's pending user edit into its plex edit state (CViewEditState);
    // the user edit state before the call, or 0 for an unknown view.
    ULONG GetAndUpdateViewEditState(ULONG viewId);

    // Writes the view's SELECT statement into `out`: 1, or 0 (out untouched) for an
    // unknown view. Lines: SELECT [DISTINCT] fields / FROM components / WHERE text /
    // GROUP BY columns / HAVING text / ORDER BY columns [DESC]; empty parts are left
    // out; a view without fields selects *. Fields, components and clause columns
    // come in position order (then key
    // order). A field is its expression, else its first column (qualified by the
    // column's component: its alias, else its name), then " AS name" when the name
    // differs; a field with neither shows as NULL.
    int GetViewSelect(ULONG viewId, CString& out);

    // ---- the tables -----------------------------------------------------------------------

    CEnhViewTableTable& GetViewTable() const { return *m_pViews; }
    CEnhViewComponentTable& GetViewComponentTable() const { return *m_pComponents; }
    CEnhViewColumnTable& GetViewColumnTable() const { return *m_pColumns; }
    CEnhViewFieldTable& GetViewFieldTable() const { return *m_pFields; }
    CEnhViewFieldColumnTable& GetViewFieldColumnTable() const { return *m_pFieldColumns; }
    CEnhViewColumnUsageTable& GetViewColumnUsageTable() const { return *m_pUsages; }

  private:
    // Gives the unique object of part row `key` of `table` the model id of `view`;
    // returns `key`.
    template <class Table>
    ULONG AdoptModel(Table& table, ULONG key, const CKelViewTable& view);
    // The keys of the rows of `table` under view `viewId` that `match` accepts.
    template <class Table, class Match>
    static std::vector<ULONG> KeysOf(Table& table, ULONG viewId, Match&& match);

    CNameSpaceMgr* m_pNames;  // not owned
    CGuidMgr* m_pGuids;       // not owned
    std::unique_ptr<CEnhViewTableTable> m_pViews;
    std::unique_ptr<CEnhViewComponentTable> m_pComponents;
    std::unique_ptr<CEnhViewColumnTable> m_pColumns;
    std::unique_ptr<CEnhViewFieldTable> m_pFields;
    std::unique_ptr<CEnhViewFieldColumnTable> m_pFieldColumns;
    std::unique_ptr<CEnhViewColumnUsageTable> m_pUsages;
};
