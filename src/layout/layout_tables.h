// The five in-memory tables of the automatic layout settings.
//
//   CEnhLayoutAlgorithmTable     "Layout_Algorithm"      constant: the algorithms
//   CEnhDataTypeTable            "Data_Type"             constant: value types
//   CEnhLayoutPropertyNameTable  "Layout_Property_Name"  constant: parameter names
//   CEnhSubmodelAlgorithmTable   "Submodel_Algorithm"    one row per (submodel,
//                                                        algorithm) pair in use
//   CEnhAlgorithmPropertyTable   "Algorithm_Property"    one row per parameter value
//
// The constant tables are completed as they load: each constant row of
// layout_constants.h whose name the file lacks is appended, in list order, so an
// empty table gets them all and an older file gains the names added since. Names
// match byte for byte. A name map answers lookups by name; should a file hold a
// name twice, the row loaded last answers.
//
// Keys come from the file's key allocator under each table's key kind. None of these
// rows is a unique object and none holds name-space texts: the values are the
// application's strings, stored as given.
#pragma once

#include <memory>
#include <string_view>

#include "foundation/enh_table.h"
#include "layout/layout_constants.h"
#include "namespace/name_space_maps.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "zmflib/rows.h"
#include "zmflib/zmf_file.h"

// A constant table: rows (id, Name, Description), completed from `Constants` at load.
template <class Traits, const auto& Constants>
class CEnhLayoutConstantTable : public CEnhTable<Traits> {
  public:
    using Row = typename Traits::Row;
    using NameKey = tessmeta::CNameSpaceTextKey<Row, &Row::Name>;
    using NameMap = tessmeta::CNameSpaceRowMap<Row, NameKey>;

    // Opens the table of `file` (borrowed).
    explicit CEnhLayoutConstantTable(CZmfFile* file)
        : CEnhTable<Traits>(nullptr, nullptr, nullptr, file) {}

    // Loads every stored row, then appends each missing constant in list order.
    using CEnhTable<Traits>::Init;
    void Init(unsigned int bucketCount) override {
        CEnhTable<Traits>::Init(bucketCount);
        for (const tessmeta::SLayoutConstant& constant : Constants)
            if (!FindByName(constant.name)) Insert(constant.name, constant.description, 0);
    }

    // Adds a row with id `key` (0: a new id). Returns the id.
    ULONG Insert(const CString& name, const CString& description, ULONG key) {
        auto row = std::make_unique<Row>();
        row->Name = name;
        row->Description = description;
        return this->InsertIds(std::move(row), key);
    }

    // The row named exactly `name`, or null.
    Row* FindByName(std::string_view name) const { return m_byName.Find(NameKey::Lookup(name)); }

  protected:
    void AddToExtraIndexes(Row* row) override { m_byName.Add(row); }
    void RemoveFromExtraIndexes(Row* row) override { m_byName.Remove(row); }
    void SizeExtraIndexes(UINT bucketCount) override { m_byName.InitHashTable(bucketCount); }

  private:
    NameMap m_byName;
};

// ---- the constant tables ------------------------------------------------------------

class CEnhLayoutAlgorithmTable;
class CEnhDataTypeTable;
class CEnhLayoutPropertyNameTable;

class CKelLayoutAlgorithm final : public CEnhRow<CLayout_AlgorithmBase, CEnhLayoutAlgorithmTable> {
};
class CKelDataType final : public CEnhRow<CData_TypeBase, CEnhDataTypeTable> {};
class CKelLayoutPropertyName final
    : public CEnhRow<CLayout_Property_NameBase, CEnhLayoutPropertyNameTable> {};

struct SLayoutAlgorithmTraits : CEnhTableTraits<CKelLayoutAlgorithm> {};
struct SDataTypeTraits : CEnhTableTraits<CKelDataType> {};
struct SLayoutPropertyNameTraits : CEnhTableTraits<CKelLayoutPropertyName> {};

class CEnhLayoutAlgorithmTable
    : public CEnhLayoutConstantTable<SLayoutAlgorithmTraits, tessmeta::kLayoutAlgorithms> {
  public:
    using CEnhLayoutConstantTable::CEnhLayoutConstantTable;
};
class CEnhDataTypeTable
    : public CEnhLayoutConstantTable<SDataTypeTraits, tessmeta::kLayoutDataTypes> {
  public:
    using CEnhLayoutConstantTable::CEnhLayoutConstantTable;
};
class CEnhLayoutPropertyNameTable
    : public CEnhLayoutConstantTable<SLayoutPropertyNameTraits, tessmeta::kLayoutPropertyNames> {
  public:
    using CEnhLayoutConstantTable::CEnhLayoutConstantTable;
};

