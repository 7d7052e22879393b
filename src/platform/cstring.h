// CString: the framework's counted, heap-owned byte string.
//
// The name space holds millions of these, most of them short and many of them
// empty, so the object is a single pointer: null for the empty string (no
// allocation at all), otherwise a heap block holding the length, the capacity and
// the bytes followed by a NUL. Copies are deep; there is no sharing between
// strings, so a string may be handed to another thread like any value.
//
// A string may instead read its text from a CStringArena (below): the same block
// layout inside the arena, marked by a negative capacity. Such a string behaves
// like any other; it copies its text to a heap block of its own the first time it
// is changed, and never frees the arena's bytes.
//
// Lengths and indexes are `int`, as in the framework. Bytes are opaque: the string
// may hold any byte, including NUL, and nothing here depends on the C locale.
// Case operations touch only the ASCII letters 'a'-'z' and 'A'-'Z'; the no-case
// hash and equality of the name space are built on exactly that rule.
#pragma once

#include <compare>
#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <string_view>

class CString {
  public:
    CString() noexcept = default;
    CString(const CString& other);
    CString(CString&& other) noexcept : m_rep(other.m_rep) { other.m_rep = nullptr; }
    CString(const char* text);  // null reads as ""
    CString(const char* text, int length);
    CString(char ch, int repeat = 1);
    CString(std::string_view text);
    ~CString();

    CString& operator=(const CString& other);
    CString& operator=(CString&& other) noexcept;
    CString& operator=(const char* text);
    CString& operator=(char ch);
    CString& operator=(std::string_view text);

    // Never null: the empty string reads as "".
    operator const char*() const noexcept { return GetString(); }
    const char* GetString() const noexcept { return m_rep ? Data(m_rep) : ""; }
    std::string_view View() const noexcept {
        return m_rep ? std::string_view(Data(m_rep), static_cast<size_t>(m_rep->length))
                     : std::string_view();
    }

    int GetLength() const noexcept { return m_rep ? m_rep->length : 0; }
    bool IsEmpty() const noexcept { return GetLength() == 0; }
    // Whether the text is read from a CStringArena.
    bool IsInArena() const noexcept { return m_rep && m_rep->capacity == kInArena; }
    // Releases the storage: an emptied string owns no memory.
    void Empty() noexcept;

    // Index must lie in [0, GetLength()).
    char GetAt(int index) const;
    void SetAt(int index, char ch);
    // Templated so that any integral index binds here rather than to the built-in
    // subscript of the `const char*` conversion.
    template <std::integral Index>
    char operator[](Index index) const {
        return GetAt(static_cast<int>(index));
    }

    CString& operator+=(const CString& text) { return Append(text.View()); }
    CString& operator+=(const char* text) { return Append(ViewOf(text)); }
    CString& operator+=(char ch) { return Append(std::string_view(&ch, 1)); }
    CString& operator+=(std::string_view text) { return Append(text); }

    friend CString operator+(const CString& a, const CString& b);
    friend CString operator+(const CString& a, const char* b);
    friend CString operator+(const char* a, const CString& b);
    friend CString operator+(const CString& a, char b);
    friend CString operator+(char a, const CString& b);

    // Byte-wise (unsigned) comparisons; a shorter string orders before a longer one
    // that it prefixes. Results are -1, 0 or 1.
    int Compare(const char* text) const noexcept { return CompareViews(View(), ViewOf(text)); }
    int Compare(const CString& text) const noexcept { return CompareViews(View(), text.View()); }
    // As Compare, after upper-casing both sides with the ASCII rule of MakeUpper.
    int CompareNoCase(const char* text) const noexcept;
    int CompareNoCase(const CString& text) const noexcept;

    friend bool operator==(const CString& a, const CString& b) noexcept {
        return a.View() == b.View();
    }
    friend bool operator==(const CString& a, const char* b) noexcept {
        return a.View() == ViewOf(b);
    }
    friend std::strong_ordering operator<=>(const CString& a, const CString& b) noexcept {
        return a.Compare(b) <=> 0;
    }
    friend std::strong_ordering operator<=>(const CString& a, const char* b) noexcept {
        return a.Compare(b) <=> 0;
    }

    CString& MakeUpper();
    CString& MakeLower();

