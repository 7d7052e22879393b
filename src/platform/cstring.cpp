#include "platform/cstring.h"

#include "platform/huge_block.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>

namespace {

constexpr std::string_view kWhitespace = " \t\n\v\f\r";

char ToUpperAscii(char ch) {
    return (ch >= 'a' && ch <= 'z') ? static_cast<char>(ch - 32) : ch;
}
char ToLowerAscii(char ch) {
    return (ch >= 'A' && ch <= 'Z') ? static_cast<char>(ch + 32) : ch;
}

// Lengths are `int`; anything larger cannot be represented and is treated like any
// other failure to obtain memory.
int CheckedLength(size_t length) {
    if (length > static_cast<size_t>(INT_MAX - 1)) throw std::bad_alloc();
    return static_cast<int>(length);
}

}  // namespace

CString::Rep* CString::Allocate(int capacity) {
    Rep* rep = static_cast<Rep*>(::operator new(sizeof(Rep) + static_cast<size_t>(capacity) + 1));
    rep->length = 0;
    rep->capacity = capacity;
    Data(rep)[0] = '\0';
    return rep;
}

CString::CString(const CString& other) {
    Assign(other.View());
}
CString::CString(const char* text) {
    Assign(ViewOf(text));
}
CString::CString(const char* text, int length) {
    if (text && length > 0) Assign(std::string_view(text, static_cast<size_t>(length)));
}
CString::CString(char ch, int repeat) {
    if (repeat <= 0) return;
    m_rep = Allocate(repeat);
    std::memset(Data(m_rep), static_cast<unsigned char>(ch), static_cast<size_t>(repeat));
    SetLength(repeat);
}
CString::CString(std::string_view text) {
    Assign(text);
}
CString::~CString() {
    Release(m_rep);
}

CString& CString::operator=(const CString& other) {
    if (this != &other) Assign(other.View());
    return *this;
}

CString& CString::operator=(CString&& other) noexcept {
    if (this != &other) {
        Release(m_rep);
        m_rep = other.m_rep;
        other.m_rep = nullptr;
    }
    return *this;
}

CString& CString::operator=(const char* text) {
    Assign(ViewOf(text));
    return *this;
}

CString& CString::operator=(char ch) {
    Assign(std::string_view(&ch, 1));
    return *this;
}

CString& CString::operator=(std::string_view text) {
    Assign(text);
    return *this;
}

void CString::Empty() noexcept {
    Release(m_rep);
    m_rep = nullptr;
}

void CString::MakeWritable() {
    if (!m_rep || m_rep->capacity != kInArena) return;
    Rep* rep = Allocate(m_rep->length);
    std::memcpy(Data(rep), Data(m_rep), static_cast<size_t>(m_rep->length) + 1);
    rep->length = m_rep->length;
    m_rep = rep;
}

void CString::SetLength(int length) noexcept {
    m_rep->length = length;
    Data(m_rep)[length] = '\0';
}

// `text` may point into this string's own bytes (s = s.GetString() + 1): the old
// block is released only after the copy.
void CString::Assign(std::string_view text) {
    if (text.empty()) {
        if (m_rep && m_rep->capacity == kInArena)
            m_rep = nullptr;
        else if (m_rep)
            SetLength(0);
        return;
    }
    const int length = CheckedLength(text.size());
    if (m_rep && m_rep->capacity >= length) {
        std::memmove(Data(m_rep), text.data(), text.size());
        SetLength(length);
        return;
    }
    Rep* rep = Allocate(length);
    std::memcpy(Data(rep), text.data(), text.size());
    Release(m_rep);
    m_rep = rep;
    SetLength(length);
}

void CString::Reserve(int capacity) {
    if (m_rep && m_rep->capacity >= capacity) return;
    Rep* rep = Allocate(capacity);
    if (m_rep) {
        std::memcpy(Data(rep), Data(m_rep), static_cast<size_t>(m_rep->length) + 1);
        rep->length = m_rep->length;
        Release(m_rep);
    }
    m_rep = rep;
}

