#include "zmflib/pg_codec.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace zmf::pg {
namespace {

std::uint64_t ReadBig(const char* data, int bytes) {
    std::uint64_t value = 0;
    for (int i = 0; i < bytes; ++i)
        value = (value << 8) | static_cast<unsigned char>(data[i]);
    return value;
}

void AppendBig(std::string& out, std::uint64_t value, int bytes) {
    char buffer[8];
    for (int i = bytes - 1; i >= 0; --i, value >>= 8)
        buffer[i] = static_cast<char>(value & 0xFF);
    out.append(buffer, static_cast<std::size_t>(bytes));
}

}  // namespace

const char kCopyHeader[kCopyHeaderSize] = {'P',  'G', 'C', 'O', 'P', 'Y', '\n', '\xFF', '\r', '\n',
                                           '\0', 0,   0,   0,   0,   0,   0,    0,      0};
const char kCopyTrailer[2] = {'\xFF', '\xFF'};

const char* SqlType(EZmfColumnType type) {
    switch (type) {
        case EZmfColumnType::Int:
            return "integer";
        case EZmfColumnType::String:
            return "bytea";
        case EZmfColumnType::Date:
            return "double precision";
        default:
            return "bigint";
    }
}

unsigned int TypeOid(EZmfColumnType type) {
    switch (type) {
        case EZmfColumnType::Int:
            return 23;
        case EZmfColumnType::String:
            return 17;
        case EZmfColumnType::Date:
            return 701;
        default:
            return kInt8Oid;
    }
}

// ---- writing ----------------------------------------------------------------------

void CTupleWriter::Write(const SZmfTableDesc& desc, const CDbObjectBase& row,
                         std::int64_t ordinal) {
    AppendBig(m_out, desc.columns.size() + 1, 2);
    desc.readRow(row, *this);
    Int8(ordinal);
}

void CTupleWriter::Int8(std::int64_t value) {
    AppendBig(m_out, 8, 4);
    AppendBig(m_out, static_cast<std::uint64_t>(value), 8);
}

void CTupleWriter::Int4(std::int32_t value) {
    AppendBig(m_out, 4, 4);
    AppendBig(m_out, static_cast<std::uint32_t>(value), 4);
}

void CTupleWriter::Null() {
    AppendBig(m_out, 0xFFFFFFFFu, 4);
}

void CTupleWriter::String(int, const CString& value) {
    const auto length = static_cast<std::uint32_t>(value.GetLength());
    AppendBig(m_out, length, 4);
    m_out.append(static_cast<const char*>(value), length);
}

void CTupleWriter::Date(int, const COleDateTime& value) {
    if (value.m_status == COleDateTime::null) return Null();
    const double day = value.m_status == COleDateTime::valid
                           ? value.m_dt
                           : std::numeric_limits<double>::quiet_NaN();
    AppendBig(m_out, 8, 4);
    AppendBig(m_out, std::bit_cast<std::uint64_t>(day), 8);
}

// ---- reading ----------------------------------------------------------------------

CTupleFields::EParse CTupleFields::Parse(const char*& at, const char* end, int expectedFields) {
    if (end - at < 2) return EParse::Malformed;
    const auto count = static_cast<std::int16_t>(ReadBig(at, 2));
    if (count == -1) {
        at += 2;
        return EParse::End;
    }
    if (count != expectedFields) return EParse::Malformed;
    const char* p = at + 2;
    Resize(count);
    for (SField& field : m_fields) {
        if (end - p < 4) return EParse::Malformed;
        const auto length = static_cast<std::int32_t>(ReadBig(p, 4));
        p += 4;
        if (length < -1 || end - p < std::max(length, 0)) return EParse::Malformed;
        field.data = p;
        field.length = length;
        p += std::max(length, 0);
    }
    at = p;
    return EParse::Row;
}

void CTupleFields::Set(int index, const char* data, int length) {
    m_fields[static_cast<std::size_t>(index)] = {data, length};
}

void CTupleFields::Resize(int fields) {
    m_fields.resize(static_cast<std::size_t>(fields));
}

// Integer fields take the width the server sent, so that a hand-altered column
// type (integer for bigint, say) still reads.
std::int64_t CTupleFields::Int8At(int index) const {
    const SField& f = m_fields[static_cast<std::size_t>(index)];
    switch (f.length) {
        case 8:
            return static_cast<std::int64_t>(ReadBig(f.data, 8));
        case 4:
            return static_cast<std::int32_t>(ReadBig(f.data, 4));
        case 2:
            return static_cast<std::int16_t>(ReadBig(f.data, 2));
        default:
            return 0;
    }
}

LONG CTupleFields::Int(int index) {
    return static_cast<LONG>(Int8At(index));
}

void CTupleFields::String(int index, CZmfString& out) {
    const SField& f = m_fields[static_cast<std::size_t>(index)];
    out = std::string_view(f.length > 0 ? f.data : "",
                           static_cast<std::size_t>(std::max(f.length, 0)));
}

COleDateTime CTupleFields::Date(int index) {
    const SField& f = m_fields[static_cast<std::size_t>(index)];
    COleDateTime value;
    if (f.length != 8) {
        value.m_status = COleDateTime::null;
        return value;
    }
    const double day = std::bit_cast<double>(ReadBig(f.data, 8));
    if (std::isnan(day))
        value.m_status = COleDateTime::invalid;
    else
        value.m_dt = day;
    return value;
}

// ---- parameters -------------------------------------------------------------------

CRowParams::CRowParams(const SZmfTableDesc& desc, const CDbObjectBase& row, std::int64_t ordinal) {
    CTupleWriter writer(m_bytes);
    writer.Write(desc, row, ordinal);
    const int count = static_cast<int>(desc.columns.size()) + 1;
    const char* p = m_bytes.data() + 2;
    for (int i = 0; i < count; ++i) {
        const auto length = static_cast<std::int32_t>(ReadBig(p, 4));
        p += 4;
        m_values.push_back(length < 0 ? nullptr : p);
        m_lengths.push_back(std::max(length, 0));
        m_formats.push_back(1);
        p += std::max(length, 0);
    }
}

// ---- SQL text ---------------------------------------------------------------------

std::string QuoteIdent(const std::string& name) {
    std::string quoted = "\"";
    for (char c : name)
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

std::string QuoteLiteral(const std::string& text) {
    std::string quoted = "'";
    for (char c : text)
        quoted += c == '\'' ? std::string("''") : std::string(1, c);
    return quoted + "'";
}

std::string ColumnList(const SZmfTableDesc& desc, bool withOrdinal) {
    std::string list;
    for (const SZmfColumnDesc& c : desc.columns) {
        if (!list.empty()) list += ',';
        list += QuoteIdent(c.name);
    }
    if (withOrdinal) list += std::string(",") + kOrdinalColumn;
    return list;
}

}  // namespace zmf::pg
