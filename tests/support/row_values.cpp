#include "support/row_values.h"

#include <cstdio>

namespace tessmeta::test {
namespace {

class SeedSource final : public IZmfColumnSource {
  public:
    SeedSource(ULONG key, int seed) : m_key(key), m_seed(seed) {}
    DWORD U32(int index) override {
        return index == 0 ? m_key : 0xF0000000u + static_cast<DWORD>(m_seed * 7 + index);
    }
    LONG Int(int index) override { return -(m_seed * 13 + index); }
    void String(int index, CZmfString& out) override {
        const int kind = (m_seed + index) % 4;
        if (kind == 0) {
            out = "";
        } else if (kind == 3) {
            out = CString(static_cast<char>('a' + m_seed % 26), 300);
        } else {
            char text[64];
            std::snprintf(text, sizeof text, "text %d/%d \xC3\xA9", m_seed, index);
            out = text;
        }
    }
    COleDateTime Date(int index) override {
        COleDateTime value(45000.25 + m_seed + index);
        if (m_seed % 3 == 1) value.m_status = COleDateTime::null;
        if (m_seed % 3 == 2) value.m_status = COleDateTime::invalid;
        if (value.m_status != COleDateTime::valid) value.m_dt = 0;
        return value;
    }

  private:
    ULONG m_key;
    int m_seed;
};

class TextSink final : public IZmfColumnSink {
  public:
    explicit TextSink(const SZmfTableDesc& desc) : m_desc(desc) {}
    void U32(int i, DWORD v) override { Add(i, std::to_string(v)); }
    void Int(int i, LONG v) override { Add(i, std::to_string(v)); }
    void String(int i, const CString& v) override {
        std::string quoted(1, '\'');
        quoted.append(v.View()).push_back('\'');
        Add(i, quoted);
    }
    void Date(int i, const COleDateTime& v) override {
        Add(i, std::to_string(v.m_dt) + "/" + std::to_string(static_cast<int>(v.m_status)));
    }
    std::string text;

  private:
    void Add(int i, const std::string& value) {
        text += m_desc.columns[i].name;
        text += "=" + value + "|";
    }
    const SZmfTableDesc& m_desc;
};

}  // namespace

std::unique_ptr<CDbObjectBase> MakeRow(const SZmfTableDesc& desc, ULONG key, int seed) {
    std::unique_ptr<CDbObjectBase> row(desc.createRow());
    SeedSource source(key, seed);
    desc.writeRow(*row, source);
    return row;
}

std::string RowText(const SZmfTableDesc& desc, const CDbObjectBase& row) {
    TextSink sink(desc);
    desc.readRow(row, sink);
    return sink.text;
}

}  // namespace tessmeta::test
