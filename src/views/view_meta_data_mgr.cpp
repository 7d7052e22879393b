#include "views/view_meta_data_mgr.h"

#include <algorithm>
#include <string>
#include <unordered_map>

namespace {

// Adds the usage types of the view texts that the model lacks, so that the tables
// find them when they are built. Returns `names`. A name space loaded without its
// usage types (strings only) is left alone: the built-in ones are missing too.
CNameSpaceMgr* WithViewUsageTypes(CNameSpaceMgr* names) {
    if (!names || names->GetStringUsageTypeTable().GetCount() == 0) return names;
    for (const char* name : tessmeta::kViewUsageTypeNames)
        if (!names->GetStringUsageTypeId(name)) names->GetStringUsageTypeTable().AddUsageType(name);
    return names;
}

// The rows of one view in `table`, by position, then key.
template <class Table>
auto RowsByPosition(Table& table, ULONG viewId) {
    std::vector<typename Table::Row*> rows;
    for (auto* row = table.GetFirstFKRow(viewId); row; row = table.GetNextFKRow())
        rows.push_back(row);
    std::sort(rows.begin(), rows.end(), [](const auto* a, const auto* b) {
        return a->Position != b->Position ? a->Position < b->Position
                                          : a->GetTechKey() < b->GetTechKey();
    });
    return rows;
}

template <class Table>
std::string TextOf(const Table& table, const typename Table::Row* row, int column) {
    CString text;
    table.GetText(row, column, text);
    return std::string(text.View());
}

std::string Join(const std::vector<std::string>& items) {
    std::string joined;
    for (const std::string& item : items) {
        if (!joined.empty()) joined += ", ";
        joined += item;
    }
    return joined;
}

}  // namespace

CViewMetaDataMgr::CViewMetaDataMgr(CNameSpaceMgr* names, CGuidMgr* guids, CZmfFile* file)
    : m_pNames(WithViewUsageTypes(names)),
      m_pGuids(guids),
      m_pViews(std::make_unique<CEnhViewTableTable>(names, nullptr, guids, file)),
      m_pComponents(std::make_unique<CEnhViewComponentTable>(names, nullptr, guids, file)),
      m_pColumns(std::make_unique<CEnhViewColumnTable>(names, nullptr, guids, file)),
      m_pFields(std::make_unique<CEnhViewFieldTable>(names, nullptr, guids, file)),
      m_pFieldColumns(std::make_unique<CEnhViewFieldColumnTable>(names, nullptr, guids, file)),
      m_pUsages(std::make_unique<CEnhViewColumnUsageTable>(names, nullptr, guids, file)) {}

CViewMetaDataMgr::~CViewMetaDataMgr() = default;

// ---- persistence ---------------------------------------------------------------------

int CViewMetaDataMgr::Init() {
    m_pViews->Init(0);
    m_pComponents->Init(0);
    m_pColumns->Init(0);
    m_pFields->Init(0);
    m_pFieldColumns->Init(0);
    m_pUsages->Init(0);
    return 1;
}

int CViewMetaDataMgr::Save(CZmfFile* file) {
    const int results[] = {m_pViews->Save(file),        m_pComponents->Save(file),
                           m_pColumns->Save(file),      m_pFields->Save(file),
                           m_pFieldColumns->Save(file), m_pUsages->Save(file)};
    return std::all_of(std::begin(results), std::end(results), [](int r) { return r != 0; });
}

void CViewMetaDataMgr::ReleaseStorageTables(int flag) {
    CEnhTableBase* const tables[] = {m_pViews.get(),  m_pComponents.get(),   m_pColumns.get(),
                                     m_pFields.get(), m_pFieldColumns.get(), m_pUsages.get()};
    for (CEnhTableBase* table : tables) {
        CTableBase** handle = table->GetTablePtrAddr();
        if (*handle && table->GetFile()) table->GetFile()->ReleaseTable(handle, flag);
    }
}

// ---- inserts ---------------------------------------------------------------------------

template <class Table>
ULONG CViewMetaDataMgr::AdoptModel(Table& table, ULONG key, const CKelViewTable& view) {
    const auto* row = table.GetRow(key);
    if (row && m_pGuids) m_pGuids->UpdateUniqueObjModelID(row->Global_User_ID, view.Model_ID);
    return key;
}