CString& CString::Append(std::string_view text) {
    if (text.empty()) return *this;
    const int oldLength = GetLength();
    const int newLength = CheckedLength(static_cast<size_t>(oldLength) + text.size());
    if (!m_rep || m_rep->capacity < newLength) {
        // Grow geometrically so that a loop of appends stays linear. The source may
        // be our own bytes, so copy it before the old block goes.
        const int capacity =
            m_rep && m_rep->capacity != kInArena
                ? std::max(newLength, CheckedLength(m_rep->capacity + m_rep->capacity / 2))
                : newLength;
        Rep* rep = Allocate(capacity);
        if (m_rep) std::memcpy(Data(rep), Data(m_rep), static_cast<size_t>(oldLength));
        std::memcpy(Data(rep) + oldLength, text.data(), text.size());
        Release(m_rep);
        m_rep = rep;
    } else {
        std::memmove(Data(m_rep) + oldLength, text.data(), text.size());
    }
    SetLength(newLength);
    return *this;
}

char CString::GetAt(int index) const {
    return (index >= 0 && index < GetLength()) ? Data(m_rep)[index] : '\0';
}

void CString::SetAt(int index, char ch) {
    if (index < 0 || index >= GetLength()) return;
    MakeWritable();
    Data(m_rep)[index] = ch;
}

CString CString::Concat(std::string_view a, std::string_view b) {
    CString result;
    const int length = CheckedLength(a.size() + b.size());
    if (length == 0) return result;
    result.m_rep = Allocate(length);
    if (!a.empty()) std::memcpy(Data(result.m_rep), a.data(), a.size());
    if (!b.empty()) std::memcpy(Data(result.m_rep) + a.size(), b.data(), b.size());
    result.SetLength(length);
    return result;
}

CString operator+(const CString& a, const CString& b) {
    return CString::Concat(a.View(), b.View());
}
CString operator+(const CString& a, const char* b) {
    return CString::Concat(a.View(), CString::ViewOf(b));
}
CString operator+(const char* a, const CString& b) {
    return CString::Concat(CString::ViewOf(a), b.View());
}
CString operator+(const CString& a, char b) {
    return CString::Concat(a.View(), std::string_view(&b, 1));
}
CString operator+(char a, const CString& b) {
    return CString::Concat(std::string_view(&a, 1), b.View());
}

int CString::CompareViews(std::string_view a, std::string_view b) noexcept {
    const int c = a.compare(b);  // char_traits<char> compares bytes as unsigned
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

int CString::CompareViewsNoCase(std::string_view a, std::string_view b) noexcept {
    const size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
        const auto x = static_cast<unsigned char>(ToUpperAscii(a[i]));
        const auto y = static_cast<unsigned char>(ToUpperAscii(b[i]));
        if (x != y) return x < y ? -1 : 1;
    }
    return a.size() < b.size() ? -1 : (a.size() > b.size() ? 1 : 0);
}

int CString::CompareNoCase(const char* text) const noexcept {
    return CompareViewsNoCase(View(), ViewOf(text));
}

int CString::CompareNoCase(const CString& text) const noexcept {
    return CompareViewsNoCase(View(), text.View());
}

CString& CString::MakeUpper() {
    MakeWritable();
    for (int i = 0, n = GetLength(); i < n; ++i)
        Data(m_rep)[i] = ToUpperAscii(Data(m_rep)[i]);
    return *this;
}

CString& CString::MakeLower() {
    MakeWritable();
    for (int i = 0, n = GetLength(); i < n; ++i)
        Data(m_rep)[i] = ToLowerAscii(Data(m_rep)[i]);
    return *this;
}

void CString::Format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    FormatV(format, args);
    va_end(args);
}

void CString::AppendFormat(const char* format, ...) {
    va_list args;
    va_start(args, format);
    AppendFormatV(format, args);
    va_end(args);
}

// The arguments may point into this string (s.Format("%s!", s.GetString())), so the
// text is built aside and only then replaces the old one.
void CString::FormatV(const char* format, va_list args) {
    CString text;
    text.AppendFormatV(format, args);
    *this = std::move(text);
}

void CString::AppendFormatV(const char* format, va_list args) {
    if (!format) return;
    char small[256];
    va_list copy;
    va_copy(copy, args);
    const int needed = std::vsnprintf(small, sizeof small, format, copy);
    va_end(copy);
    if (needed <= 0) return;  // nothing to add, or an encoding error
    if (static_cast<size_t>(needed) < sizeof small) {
        Append(std::string_view(small, static_cast<size_t>(needed)));
        return;
    }
    Rep* rep = Allocate(needed);
    va_copy(copy, args);
    std::vsnprintf(Data(rep), static_cast<size_t>(needed) + 1, format, copy);
    va_end(copy);
    rep->length = needed;
    CString text;
    text.m_rep = rep;
    Append(text.View());
}

