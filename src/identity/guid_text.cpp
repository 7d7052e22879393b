#include "identity/guid_text.h"

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tessmeta {
namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

// Where the dashes of the 36-character form stand.
constexpr bool IsDashOffset(std::size_t i) {
    return i == 8 || i == 13 || i == 18 || i == 23;
}

char* PutHex(char* out, std::uint32_t value, int digits) {
    for (int i = digits - 1; i >= 0; --i) {
        out[i] = kHexDigits[value & 0xF];
        value >>= 4;
    }
    return out + digits;
}

constexpr std::uint64_t kOnes = 0x0101010101010101ull;
constexpr std::uint64_t kHighBits = 0x8080808080808080ull;

// High bit of each byte set when that byte of `x` (all below 0x80) lies in [lo, hi].
constexpr std::uint64_t BytesInRange(std::uint64_t x, std::uint8_t lo, std::uint8_t hi) {
    const std::uint64_t atLeastLo = x + (0x80 - lo) * kOnes;
    const std::uint64_t aboveHi = x + (0x7F - hi) * kOnes;
    return atLeastLo & ~aboveHi & kHighBits;
}

// Eight hex digits (first digit in the lowest byte) to four bytes in text order
// (the first pair's byte lowest), decoded in one register. The high bit of each
// byte that is not a hex digit is set in `bad`; the result is then meaningless.
inline std::uint32_t DecodeEightDigits(const char* digits, std::uint64_t& bad) {
    std::uint64_t x;
    std::memcpy(&x, digits, sizeof x);
    // Bytes of 0x80 and above are flagged at once; BytesInRange needs the rest.
    const std::uint64_t valid =
        BytesInRange(x, '0', '9') | BytesInRange(x | 0x20 * kOnes, 'a', 'f');
    bad |= (x & kHighBits) | (valid ^ kHighBits);
    // '0'-'9' end in their value; 'A'-'F' and 'a'-'f' (bit 6 set) in value - 9.
    std::uint64_t v = (x & 0x0F * kOnes) + ((x >> 6) & kOnes) * 9;
    v = ((v << 4) | (v >> 8)) & 0x00FF00FF00FF00FFull;  // digit pairs to bytes
    v = (v | (v >> 8)) & 0x0000FFFF0000FFFFull;
    v = (v | (v >> 16)) & 0x00000000FFFFFFFFull;
    return static_cast<std::uint32_t>(v);
}

static_assert(std::endian::native == std::endian::little, "byte order of DecodeEightDigits");

constexpr std::uint32_t SwapBytes(std::uint32_t word) {
    return word >> 24 | (word >> 8 & 0xFF00) | (word << 8 & 0xFF0000) | word << 24;
}
constexpr std::uint16_t SwapBytes(std::uint16_t half) {
    return static_cast<std::uint16_t>(half >> 8 | half << 8);
}

// Reads 32 digits; false (guid untouched) when any is not a hex digit. Lookups by
// GUID text run this once each, so it is a straight line of register arithmetic,
// and the GUID is written as two 8-byte halves: the hash reads it back as those
// halves, and a read that had to be pieced together from narrower writes would wait
// for them to retire, which behind the previous lookup's cache misses serialises
// the lookups.
bool ParseDigits(const char* digits, GUID& guid) {
    std::uint64_t bad = 0;
    const std::uint32_t first = DecodeEightDigits(digits, bad);
    const std::uint32_t second = DecodeEightDigits(digits + 8, bad);
    const std::uint32_t third = DecodeEightDigits(digits + 16, bad);
    const std::uint32_t fourth = DecodeEightDigits(digits + 24, bad);
    if (bad) return false;
    // Data1, Data2 and Data3 print as numbers, most significant digit first; the
    // Data4 bytes in order.
    const std::uint64_t data2 = SwapBytes(static_cast<std::uint16_t>(second));
    const std::uint64_t data3 = SwapBytes(static_cast<std::uint16_t>(second >> 16));
    const std::uint64_t halves[2] = {SwapBytes(first) | data2 << 32 | data3 << 48,
                                     third | static_cast<std::uint64_t>(fourth) << 32};
    static_assert(sizeof halves == sizeof(GUID) && offsetof(GUID, Data4) == 8);
    std::memcpy(&guid, halves, sizeof halves);
    return true;
}

std::atomic<GuidSource> g_guidSource{&UuidCreate};

}  // namespace

void FormatGuidDigits(const GUID& guid, char* out) {
    out = PutHex(out, guid.Data1, 8);
    out = PutHex(out, guid.Data2, 4);
    out = PutHex(out, guid.Data3, 4);
    for (std::uint8_t byte : guid.Data4)
        out = PutHex(out, byte, 2);
}

void GuidToText(const GUID& guid, CString& out) {
    if (IsNilGuid(guid)) {
        out.Empty();
        return;
    }
    char digits[kGuidDigits];
    FormatGuidDigits(guid, digits);
    out = std::string_view(digits, kGuidDigits);
}

void GuidToText(const GUID& guid, CZmfString& out) {
    char digits[kGuidDigits];
    if (IsNilGuid(guid)) {
        out = std::string_view();
        return;
    }
    FormatGuidDigits(guid, digits);
    out = std::string_view(digits, kGuidDigits);
}

bool GuidFromText(std::string_view text, GUID& guid) {
    // A 32-character text holding a dash is in neither form: the dash is no digit.
    if (text.size() == kGuidDigits) return ParseDigits(text.data(), guid);
    if (text.size() != 36) return false;
    char digits[kGuidDigits];
    int count = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsDashOffset(i)) {
            if (text[i] != '-') return false;
        } else {
            digits[count++] = text[i];
        }
    }
    return ParseDigits(digits, guid);
}

bool GuidFromTextIgnoringDashes(std::string_view text, GUID& guid) {
    // The usual lookup key, the stored form: a dash in it leaves fewer than 32
    // digits, which the parse rejects as a non-digit.
    if (text.size() == kGuidDigits) return ParseDigits(text.data(), guid);
    char digits[kGuidDigits];
    int count = 0;
    for (char ch : text) {
        if (ch == '-') continue;
        if (count == kGuidDigits) return false;
        digits[count++] = ch;
    }
    return count == kGuidDigits && ParseDigits(digits, guid);
}

GuidSource SetGuidSource(GuidSource source) {
    return g_guidSource.exchange(source ? source : &UuidCreate);
}

RPC_STATUS CreateGuid(UUID* uuid) {
    return g_guidSource.load(std::memory_order_relaxed)(uuid);
}

}  // namespace tessmeta
