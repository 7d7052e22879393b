// The six in-memory tables of the view metadata (see docs/views.md for the model).
//
//   CEnhViewTableTable        "View_Table"         the views (foreign key Model_ID)
//   CEnhViewComponentTable    "View_Component"     tables and views a view reads
//   CEnhViewColumnTable       "View_Column"        columns of those the view uses
//   CEnhViewFieldTable        "View_Field"         the view's select list
//   CEnhViewFieldColumnTable  "View_Field_Column"  the columns a field is made of
//   CEnhViewColumnUsageTable  "View_Column_Usage"  columns in WHERE, GROUP BY, ...
//
// Every row is a unique object of its own type, created when the row is inserted
// and deleted with it, and its texts are usages of the name space. The five tables
// below the views are indexed by the view's key, so each of them can be walked
// view by view. The tables insert and update rows as given; the checks and the
// cascades are CViewMetaDataMgr's. Constructors are the pattern's (enh_table.h).
#pragma once

#include <array>
#include <memory>

#include "foundation/enh_table.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "views/view_edit_state.h"
#include "zmflib/rows.h"
#include "zmflib/zmf_file.h"

namespace tessmeta {

// Select_Flags of a view.
inline constexpr ULONG kViewSelectDistinct = 0x1;  // SELECT DISTINCT

// The clause a column usage stands in.
enum EViewClause : ULONG {
    kViewClauseWhere = 1,    // a column the WHERE text refers to
    kViewClauseGroupBy = 2,  // a GROUP BY column
    kViewClauseHaving = 3,   // a column the HAVING text refers to
    kViewClauseOrderBy = 4,  // an ORDER BY column
};

// Flags of a column usage.
inline constexpr ULONG kViewUsageDescending = 0x1;  // ORDER BY ... DESC

// The text columns of each table, as numbered by GetText / SetText.
enum EViewText { kViewName, kViewOwner, kViewDefinition, kViewNote, kViewWhere, kViewHaving };
enum EViewComponentText { kViewComponentName, kViewComponentAlias };
enum EViewColumnText { kViewColumnName };
enum EViewFieldText { kViewFieldName, kViewFieldExpression };

// The usage types of every view text, the ones the name space has built in first.
inline constexpr std::array<const char*, 11> kViewUsageTypeNames{
    "View Name",         "View Owner",         "View Definition",      "View Note",
    "View Where Clause", "View Having Clause", "View Component Name",  "View Component Alias",
    "View Column Name",  "View Field Name",    "View Field Expression"};

}  // namespace tessmeta

class CEnhViewTableTable;
class CEnhViewComponentTable;
class CEnhViewColumnTable;
class CEnhViewFieldTable;
class CEnhViewFieldColumnTable;
class CEnhViewColumnUsageTable;

// A view. Its edit state (the second base) is stored in Edit_State: read from it at
// load, written to it at save; in between the word is the one to use.
class CKelViewTable final : public CEnhRow<CView_TableBase, CEnhViewTableTable>,
                            public CViewEditState {};
class CKelViewComponent final : public CEnhRow<CView_ComponentBase, CEnhViewComponentTable> {};
class CKelViewColumn final : public CEnhRow<CView_ColumnBase, CEnhViewColumnTable> {};
class CKelViewField final : public CEnhRow<CView_FieldBase, CEnhViewFieldTable> {};
class CKelViewFieldColumn final : public CEnhRow<CView_Field_ColumnBase, CEnhViewFieldColumnTable> {
};
class CKelViewColumnUsage final : public CEnhRow<CView_Column_UsageBase, CEnhViewColumnUsageTable> {
};

struct SViewTableTraits : CEnhTableTraits<CKelViewTable> {
    static constexpr DWORD Row::*kForeignKey = &Row::Model_ID;
    static constexpr std::array kTexts{Text{&Row::Name, "View Name"},
                                       Text{&Row::Owner, "View Owner"},
                                       Text{&Row::Definition, "View Definition"},
                                       Text{&Row::Note, "View Note"},
                                       Text{&Row::Where_Clause, "View Where Clause"},
                                       Text{&Row::Having_Clause, "View Having Clause"}};
    static constexpr const char* kObjectType = "View Table";
};