int CString::Remove(char ch) {
    MakeWritable();
    const int length = GetLength();
    int kept = 0;
    for (int i = 0; i < length; ++i) {
        if (Data(m_rep)[i] != ch) Data(m_rep)[kept++] = Data(m_rep)[i];
    }
    if (kept != length) SetLength(kept);
    return length - kept;
}

int CString::Insert(int index, char ch) {
    return InsertText(index, std::string_view(&ch, 1));
}

int CString::Insert(int index, const char* text) {
    return InsertText(index, ViewOf(text));
}

int CString::InsertText(int index, std::string_view text) {
    const int length = GetLength();
    index = std::clamp(index, 0, length);
    if (text.empty()) return length;
    // Built aside: `text` may be this string's own bytes.
    CString result = Concat(View().substr(0, static_cast<size_t>(index)), text);
    result.Append(View().substr(static_cast<size_t>(index)));
    *this = std::move(result);
    return GetLength();
}

int CString::Delete(int index, int count) {
    const int length = GetLength();
    index = std::max(index, 0);
    count = std::max(count, 0);
    if (index >= length || count == 0) return length;
    count = std::min(count, length - index);
    MakeWritable();
    char* data = Data(m_rep);
    std::memmove(data + index, data + index + count, static_cast<size_t>(length - index - count));
    SetLength(length - count);
    return length - count;
}

int CString::Replace(char oldCh, char newCh) {
    MakeWritable();
    int count = 0;
    for (int i = 0, n = GetLength(); i < n; ++i) {
        if (Data(m_rep)[i] == oldCh) {
            Data(m_rep)[i] = newCh;
            ++count;
        }
    }
    return count;
}

int CString::Replace(const char* oldText, const char* newText) {
    const std::string_view from = ViewOf(oldText);
    const std::string_view to = ViewOf(newText);
    if (from.empty()) return 0;
    const std::string_view source = View();
    size_t hit = source.find(from);
    if (hit == std::string_view::npos) return 0;
    CString result;
    int count = 0;
    size_t done = 0;
    while (hit != std::string_view::npos) {
        result.Append(source.substr(done, hit - done));
        result.Append(to);
        ++count;
        done = hit + from.size();
        hit = source.find(from, done);
    }
    result.Append(source.substr(done));
    *this = std::move(result);
    return count;
}

int CString::Find(char ch, int start) const noexcept {
    if (start < 0 || start >= GetLength()) return -1;
    const size_t hit = View().find(ch, static_cast<size_t>(start));
    return hit == std::string_view::npos ? -1 : static_cast<int>(hit);
}

int CString::Find(const char* text, int start) const noexcept {
    if (!text || start < 0 || start > GetLength()) return -1;
    const size_t hit = View().find(std::string_view(text), static_cast<size_t>(start));
    return hit == std::string_view::npos ? -1 : static_cast<int>(hit);
}

int CString::ReverseFind(char ch) const noexcept {
    const size_t hit = View().rfind(ch);
    return hit == std::string_view::npos ? -1 : static_cast<int>(hit);
}

CString CString::Left(int count) const {
    count = std::clamp(count, 0, GetLength());
    return CString(View().substr(0, static_cast<size_t>(count)));
}