// ---- submodel algorithms ------------------------------------------------------------

class CEnhSubmodelAlgorithmTable;

// Submodel_Algorithm_ID (key, key kind 80), Layout_Algorithm_ID, Submodel_ID,
// Reserved (written as 0).
class CKelSubmodelAlgorithm final
    : public CEnhRow<CSubmodel_AlgorithmBase, CEnhSubmodelAlgorithmTable> {};

struct SSubmodelAlgorithmTraits : CEnhTableTraits<CKelSubmodelAlgorithm> {
    static constexpr DWORD Row::*kForeignKey = &Row::Submodel_ID;
};

// Indexed by submodel (the foreign-key tree) and by (submodel, algorithm) pair.
class CEnhSubmodelAlgorithmTable : public CEnhTable<SSubmodelAlgorithmTraits> {
  public:
    explicit CEnhSubmodelAlgorithmTable(CZmfFile* file)
        : CEnhTable(nullptr, nullptr, nullptr, file) {}

    // Adds the pair's row with id `key` (0: a new id). Returns the id.
    ULONG Insert(ULONG algorithmId, ULONG submodelId, ULONG reserved, ULONG key);
    // The row of the pair, or null (the row loaded or added last, should there be
    // two). Does not disturb a walk by submodel.
    CKelSubmodelAlgorithm* FindPair(ULONG submodelId, ULONG algorithmId) const;

  protected:
    void AddToExtraIndexes(CKelSubmodelAlgorithm* row) override { m_byPair.Add(row); }
    void RemoveFromExtraIndexes(CKelSubmodelAlgorithm* row) override { m_byPair.Remove(row); }
    void SizeExtraIndexes(UINT bucketCount) override { m_byPair.InitHashTable(bucketCount); }

  private:
    struct SPairKey {
        static constexpr bool kGrow = true;
        struct Probe {
            CKelSubmodelAlgorithm* row;
            DWORD submodel;
            DWORD algorithm;
            operator CKelSubmodelAlgorithm*() const { return row; }
        };
        static Probe Of(CKelSubmodelAlgorithm* row) {
            return {row, row->Submodel_ID, row->Layout_Algorithm_ID};
        }
        static UINT Hash(const Probe& probe) { return probe.submodel * 33 + probe.algorithm; }
        static bool Equal(CKelSubmodelAlgorithm* const& stored, const Probe& probe) {
            return stored->Submodel_ID == probe.submodel &&
                   stored->Layout_Algorithm_ID == probe.algorithm;
        }
    };

    tessmeta::CNameSpaceRowMap<CKelSubmodelAlgorithm, SPairKey> m_byPair;
};

// ---- parameter values -------------------------------------------------------------------

class CEnhAlgorithmPropertyTable;

// Algorithm_Property_ID (key, key kind 1), Layout_Property_Name_ID, Data_Type_ID,
// Submodel_Algorithm_ID, Value.
class CKelAlgorithmProperty final
    : public CEnhRow<CAlgorithm_PropertyBase, CEnhAlgorithmPropertyTable> {};

struct SAlgorithmPropertyTraits : CEnhTableTraits<CKelAlgorithmProperty> {
    static constexpr DWORD Row::*kForeignKey = &Row::Submodel_Algorithm_ID;
};

// Indexed by submodel algorithm id (duplicates kept, in insertion order).
class CEnhAlgorithmPropertyTable : public CEnhTable<SAlgorithmPropertyTraits> {
  public:
    explicit CEnhAlgorithmPropertyTable(CZmfFile* file)
        : CEnhTable(nullptr, nullptr, nullptr, file) {}

    // Adds a parameter value with id `key` (0: a new id). Returns the id.
    ULONG Insert(ULONG propertyNameId, ULONG dataTypeId, ULONG submodelAlgorithmId, ULONG key,
                 const CString& value);
    // Replaces the value of row `key`: 1, or 0 when there is no such row.
    int UpdateValue(ULONG key, const CString& value);
};