ULONG CViewMetaDataMgr::InsertView(ULONG modelId, const SViewTexts& texts, ULONG selectFlags,
                                   ULONG uniqueId, ULONG key) {
    return m_pViews->Insert(modelId, texts.name, texts.owner, texts.definition, texts.note,
                            texts.where, texts.having, selectFlags, uniqueId, key);
}

ULONG CViewMetaDataMgr::InsertViewComponent(ULONG viewId, ULONG objectId, const CString& name,
                                            const CString& alias, ULONG position, ULONG uniqueId,
                                            ULONG key) {
    const CKelViewTable* view = GetViewRow(viewId);
    if (!view) return 0;
    return AdoptModel(*m_pComponents,
                      m_pComponents->Insert(viewId, objectId, name, alias, position, uniqueId, key),
                      *view);
}

ULONG CViewMetaDataMgr::InsertViewColumn(ULONG viewId, ULONG componentId, ULONG objectId,
                                         const CString& name, ULONG uniqueId, ULONG key) {
    const CKelViewTable* view = GetViewRow(viewId);
    const CKelViewComponent* component = GetViewComponentRow(componentId);
    if (!view || !component || component->View_Table_ID != viewId) return 0;
    return AdoptModel(
        *m_pColumns, m_pColumns->Insert(viewId, componentId, objectId, name, uniqueId, key), *view);
}

ULONG CViewMetaDataMgr::InsertViewField(ULONG viewId, const CString& name,
                                        const CString& expression, ULONG position, ULONG uniqueId,
                                        ULONG key) {
    const CKelViewTable* view = GetViewRow(viewId);
    if (!view) return 0;
    return AdoptModel(*m_pFields,
                      m_pFields->Insert(viewId, name, expression, position, uniqueId, key), *view);
}

ULONG CViewMetaDataMgr::InsertViewFieldColumn(ULONG fieldId, ULONG columnId, ULONG position,
                                              ULONG uniqueId, ULONG key) {
    const CKelViewField* field = GetViewFieldRow(fieldId);
    const CKelViewColumn* column = GetViewColumnRow(columnId);
    if (!field || !column || field->View_Table_ID != column->View_Table_ID) return 0;
    const CKelViewTable* view = GetViewRow(field->View_Table_ID);
    if (!view) return 0;
    return AdoptModel(
        *m_pFieldColumns,
        m_pFieldColumns->Insert(field->View_Table_ID, fieldId, columnId, position, uniqueId, key),
        *view);
}

ULONG CViewMetaDataMgr::InsertViewColumnUsage(ULONG columnId, ULONG clause, ULONG position,
                                              ULONG flags, ULONG uniqueId, ULONG key) {
    const CKelViewColumn* column = GetViewColumnRow(columnId);
    if (!column || clause < tessmeta::kViewClauseWhere || clause > tessmeta::kViewClauseOrderBy)
        return 0;
    const CKelViewTable* view = GetViewRow(column->View_Table_ID);
    if (!view) return 0;
    return AdoptModel(
        *m_pUsages,
        m_pUsages->Insert(column->View_Table_ID, columnId, clause, position, flags, uniqueId, key),
        *view);
}

// ---- updates ------------------------------------------------------------------------------

int CViewMetaDataMgr::UpdateView(ULONG key, ULONG modelId, ULONG selectFlags) {
    const CKelViewTable* view = GetViewRow(key);
    if (!view) return 0;
    const bool moved = view->Model_ID != modelId;
    m_pViews->Update(key, modelId, selectFlags);
    if (!moved || !m_pGuids) return 1;
    m_pGuids->UpdateUniqueObjModelID(view->Global_User_ID, modelId);
    auto move = [&](auto& table) {
        for (const auto* row = table.GetFirstFKRow(key); row; row = table.GetNextFKRow())
            m_pGuids->UpdateUniqueObjModelID(row->Global_User_ID, modelId);
    };
    move(*m_pComponents);
    move(*m_pColumns);
    move(*m_pFields);
    move(*m_pFieldColumns);
    move(*m_pUsages);
    return 1;
}

