// CEnhRepoTable: what the repository tables add to the table pattern.
//
// The repository bookkeeping tables hold no texts and create no unique objects of
// their own: they are the pattern's table (enh_table.h) without name space or
// identity services, keyed from the file's key allocator, plus write-through: an
// insert or update made with a non-zero writeThrough flag also reaches the
// record-store table at once, so that the host's repository client, which reads
// the file, sees it before the next save.
//
// The object-modification table keeps its rows in two lists and derives from the
// table base directly (obj_mod_table.h); it shares the write-through helpers of the
// base.
#pragma once

#include <memory>

#include "foundation/enh_table.h"
#include "platform/types.h"
#include "zmflib/zmf_file.h"

template <class Traits>
class CEnhRepoTable : public CEnhTable<Traits> {
  public:
    using Row = typename Traits::Row;

    // `file` is borrowed; keys come from its key allocator.
    explicit CEnhRepoTable(CZmfFile* file) : CEnhTable<Traits>(nullptr, nullptr, nullptr, file) {}

  protected:
    // Adds a filled row under a new key; with `writeThrough` the record-store table
    // gets it at once as well. Returns the key.
    ULONG InsertRow(std::unique_ptr<Row> row, int writeThrough) {
        const Row* added = row.get();
        const ULONG key = this->InsertIds(std::move(row), 0);
        if (writeThrough) this->WriteThroughInsert(added, this->TableName());
        return key;
    }
};