CString CString::Mid(int first) const {
    return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const {
    const int length = GetLength();
    first = std::clamp(first, 0, length);
    count = std::clamp(count, 0, length - first);
    return CString(View().substr(static_cast<size_t>(first), static_cast<size_t>(count)));
}

CString CString::Right(int count) const {
    const int length = GetLength();
    count = std::clamp(count, 0, length);
    return CString(View().substr(static_cast<size_t>(length - count)));
}

void CString::KeepRange(int first, int count) {
    if (!m_rep) return;
    MakeWritable();
    if (first > 0) std::memmove(Data(m_rep), Data(m_rep) + first, static_cast<size_t>(count));
    SetLength(count);
}

CString& CString::TrimLeftSet(std::string_view targets) {
    const size_t first = View().find_first_not_of(targets);
    const int start = first == std::string_view::npos ? GetLength() : static_cast<int>(first);
    KeepRange(start, GetLength() - start);
    return *this;
}

CString& CString::TrimRightSet(std::string_view targets) {
    const size_t last = View().find_last_not_of(targets);
    KeepRange(0, last == std::string_view::npos ? 0 : static_cast<int>(last) + 1);
    return *this;
}

CString& CString::TrimLeft() {
    return TrimLeftSet(kWhitespace);
}
CString& CString::TrimLeft(char target) {
    return TrimLeftSet(std::string_view(&target, 1));
}
CString& CString::TrimLeft(const char* targets) {
    return TrimLeftSet(ViewOf(targets));
}
CString& CString::TrimRight() {
    return TrimRightSet(kWhitespace);
}
CString& CString::TrimRight(char target) {
    return TrimRightSet(std::string_view(&target, 1));
}
CString& CString::TrimRight(const char* targets) {
    return TrimRightSet(ViewOf(targets));
}

char* CString::GetBuffer(int minLength) {
    Reserve(std::max(minLength, GetLength()));
    return Data(m_rep);
}

char* CString::GetBufferSetLength(int length) {
    length = std::max(length, 0);
    Reserve(length);
    SetLength(length);
    return Data(m_rep);
}

void CString::ReleaseBuffer(int newLength) {
    if (!m_rep) return;
    MakeWritable();
    if (newLength < 0) {
        const void* nul = std::memchr(Data(m_rep), '\0', static_cast<size_t>(m_rep->capacity));
        newLength =
            nul ? static_cast<int>(static_cast<const char*>(nul) - Data(m_rep)) : m_rep->capacity;
    }
    SetLength(std::min(newLength, m_rep->capacity));
}

// ---- CStringArena -----------------------------------------------------------------------

CStringArena::~CStringArena() {
    while (m_blocks) {
        Block* block = m_blocks;
        m_blocks = block->next;
        if (block->hugeBytes)
            tessmeta::FreeHugeBlock(block, block->hugeBytes);
        else
            ::operator delete(block);
    }
}

void CStringArena::Reserve(size_t bytes, size_t align) {
    const auto at = reinterpret_cast<std::uintptr_t>(m_next);
    const std::uintptr_t aligned = (at + align - 1) & ~std::uintptr_t{align - 1};
    if (m_next && aligned + bytes <= reinterpret_cast<std::uintptr_t>(m_end)) {
        m_next = reinterpret_cast<char*>(aligned);
        return;
    }
    // Blocks are aligned for any type and double up to a huge page, then stay at
    // that size.
    constexpr size_t kHeader = (sizeof(Block) + alignof(std::max_align_t) - 1) /
                               alignof(std::max_align_t) * alignof(std::max_align_t);
    const size_t size = std::max<size_t>(m_nextBlockBytes, kHeader + bytes);
    void* memory = size == tessmeta::kHugeBlockBytes ? tessmeta::AllocateHugeBlock(size) : nullptr;
    const size_t hugeBytes = memory ? size : 0;
    if (!memory) memory = ::operator new(size);
    m_blocks = ::new (memory) Block{m_blocks, hugeBytes};
    m_next = static_cast<char*>(memory) + kHeader;
    m_end = static_cast<char*>(memory) + size;
    m_nextBlockBytes = std::min<size_t>(m_nextBlockBytes * 2, tessmeta::kHugeBlockBytes);
}

void* CStringArena::Allocate(size_t bytes, size_t align) {
    Reserve(bytes, align);
    void* storage = m_next;
    m_next += bytes;
    return storage;
}

CString CStringArena::Store(std::string_view text) {
    CString stored;
    if (text.empty()) return stored;
    const int length = CheckedLength(text.size());
    constexpr size_t kAlign = alignof(CString::Rep);
    const size_t bytes = (sizeof(CString::Rep) + text.size() + 1 + kAlign - 1) / kAlign * kAlign;
    auto* rep = ::new (Allocate(bytes, kAlign)) CString::Rep{length, CString::kInArena};
    std::memcpy(CString::Data(rep), text.data(), text.size());
    CString::Data(rep)[length] = '\0';
    stored.m_rep = rep;
    return stored;
}
