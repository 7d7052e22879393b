// Reading a whole model into plain rows (see exchange.h).
#include <memory>

#include "exchange.h"
#include "zmflib/iterators.h"
#include "zmflib/zmf_file.h"

namespace tessmeta::tool {
namespace {

// Copies the columns of one row into cells, resolving the string ids it meets.
class CRowToCells final : public IZmfColumnSink {
  public:
    explicit CRowToCells(const SZmfTableDesc& desc) : m_desc(desc) {}

    ExchangeRow row;

    void U32(int index, DWORD value) override {
        row[static_cast<std::size_t>(index)] = std::int64_t{value};
    }
    void Int(int index, LONG value) override {
        row[static_cast<std::size_t>(index)] = std::int64_t{value};
    }
    void String(int index, const CString& value) override {
        row[static_cast<std::size_t>(index)] = std::string(value.View());
    }
    void Date(int index, const COleDateTime& value) override {
        ExchangeCell& cell = row[static_cast<std::size_t>(index)];
        if (value.m_status == COleDateTime::valid)
            cell = value.m_dt;
        else
            cell = std::string(value.m_status == COleDateTime::null ? "null" : "invalid");
    }
    void Reset() { row.assign(m_desc.columns.size(), ExchangeCell{}); }

  private:
    const SZmfTableDesc& m_desc;
};

}  // namespace

const SExchangeTable& SExchangeModel::Table(const char* name) const {
    const SZmfTableDesc* desc = zmf::FindTableByName(name);
    for (const SExchangeTable& table : tables)
        if (table.desc == desc) return table;
    static const SExchangeTable none;
    return none;
}

const std::string& SExchangeModel::Text(DWORD id) const {
    static const std::string empty;
    auto it = texts.find(id);
    return it == texts.end() ? empty : *it->second;
}

bool LoadExchangeModel(const std::string& path, SExchangeModel& model, std::string& error) {
    auto file = CZmfFile::Open(path, &error);
    if (!file) return false;
    model.formatVersion = file->GetFormatVersion();
    file->GetIdentityMgr()->ForEachCounter(
        [&](int kind, ULONG value) { model.counters.emplace_back(kind, value); });
    for (const SZmfTableDesc* desc : zmf::AllTables()) {
        SExchangeTable& table = model.tables.emplace_back();
        table.desc = desc;
        CTableBase* stored = file->GetTable(desc->name);
        std::unique_ptr<CDbObjectBase> row(desc->createRow());
        CRowToCells sink(*desc);
        for (CIteratorBase it(stored); it.GetNext(row.get());) {
            sink.Reset();
            desc->readRow(*row, sink);
            table.rows.push_back(std::move(sink.row));
        }
        file->ReleaseTable(&stored, 0);
    }
    if (file->HasError()) {
        error = file->GetLastError();
        return false;
    }
    model.ResolveTexts();
    return true;
}

// A string id names the first "SmallString" row with that id; a row flagged large
// keeps its text in the first "LargeString" row with the same id.
void SExchangeModel::ResolveTexts() {
    texts.clear();
    std::unordered_map<DWORD, const std::string*> large;
    large.reserve(Table("LargeString").rows.size());
    for (const ExchangeRow& row : Table("LargeString").rows)
        large.try_emplace(static_cast<DWORD>(std::get<std::int64_t>(row[0])),
                          &std::get<std::string>(row[1]));
    const auto& small = Table("SmallString").rows;
    texts.reserve(small.size());
    for (const ExchangeRow& row : small) {
        const auto id = static_cast<DWORD>(std::get<std::int64_t>(row[0]));
        if (texts.contains(id)) continue;
        if (std::get<std::int64_t>(row[2]) == 0) {
            texts.emplace(id, &std::get<std::string>(row[1]));
        } else if (auto it = large.find(id); it != large.end()) {
            texts.emplace(id, it->second);
        }
    }
}

std::string BytesToUtf8(const std::string& bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (unsigned char c : bytes) {
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

bool Utf8ToBytes(const std::string& utf8, std::string& bytes) {
    bytes.clear();
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto c = static_cast<unsigned char>(utf8[i]);
        if (c < 0x80) {
            bytes += static_cast<char>(c);
            continue;
        }
        if ((c != 0xC2 && c != 0xC3) || i + 1 >= utf8.size()) return false;
        const auto next = static_cast<unsigned char>(utf8[++i]);
        if ((next & 0xC0) != 0x80) return false;
        bytes += static_cast<char>(((c & 0x03) << 6) | (next & 0x3F));
    }
    return true;
}

}  // namespace tessmeta::tool
