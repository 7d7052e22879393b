#include "identity/guid_text.h"

#include <atomic>
#include <bit>
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

// Eight hex digits (first digit in the lowest byte) to four bytes in text order,
// eight at a time in one register; false when any is not a hex digit.
bool ParseEightDigits(const char* digits, std::uint8_t* out) {
    std::uint64_t x;
    std::memcpy(&x, digits, sizeof x);
    if (x & kHighBits) return false;
    const std::uint64_t valid =
        BytesInRange(x, '0', '9') | BytesInRange(x | 0x20 * kOnes, 'a', 'f');
    if (valid != kHighBits) return false;
    // '0'-'9' end in their value; 'A'-'F' and 'a'-'f' (bit 6 set) in value - 9.
    std::uint64_t v = (x & 0x0F * kOnes) + ((x >> 6) & kOnes) * 9;
    v = ((v << 4) | (v >> 8)) & 0x00FF00FF00FF00FFull;  // digit pairs to bytes
    v = (v | (v >> 8)) & 0x0000FFFF0000FFFFull;
    v = (v | (v >> 16)) & 0x00000000FFFFFFFFull;
    const auto word = static_cast<std::uint32_t>(v);
    std::memcpy(out, &word, sizeof word);  // bytes in text order on a little-endian host
    return true;
}

static_assert(std::endian::native == std::endian::little, "byte order of ParseEightDigits");

// Reads 32 digits; false (guid untouched) when any is not a hex digit.
bool ParseDigits(const char* digits, GUID& guid) {
    std::uint8_t bytes[16];
    for (int i = 0; i < 4; ++i) {
        if (!ParseEightDigits(digits + 8 * i, bytes + 4 * i)) return false;
    }
    guid.Data1 = static_cast<std::uint32_t>(bytes[0]) << 24 |
                 static_cast<std::uint32_t>(bytes[1]) << 16 |
                 static_cast<std::uint32_t>(bytes[2]) << 8 | bytes[3];
    guid.Data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
    guid.Data3 = static_cast<std::uint16_t>(bytes[6] << 8 | bytes[7]);
    std::memcpy(guid.Data4, bytes + 8, 8);
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
    if (text.size() == kGuidDigits) {
        // Undashed text only: a 32-character text holding a dash is in neither form.
        return text.find('-') == std::string_view::npos && ParseDigits(text.data(), guid);
    }
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