int CViewMetaDataMgr::UpdateViewComponent(ULONG key, ULONG objectId, ULONG position) {
    return m_pComponents->Update(key, objectId, position);
}
int CViewMetaDataMgr::UpdateViewColumn(ULONG key, ULONG objectId) {
    return m_pColumns->Update(key, objectId);
}
int CViewMetaDataMgr::UpdateViewField(ULONG key, ULONG position) {
    return m_pFields->Update(key, position);
}
int CViewMetaDataMgr::UpdateViewFieldColumn(ULONG key, ULONG position) {
    return m_pFieldColumns->Update(key, position);
}
int CViewMetaDataMgr::UpdateViewColumnUsage(ULONG key, ULONG clause, ULONG position, ULONG flags) {
    if (clause < tessmeta::kViewClauseWhere || clause > tessmeta::kViewClauseOrderBy) return 0;
    return m_pUsages->Update(key, clause, position, flags);
}

// ---- deletes --------------------------------------------------------------------------------

template <class Table, class Match>
std::vector<ULONG> CViewMetaDataMgr::KeysOf(Table& table, ULONG viewId, Match&& match) {
    std::vector<ULONG> keys;  // the index must not change while it is walked
    for (const auto* row = table.GetFirstFKRow(viewId); row; row = table.GetNextFKRow())
        if (match(*row)) keys.push_back(row->GetTechKey());
    return keys;
}

int CViewMetaDataMgr::DeleteView(ULONG key) {
    if (!GetViewRow(key)) return 0;
    m_pUsages->DeleteAllFKRows(key);
    m_pFieldColumns->DeleteAllFKRows(key);
    m_pFields->DeleteAllFKRows(key);
    m_pColumns->DeleteAllFKRows(key);
    m_pComponents->DeleteAllFKRows(key);
    return m_pViews->Delete(key);
}

int CViewMetaDataMgr::DeleteViewComponent(ULONG key) {
    const CKelViewComponent* component = GetViewComponentRow(key);
    if (!component) return 0;
    for (ULONG column :
         KeysOf(*m_pColumns, component->View_Table_ID,
                [key](const CKelViewColumn& c) { return c.View_Component_ID == key; }))
        DeleteViewColumn(column);
    return m_pComponents->Delete(key);
}

int CViewMetaDataMgr::DeleteViewColumn(ULONG key) {
    const CKelViewColumn* column = GetViewColumnRow(key);
    if (!column) return 0;
    const ULONG viewId = column->View_Table_ID;
    for (ULONG usage : KeysOf(*m_pUsages, viewId, [key](const CKelViewColumnUsage& u) {
             return u.View_Column_ID == key;
         }))
        m_pUsages->Delete(usage);
    std::vector<ULONG> fields;  // the fields that lose a column
    for (ULONG part : KeysOf(*m_pFieldColumns, viewId, [&](const CKelViewFieldColumn& fc) {
             if (fc.View_Column_ID != key) return false;
             fields.push_back(fc.View_Field_ID);
             return true;
         }))
        m_pFieldColumns->Delete(part);
    m_pColumns->Delete(key);

    // A field that is only its columns cannot stand without any.
    for (ULONG fieldId : fields) {
        const CKelViewField* field = GetViewFieldRow(fieldId);
        if (!field || field->Expression != 0) continue;
        const bool hasColumns =
            !KeysOf(*m_pFieldColumns, viewId, [fieldId](const CKelViewFieldColumn& fc) {
                 return fc.View_Field_ID == fieldId;
             }).empty();
        if (!hasColumns) DeleteViewField(fieldId);
    }
    return 1;
}

int CViewMetaDataMgr::DeleteViewField(ULONG key) {
    const CKelViewField* field = GetViewFieldRow(key);
    if (!field) return 0;
    for (ULONG part :
         KeysOf(*m_pFieldColumns, field->View_Table_ID,
                [key](const CKelViewFieldColumn& fc) { return fc.View_Field_ID == key; }))
        m_pFieldColumns->Delete(part);
    return m_pFields->Delete(key);
}

int CViewMetaDataMgr::DeleteViewFieldColumn(ULONG key) {
    return m_pFieldColumns->Delete(key);
}

