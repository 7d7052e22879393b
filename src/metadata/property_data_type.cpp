#include "metadata/property_data_type.h"

#include <cstddef>

namespace {

bool IsDigit(char ch) {
    return ch >= '0' && ch <= '9';
}

// Counts the digits at `at`, moving `at` past them.
std::size_t SkipDigits(std::string_view text, std::size_t& at) {
    const std::size_t start = at;
    while (at < text.size() && IsDigit(text[at]))
        ++at;
    return at - start;
}

void SkipSign(std::string_view text, std::size_t& at) {
    if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
}

bool IsInteger(std::string_view text) {
    std::size_t at = 0;
    SkipSign(text, at);
    const std::size_t digits = SkipDigits(text, at);
    return digits >= 1 && digits <= 18 && at == text.size();
}

bool IsReal(std::string_view text) {
    std::size_t at = 0;
    SkipSign(text, at);
    std::size_t digits = SkipDigits(text, at);
    if (at < text.size() && text[at] == '.') {
        ++at;
        digits += SkipDigits(text, at);
    }
    if (digits == 0) return false;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        ++at;
        SkipSign(text, at);
        if (SkipDigits(text, at) == 0) return false;
    }
    return at == text.size();
}

int Number(std::string_view digits) {
    int value = 0;
    for (char ch : digits)
        value = value * 10 + (ch - '0');
    return value;
}

bool IsDate(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return false;
    for (std::size_t i : {0, 1, 2, 3, 5, 6, 8, 9})
        if (!IsDigit(text[i])) return false;
    const int year = Number(text.substr(0, 4));
    const int month = Number(text.substr(5, 2));
    const int day = Number(text.substr(8, 2));
    if (year < 1 || month < 1 || month > 12 || day < 1) return false;
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return day <= kDays[month - 1] + (month == 2 && leap ? 1 : 0);
}

}  // namespace

const char* PropertyDataTypeName(EPropertyDataType type) {
    switch (type) {
        case EPropertyDataType::Text:
            return "Text";
        case EPropertyDataType::Integer:
            return "Integer";
        case EPropertyDataType::Real:
            return "Real";
        case EPropertyDataType::Date:
            return "Date";
        case EPropertyDataType::Boolean:
            return "Boolean";
    }
    return "(unknown)";
}

bool IsPropertyDataType(DWORD code) {
    return code < static_cast<DWORD>(kPropertyDataTypeCount);
}

bool IsPropertyValueOfType(EPropertyDataType type, std::string_view text) {
    switch (type) {
        case EPropertyDataType::Integer:
            return IsInteger(text);
        case EPropertyDataType::Real:
            return IsReal(text);
        case EPropertyDataType::Date:
            return IsDate(text);
        case EPropertyDataType::Boolean:
            return text == "true" || text == "false";
        default:
            return true;
    }
}
