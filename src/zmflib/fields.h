// Field wrappers of the record store: the column types a row class holds besides
// plain unsigned 32-bit ids.
#pragma once

#include <string_view>
#include <utility>

#include "platform/cstring.h"
#include "platform/oledatetime.h"
#include "platform/types.h"

// A text column. Reads as a C string; assigns from any text.
class CZmfString {
  public:
    CZmfString() = default;
    CZmfString(const char* text) : m_value(text ? text : "") {}
    CZmfString(const CString& text) : m_value(text) {}

    CZmfString& operator=(const char* text) {
        m_value = text ? text : "";
        return *this;
    }
    CZmfString& operator=(const CString& text) {
        m_value = text;
        return *this;
    }
    CZmfString& operator=(CString&& text) {
        m_value = std::move(text);
        return *this;
    }
    // Reuses the storage the field already owns when it is large enough, which
    // keeps a table scan that refills one row object free of allocations.
    CZmfString& operator=(std::string_view text) {
        m_value = text;
        return *this;
    }

    operator const char*() const { return m_value; }
    const CString& GetValue() const { return m_value; }
    int GetLength() const { return m_value.GetLength(); }
    bool IsEmpty() const { return m_value.IsEmpty(); }

    bool operator==(const CZmfString& other) const { return m_value == other.m_value; }

  private:
    CString m_value;
};

// A signed 32-bit integer column.
class CZmfInt {
  public:
    CZmfInt() = default;
    CZmfInt(LONG value) : m_value(value) {}

    CZmfInt& operator=(LONG value) {
        m_value = value;
        return *this;
    }
    operator LONG() const { return m_value; }
    LONG GetValue() const { return m_value; }

  private:
    LONG m_value = 0;
};

// A date-time column: an OLE automation date with its status.
class CZmfDateTime {
  public:
    CZmfDateTime() = default;
    CZmfDateTime(const COleDateTime& value) : m_value(value) {}

    CZmfDateTime& operator=(const COleDateTime& value) {
        m_value = value;
        return *this;
    }
    operator COleDateTime() const { return m_value; }
    const COleDateTime& GetValue() const { return m_value; }

    bool operator==(const CZmfDateTime& other) const {
        return m_value.m_status == other.m_value.m_status && m_value.m_dt == other.m_value.m_dt;
    }

  private:
    COleDateTime m_value;
};