int CViewMetaDataMgr::DeleteViewColumnUsage(ULONG key) {
    return m_pUsages->Delete(key);
}

// ---- edit state and SELECT -------------------------------------------------------------------

ULONG CViewMetaDataMgr::GetAndUpdateViewEditState(ULONG viewId) {
    CKelViewTable* view = GetViewRow(viewId);
    return view ? view->GetAndUpdateEditState() : 0;
}

int CViewMetaDataMgr::GetViewSelect(ULONG viewId, CString& out) {
    const CKelViewTable* view = GetViewRow(viewId);
    if (!view) return 0;

    std::vector<std::string> from;
    std::unordered_map<ULONG, std::string> qualifiers;  // by component key
    for (const CKelViewComponent* c : RowsByPosition(*m_pComponents, viewId)) {
        const std::string name = TextOf(*m_pComponents, c, tessmeta::kViewComponentName);
        const std::string alias = TextOf(*m_pComponents, c, tessmeta::kViewComponentAlias);
        from.push_back(alias.empty() ? name : name + " " + alias);
        qualifiers[c->View_Component_ID] = alias.empty() ? name : alias;
    }

    struct SColumn {
        std::string name, reference;
    };
    std::unordered_map<ULONG, SColumn> columns;  // by column key
    for (const CKelViewColumn* c = GetFirstViewColumnFKRow(viewId); c;
         c = GetNextViewColumnFKRow()) {
        SColumn& column = columns[c->View_Column_ID];
        column.name = TextOf(*m_pColumns, c, tessmeta::kViewColumnName);
        const auto qualifier = qualifiers.find(c->View_Component_ID);
        column.reference = qualifier == qualifiers.end() || qualifier->second.empty()
                               ? column.name
                               : qualifier->second + "." + column.name;
    }

    std::unordered_map<ULONG, const SColumn*> firstColumn;  // by field key
    for (const CKelViewFieldColumn* fc : RowsByPosition(*m_pFieldColumns, viewId)) {
        const auto column = columns.find(fc->View_Column_ID);
        if (column != columns.end()) firstColumn.emplace(fc->View_Field_ID, &column->second);
    }

    std::vector<std::string> select;
    for (const CKelViewField* f : RowsByPosition(*m_pFields, viewId)) {
        const std::string name = TextOf(*m_pFields, f, tessmeta::kViewFieldName);
        std::string item = TextOf(*m_pFields, f, tessmeta::kViewFieldExpression);
        std::string plainName;  // the name the item has without an alias
        if (item.empty()) {
            const auto column = firstColumn.find(f->View_Field_ID);
            item = column == firstColumn.end() ? "NULL" : column->second->reference;
            if (column != firstColumn.end()) plainName = column->second->name;
        }
        if (!name.empty() && name != plainName) item += " AS " + name;
        select.push_back(item);
    }

    std::vector<std::string> groupBy, orderBy;
    for (const CKelViewColumnUsage* u : RowsByPosition(*m_pUsages, viewId)) {
        const auto column = columns.find(u->View_Column_ID);
        if (column == columns.end()) continue;
        if (u->Clause == tessmeta::kViewClauseGroupBy) groupBy.push_back(column->second.reference);
        if (u->Clause == tessmeta::kViewClauseOrderBy)
            orderBy.push_back(column->second.reference +
                              (u->Flags & tessmeta::kViewUsageDescending ? " DESC" : ""));
    }

    std::string sql = "SELECT ";
    if (view->Select_Flags & tessmeta::kViewSelectDistinct) sql += "DISTINCT ";
    sql += select.empty() ? "*" : Join(select);
    if (!from.empty()) sql += "\nFROM " + Join(from);
    const std::string where = TextOf(*m_pViews, view, tessmeta::kViewWhere);
    if (!where.empty()) sql += "\nWHERE " + where;
    if (!groupBy.empty()) sql += "\nGROUP BY " + Join(groupBy);
    const std::string having = TextOf(*m_pViews, view, tessmeta::kViewHaving);
    if (!having.empty()) sql += "\nHAVING " + having;
    if (!orderBy.empty()) sql += "\nORDER BY " + Join(orderBy);
    out = std::string_view(sql);
    return 1;
}