// The traits of a table whose rows belong to one view.
template <class RowT>
struct SViewPartTraits : CEnhTableTraits<RowT> {
    static constexpr DWORD RowT::*kForeignKey = &RowT::View_Table_ID;
};

struct SViewComponentTraits : SViewPartTraits<CKelViewComponent> {
    static constexpr std::array kTexts{Text{&Row::Name, "View Component Name"},
                                       Text{&Row::Alias, "View Component Alias"}};
    static constexpr const char* kObjectType = "View Component";
};
struct SViewColumnTraits : SViewPartTraits<CKelViewColumn> {
    static constexpr std::array kTexts{Text{&Row::Name, "View Column Name"}};
    static constexpr const char* kObjectType = "View Column";
};
struct SViewFieldTraits : SViewPartTraits<CKelViewField> {
    static constexpr std::array kTexts{Text{&Row::Name, "View Field Name"},
                                       Text{&Row::Expression, "View Field Expression"}};
    static constexpr const char* kObjectType = "View Field";
};
struct SViewFieldColumnTraits : SViewPartTraits<CKelViewFieldColumn> {
    static constexpr const char* kObjectType = "Parent Field Column";
};
struct SViewColumnUsageTraits : SViewPartTraits<CKelViewColumnUsage> {
    static constexpr const char* kObjectType = "Column Usage";
};

class CEnhViewTableTable : public CEnhTable<SViewTableTraits> {
  public:
    using CEnhTable::CEnhTable;

    // Loads every stored row; each row's edit state is read from Edit_State.
    using CEnhTable::Init;
    void Init(unsigned int bucketCount) override;

    // The texts in EViewText order. Returns the key.
    ULONG Insert(ULONG modelId, const CString& name, const CString& owner,
                 const CString& definition, const CString& note, const CString& where,
                 const CString& having, ULONG selectFlags, ULONG uniqueId, ULONG key);
    int Update(ULONG key, ULONG modelId, ULONG selectFlags);

    // Writes every row's edit state into Edit_State, then rewrites the table.
    int Save(CZmfFile* file);
};

class CEnhViewComponentTable : public CEnhTable<SViewComponentTraits> {
  public:
    using CEnhTable::CEnhTable;
    ULONG Insert(ULONG viewId, ULONG objectId, const CString& name, const CString& alias,
                 ULONG position, ULONG uniqueId, ULONG key);
    int Update(ULONG key, ULONG objectId, ULONG position);
};

class CEnhViewColumnTable : public CEnhTable<SViewColumnTraits> {
  public:
    using CEnhTable::CEnhTable;
    ULONG Insert(ULONG viewId, ULONG componentId, ULONG objectId, const CString& name,
                 ULONG uniqueId, ULONG key);
    int Update(ULONG key, ULONG objectId);
};

class CEnhViewFieldTable : public CEnhTable<SViewFieldTraits> {
  public:
    using CEnhTable::CEnhTable;
    ULONG Insert(ULONG viewId, const CString& name, const CString& expression, ULONG position,
                 ULONG uniqueId, ULONG key);
    int Update(ULONG key, ULONG position);
};

class CEnhViewFieldColumnTable : public CEnhTable<SViewFieldColumnTraits> {
  public:
    using CEnhTable::CEnhTable;
    ULONG Insert(ULONG viewId, ULONG fieldId, ULONG columnId, ULONG position, ULONG uniqueId,
                 ULONG key);
    int Update(ULONG key, ULONG position);
};

class CEnhViewColumnUsageTable : public CEnhTable<SViewColumnUsageTraits> {
  public:
    using CEnhTable::CEnhTable;
    ULONG Insert(ULONG viewId, ULONG columnId, ULONG clause, ULONG position, ULONG flags,
                 ULONG uniqueId, ULONG key);
    int Update(ULONG key, ULONG clause, ULONG position, ULONG flags);
};
