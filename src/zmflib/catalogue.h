// Table descriptors: what the record store knows about each table of a model file.
//
// Descriptors are generated from catalogue.def; see that file for the list and the
// meaning of table numbers and key kinds.
#pragma once

#include <span>

#include "platform/cstring.h"
#include "platform/oledatetime.h"
#include "platform/types.h"

class CDbObjectBase;
class CZmfString;

// StringId columns hold the id of a text of the name space (an unsigned 32-bit value).
enum class EZmfColumnType { Key, U32, StringId, Int, String, Date };

struct SZmfColumnDesc {
    const char* name;
    EZmfColumnType type;
};

// Receives the columns of a row, in record order (row -> storage).
class IZmfColumnSink {
  public:
    virtual void U32(int index, DWORD value) = 0;  // also the key, index 0
    virtual void Int(int index, LONG value) = 0;
    virtual void String(int index, const CString& value) = 0;
    virtual void Date(int index, const COleDateTime& value) = 0;

  protected:
    ~IZmfColumnSink() = default;
};

// Supplies the columns of a row, in record order (storage -> row).
class IZmfColumnSource {
  public:
    virtual DWORD U32(int index) = 0;  // also the key, index 0
    virtual LONG Int(int index) = 0;
    virtual void String(int index, CZmfString& out) = 0;
    virtual COleDateTime Date(int index) = 0;

  protected:
    ~IZmfColumnSource() = default;
};

struct SZmfTableDesc {
    const char* name;                         // stored table name, e.g. "UniqueObject"
    int tableNumber;                          // the id CZmfFile::GetTableName maps to the name
    int keyKind;                              // the id CIdentityMgr allocates keys under
    bool hasTechKey;                          // the key column is a technical key
    std::span<const SZmfColumnDesc> columns;  // key first, then record order

    CDbObjectBase* (*createRow)();  // a new, empty row object (caller owns it)
    void (*readRow)(const CDbObjectBase& row, IZmfColumnSink& sink);
    void (*writeRow)(CDbObjectBase& row, IZmfColumnSource& source);
};

namespace zmf {

// Every table of the catalogue, in catalogue order.
std::span<const SZmfTableDesc* const> AllTables();

// Lookups; nullptr when there is no such table.
const SZmfTableDesc* FindTableByName(const char* name);
const SZmfTableDesc* FindTableByNumber(int tableNumber);

// The key (first column) of a row of the described table.
DWORD KeyOf(const SZmfTableDesc& desc, const CDbObjectBase& row);

// Whether `column` of the table was added after the table was first stored, so that
// older files may lack it (ZMF_ADDED_COLUMN in catalogue.def).
bool IsAddedColumn(const SZmfTableDesc& desc, const char* column);

}  // namespace zmf
