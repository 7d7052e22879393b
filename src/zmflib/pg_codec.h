// Rows of the server backend in PostgreSQL's binary format: the tuples of a binary
// COPY stream, which also serve as the values of binary statement parameters.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zmflib/catalogue.h"
#include "zmflib/fields.h"

namespace zmf::pg {

// The column that keeps a row's place in its table's stored order (1, 2, ...).
constexpr const char* kOrdinalColumn = "zmf_row";

// Server types by catalogue type: keys, U32 and string ids as bigint (they are
// unsigned 32-bit), Int as integer, String as bytea (the model's bytes, unchanged),
// Date as double precision (SQL NULL for a null date, NaN for an invalid one).
const char* SqlType(EZmfColumnType type);
unsigned int TypeOid(EZmfColumnType type);
constexpr unsigned int kInt8Oid = 20;

// What starts a binary COPY stream: signature, flags, header-extension length.
constexpr std::size_t kCopyHeaderSize = 19;
extern const char kCopyHeader[kCopyHeaderSize];
// What ends it: a field count of -1.
extern const char kCopyTrailer[2];

// Appends rows as binary tuples: the field count, then each column as a length and
// its big-endian bytes, then the row's ordinal.
class CTupleWriter final : public IZmfColumnSink {
  public:
    explicit CTupleWriter(std::string& out) : m_out(out) {}

    void Write(const SZmfTableDesc& desc, const CDbObjectBase& row, std::int64_t ordinal);

    void U32(int, DWORD value) override { Int8(value); }
    void Int(int, LONG value) override { Int4(value); }
    void String(int, const CString& value) override;
    void Date(int, const COleDateTime& value) override;

  private:
    void Int8(std::int64_t value);
    void Int4(std::int32_t value);
    void Null();

    std::string& m_out;  // not owned
};

// The fields of one binary tuple, read as the columns of a row (the ordinal last).
class CTupleFields final : public IZmfColumnSource {
  public:
    enum class EParse { Row, End, Malformed };

    // Reads the tuple at `at` (no further than `end`) and moves `at` past it. End
    // for the stream's trailer; Malformed when the bytes are not a tuple of
    // `expectedFields` fields.
    EParse Parse(const char*& at, const char* end, int expectedFields);
    // Sets field `index` directly (from a statement's binary result); length -1 is
    // SQL NULL.
    void Set(int index, const char* data, int length);
    void Resize(int fields);

    std::int64_t Int8At(int index) const;

    DWORD U32(int index) override { return static_cast<DWORD>(Int8At(index)); }
    LONG Int(int index) override;
    void String(int index, CZmfString& out) override;
    COleDateTime Date(int index) override;

  private:
    struct SField {
        const char* data = nullptr;
        int length = -1;
    };
    std::vector<SField> m_fields;  // point into the caller's buffer
};

// The parameter form of one row: the tuple bytes plus pointers to each field, for
// a statement with binary parameters.
class CRowParams {
  public:
    // Encodes the columns of `row` and then `ordinal`.
    CRowParams(const SZmfTableDesc& desc, const CDbObjectBase& row, std::int64_t ordinal);

    int Count() const { return static_cast<int>(m_values.size()); }
    const char* const* Values() const { return m_values.data(); }
    const int* Lengths() const { return m_lengths.data(); }
    const int* Formats() const { return m_formats.data(); }

  private:
    std::string m_bytes;
    std::vector<const char*> m_values;
    std::vector<int> m_lengths;
    std::vector<int> m_formats;
};

// A column list "a","b",... of the table's catalogue columns, optionally followed
// by the ordinal column.
std::string ColumnList(const SZmfTableDesc& desc, bool withOrdinal);
// A quoted identifier: "name" with inner quotes doubled.
std::string QuoteIdent(const std::string& name);
// A quoted literal: 'text' with inner quotes doubled.
std::string QuoteLiteral(const std::string& text);

}  // namespace zmf::pg
