// CAutoLayoutDataMgr: the settings of the automatic diagram layout of one model.
//
// Which layout algorithms exist, which named parameters they have, the data type
// of a parameter value, which algorithms a submodel has settings for and the value
// of each parameter per submodel and algorithm. The manager holds no layout code
// and no defaults: every value, the lower and upper bounds (the _MIN and _MAX
// names) included, is the application's string, stored unchanged.
//
// Tables, in load and save order (layout_tables.h): layout algorithms, data types,
// parameter names (the three constant tables, completed at load), submodel
// algorithms, parameter values.
//
// Life cycle: construct with the model file (the tables open their record-store
// tables), Init once (or InitConstantTables, then Init, which then loads only the
// rest), work in memory, Save into the file being written, ReleaseStorageTables.
//
// Conventions: unknown ids and names find nothing (null, 0); nothing here throws
// except out-of-memory.
#pragma once

#include <memory>

#include "identity/guid_mgr.h"
#include "layout/layout_tables.h"
#include "platform/collections.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "zmflib/table_base.h"
#include "zmflib/zmf_file.h"

class CAutoLayoutDataMgr {
  public:
    // The numbers GetTablePtr answers for.
    static constexpr int kAlgorithmPropertyTableId = 1;
    static constexpr int kSubmodelAlgorithmTableId = 94;

    // Builds the five tables over `file`. Both pointers are borrowed; `guidMgr` may
    // be null (none of these rows is a unique object).
    CAutoLayoutDataMgr(CZmfFile* file, CGuidMgr* guidMgr);
    virtual ~CAutoLayoutDataMgr();
    CAutoLayoutDataMgr(const CAutoLayoutDataMgr&) = delete;
    CAutoLayoutDataMgr& operator=(const CAutoLayoutDataMgr&) = delete;

    // The identity manager given at construction (may be null).
    CGuidMgr* GetGuidMgr() const { return m_pGuidMgr; }

    // ---- persistence -------------------------------------------------------------

    // Loads the five tables in order, completing the constant ones. Always 1.
    int Init();
    // Loads (and completes) only the three constant tables. Always 1.
    int InitConstantTables();
    // Writes the five tables into `file`, in order. 1 when every table was written,
    // else 0 (the later tables are still written).
    int Save(CZmfFile* file);
    // Writes only the three constant tables; same result.
    int SaveConstantTables(CZmfFile* file);
    // Gives back every record-store table still held (`flag` is passed on to
    // CZmfFile::ReleaseTable).
    void ReleaseStorageTables(int flag);

    // The record-store table held for the parameter values (1) or the submodel
    // algorithms (94); null for any other number and while none is held.
    CTableBase* GetTablePtr(int tableId) const;

    // ---- lookups -------------------------------------------------------------------

    CKelLayoutAlgorithm* GetLayoutAlgorithmRow(const CString& name) const;
    CKelLayoutAlgorithm* GetLayoutAlgorithmRow(ULONG id) const;
    CKelLayoutPropertyName* GetLayoutPropertyNameRow(ULONG id) const;
    CKelLayoutPropertyName* GetLayoutPropertyNameRow(const CString& name) const;
    CKelDataType* GetDataTypeRow(ULONG id) const;
    CKelDataType* GetDataTypeRow(const CString& name) const;
    // The row of the (submodel, algorithm) pair, or null.
    CKelSubmodelAlgorithm* GetSubmodelAlgorithmRow(ULONG submodelId, ULONG algorithmId) const;

    // The algorithm rows of one submodel, then null. Another walk of submodel
    // algorithms, or a change to them, ends this walk.
    CKelSubmodelAlgorithm* GetFirstSubmodelAlgorithmFKRow(ULONG submodelId);
    CKelSubmodelAlgorithm* GetNextSubmodelAlgorithmFKRow();
    // The parameter values of one submodel algorithm, in the order they were added,
    // then null. Another walk of parameter values, or a change to them, ends this walk.
    CKelAlgorithmProperty* GetFirstAlgorithmPropertyFKRow(ULONG submodelAlgorithmId);
    CKelAlgorithmProperty* GetNextAlgorithmPropertyFKRow();

    // ---- edits -----------------------------------------------------------------------

    // Sets parameter `propertyName` of type `dataTypeName` to `value` for the
    // submodel and algorithm, adding the pair's row when it is the first parameter
    // of the pair. A parameter already set (same name and data type) has its value
    // replaced: the result is then 1; a new parameter value row gives its new id.
    // 0, and nothing changes, when the algorithm, the parameter name or the data
    // type is unknown.
    int UpdateSubmodelAlgorithmProperty(ULONG submodelId, ULONG algorithmId,
                                        const CString& propertyName, const CString& dataTypeName,
                                        const CString& value);
    // Removes every algorithm row of the submodel with its parameter values. 1 when
    // the submodel had any, else 0.
    int DeleteSubmodelData(ULONG submodelId);
    // Removes the settings of every submodel not in `liveSubmodelIds` and the
    // parameter values whose submodel algorithm is gone. Returns the number of
    // algorithm rows and parameter values removed; a null list removes nothing and
    // gives 0.
    int RemoveDeadRows(CList<ULONG>* liveSubmodelIds);

    // ---- the tables, for inspection ---------------------------------------------------

    CEnhLayoutAlgorithmTable& GetLayoutAlgorithmTable() const { return *m_pAlgorithms; }
    CEnhDataTypeTable& GetDataTypeTable() const { return *m_pDataTypes; }
    CEnhLayoutPropertyNameTable& GetLayoutPropertyNameTable() const { return *m_pPropertyNames; }
    CEnhSubmodelAlgorithmTable& GetSubmodelAlgorithmTable() const { return *m_pSubmodelAlgorithms; }
    CEnhAlgorithmPropertyTable& GetAlgorithmPropertyTable() const { return *m_pProperties; }

  private:
    // Removes one submodel algorithm row and its parameter values; returns how many
    // rows went.
    int DeleteSubmodelAlgorithm(ULONG submodelAlgorithmId);

    CZmfFile* m_pFile;     // not owned
    CGuidMgr* m_pGuidMgr;  // not owned; may be null
    std::unique_ptr<CEnhLayoutAlgorithmTable> m_pAlgorithms;
    std::unique_ptr<CEnhDataTypeTable> m_pDataTypes;
    std::unique_ptr<CEnhLayoutPropertyNameTable> m_pPropertyNames;
    std::unique_ptr<CEnhSubmodelAlgorithmTable> m_pSubmodelAlgorithms;
    std::unique_ptr<CEnhAlgorithmPropertyTable> m_pProperties;
    bool m_constantsLoaded = false;
    bool m_settingsLoaded = false;
};