    // printf-style formatting into a string of any length.
    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void AppendFormat(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void FormatV(const char* format, va_list args);
    void AppendFormatV(const char* format, va_list args);

    // Removes every occurrence of `ch`; returns how many were removed.
    int Remove(char ch);
    // Inserts before `index`, clamped to [0, GetLength()]; returns the new length.
    int Insert(int index, char ch);
    int Insert(int index, const char* text);
    // Replaces every occurrence, left to right, without rescanning replaced text;
    // returns the number of replacements. An empty `oldText` replaces nothing.
    int Replace(char oldCh, char newCh);
    int Replace(const char* oldText, const char* newText);
    // Removes `count` bytes from `index` (both clamped); returns the new length.
    int Delete(int index, int count = 1);

    // Index of the first occurrence at or after `start`, or -1.
    int Find(char ch, int start = 0) const noexcept;
    int Find(const char* text, int start = 0) const noexcept;
    // Index of the last occurrence, or -1.
    int ReverseFind(char ch) const noexcept;

    // Substrings; out-of-range arguments are clamped to the string.
    CString Left(int count) const;
    CString Mid(int first) const;
    CString Mid(int first, int count) const;
    CString Right(int count) const;

    // Whitespace is the C locale's: space, \t, \n, \v, \f, \r.
    CString& TrimLeft();
    CString& TrimLeft(char target);
    CString& TrimLeft(const char* targets);
    CString& TrimRight();
    CString& TrimRight(char target);
    CString& TrimRight(const char* targets);
    CString& Trim() { return TrimRight().TrimLeft(); }

    // Direct writing: GetBuffer returns room for at least `minLength` bytes plus a
    // NUL, holding the current text. ReleaseBuffer sets the length to `newLength`,
    // or to the position of the first NUL when it is -1. No other member may be
    // called between the two.
    char* GetBuffer(int minLength = 0);
    char* GetBufferSetLength(int length);
    void ReleaseBuffer(int newLength = -1);

  private:
    friend class CStringArena;

    struct Rep {
        int length;
        int capacity;  // bytes available for text, not counting the NUL; kInArena
    };
    static constexpr int kInArena = -1;  // the text lives in a CStringArena
    static char* Data(Rep* rep) noexcept { return reinterpret_cast<char*>(rep + 1); }
    static std::string_view ViewOf(const char* text) noexcept {
        return text ? std::string_view(text) : std::string_view();
    }
    static int CompareViews(std::string_view a, std::string_view b) noexcept;
    static int CompareViewsNoCase(std::string_view a, std::string_view b) noexcept;
    static Rep* Allocate(int capacity);
    // Frees a heap block; leaves an arena's text alone.
    static void Release(Rep* rep) noexcept {
        if (rep && rep->capacity != kInArena) ::operator delete(rep);
    }
    // Before an in-place change: moves a text that lives in an arena to the heap.
    void MakeWritable();
    static CString Concat(std::string_view a, std::string_view b);

    void Assign(std::string_view text);
    int InsertText(int index, std::string_view text);
    CString& TrimLeftSet(std::string_view targets);
    CString& TrimRightSet(std::string_view targets);
    CString& Append(std::string_view text);
    // Makes room for `capacity` bytes, keeping the text; never shrinks.
    void Reserve(int capacity);
    void SetLength(int length) noexcept;
    // Replaces the text with `count` bytes from the front removed or kept.
    void KeepRange(int first, int count);

    Rep* m_rep = nullptr;
};

static_assert(sizeof(CString) == sizeof(void*));

// Storage for many texts that go together and are read far more often than they
// change (the texts of a loaded table): each text is copied once into large blocks,
// with no heap block, header or rounding of its own. Store returns a string that
// reads its copy there. The arena frees everything at once when it goes, so it must
// outlive every string Store returned (copies of them are ordinary strings, and a
// changed string has moved to the heap). Stored bytes are never reused.
//
// Allocate hands out raw bytes from the same blocks, in the same order: what is
// allocated just before a text is stored lies right before that text in memory (a
// row beside its text: one reach of memory finds both).
class CStringArena {
  public:
    CStringArena() = default;
    CStringArena(const CStringArena&) = delete;
    CStringArena& operator=(const CStringArena&) = delete;
    ~CStringArena();

    CString Store(std::string_view text);
    // `bytes` of storage aligned to `align` (a power of two up to
    // alignof(std::max_align_t)), kept until the arena goes. Throws std::bad_alloc.
    void* Allocate(size_t bytes, size_t align);

  private:
    struct Block {
        Block* next;
        size_t hugeBytes;  // a huge block's size (huge_block.h), else 0
    };
    // Makes room for `bytes` at an alignment of `align` in the newest block.
    void Reserve(size_t bytes, size_t align);
    Block* m_blocks = nullptr;
    char* m_next = nullptr;  // free bytes of the newest block: [m_next, m_end)
    char* m_end = nullptr;
    size_t m_nextBlockBytes = 4096;  // doubling up to a huge page
};
