// The data types of user-defined properties and the texts each accepts.
//
// A property value is always stored as text; the data type decides which texts are
// values:
//   Text     any text
//   Integer  an optional sign and 1 to 18 digits ("-42", "+7", "007")
//   Real     a decimal number with optional fraction and exponent ("3.5", "-1e-3",
//            ".5"); no spaces, no "inf" or "nan"
//   Date     YYYY-MM-DD, a real calendar day of the years 0001 to 9999
//   Boolean  "true" or "false", in lower case
// The codes are stored in Property.Data_Type; Text is 0, so the properties of files
// saved before the column existed read as Text.
#pragma once

#include <string_view>

#include "platform/types.h"

enum class EPropertyDataType : DWORD { Text = 0, Integer = 1, Real = 2, Date = 3, Boolean = 4 };

constexpr int kPropertyDataTypeCount = 5;

// "Text", "Integer", "Real", "Date", "Boolean"; "(unknown)" for another code.
const char* PropertyDataTypeName(EPropertyDataType type);
// Whether `code` is one of the five types.
bool IsPropertyDataType(DWORD code);
// Whether `text` is a value of `type`. Unknown codes accept any text, as Text does.
bool IsPropertyValueOfType(EPropertyDataType type, std::string_view text);
