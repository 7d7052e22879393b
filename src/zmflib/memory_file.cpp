#include "zmflib/memory_file.h"

#include <vector>

#include "zmflib/db_object.h"

namespace {

using RowPtr = std::unique_ptr<CDbObjectBase>;

// Positions are 1-based indexes into the row vector, so that a null POSITION can
// mean "no more rows".
POSITION ToPosition(size_t index) {
    return reinterpret_cast<POSITION>(index + 1);
}
size_t FromPosition(POSITION pos) {
    return reinterpret_cast<size_t>(pos) - 1;
}

class CMemoryTable final : public CTableBase {
  public:
    CMemoryTable(CZmfFile* file, const SZmfTableDesc& desc) : CTableBase(file, desc) {}

    bool Clear() override {
        m_rows.clear();
        return true;
    }

  protected:
    int DoInsert(const CDbObjectBase* row) override {
        RowPtr copy(GetDesc().createRow());
        copy->Copy(row);
        m_rows.push_back(std::move(copy));
        return 1;
    }

    int DoUpdate(const CDbObjectBase* row) override {
        RowPtr* stored = Find(row);
        if (!stored) return 0;
        (*stored)->Copy(row);
        return 1;
    }

    int DoDelete(const CDbObjectBase* row) override {
        RowPtr* stored = Find(row);
        if (!stored) return 0;
        m_rows.erase(m_rows.begin() + (stored - m_rows.data()));
        return 1;
    }

    int DoGet(CDbObjectBase* row) override {
        RowPtr* stored = Find(row);
        if (!stored) return 0;
        row->Copy(stored->get());
        return 1;
    }

    POSITION DoGetStartPosition() override { return m_rows.empty() ? nullptr : ToPosition(0); }

    void DoGetNext(POSITION& pos, CDbObjectBase* row) override {
        const size_t index = FromPosition(pos);
        if (index >= m_rows.size()) {
            pos = nullptr;
            return;
        }
        row->Copy(m_rows[index].get());
        pos = index + 1 < m_rows.size() ? ToPosition(index + 1) : nullptr;
    }

    ULONG DoGetCount() override { return static_cast<ULONG>(m_rows.size()); }

    std::unique_ptr<CZmfCursor> DoOpenCursor() override { return std::make_unique<Cursor>(m_rows); }

  private:
    class Cursor final : public CZmfCursor {
      public:
        explicit Cursor(const std::vector<RowPtr>& rows) : m_rows(rows) {}
        int Next(CDbObjectBase* row) override {
            if (m_next >= m_rows.size()) return 0;
            row->Copy(m_rows[m_next++].get());
            return 1;
        }

      private:
        const std::vector<RowPtr>& m_rows;  // the table's rows; the table outlives us
        size_t m_next = 0;
    };

    RowPtr* Find(const CDbObjectBase* key) {
        for (RowPtr& row : m_rows)
            if (row->MatchKey(key)) return &row;
        return nullptr;
    }

    std::vector<RowPtr> m_rows;
};

}  // namespace

CMemoryZmfFile::CMemoryZmfFile(DWORD formatVersion) : CZmfFile(":memory:", formatVersion, false) {}

std::unique_ptr<CTableBase> CMemoryZmfFile::CreateTable(const SZmfTableDesc& desc) {
    return std::make_unique<CMemoryTable>(this, desc);
}

bool CMemoryZmfFile::CommitSave() {
    ForEachTable([](CTableBase& t) { t.ClearSizeEstimateDirty(); });
    GetIdentityMgr()->ClearDirty();
    ClearVersionDirty();
    return true;
}

std::unique_ptr<CZmfFile> CZmfFile::OpenMemory(DWORD formatVersion) {
    return std::make_unique<CMemoryZmfFile>(formatVersion);
}
