// Models as plain rows, for export, import and diff: every table of the catalogue
// with its rows in stored order, the key counters and the format version.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#include "zmflib/catalogue.h"

namespace tessmeta::tool {

// One column value: keys, U32, string ids and Int as integers, String as its bytes,
// Date as the OLE date or the text "null"/"invalid".
using ExchangeCell = std::variant<std::int64_t, double, std::string>;
using ExchangeRow = std::vector<ExchangeCell>;

struct SExchangeTable {
    const SZmfTableDesc* desc = nullptr;
    std::vector<ExchangeRow> rows;
};

struct SExchangeModel {
    DWORD formatVersion = 0;
    std::vector<std::pair<int, DWORD>> counters;          // key kind -> counter, by kind
    std::vector<SExchangeTable> tables;                   // every table, in catalogue order
    std::unordered_map<DWORD, const std::string*> texts;  // string id -> text, in the rows

    // Fills `texts` from the rows of the string tables.
    void ResolveTexts();

    const SExchangeTable& Table(const char* name) const;
    // The text of a string id; empty for 0 or an id without a text.
    const std::string& Text(DWORD id) const;
};

// Reads a whole model; false with `error` when it cannot be opened or read.
bool LoadExchangeModel(const std::string& path, SExchangeModel& model, std::string& error);

// Texts are bytes of a single-byte code page; in JSON they are Latin-1 characters.
std::string BytesToUtf8(const std::string& bytes);
// The inverse; false when the text has a character above U+00FF or bad UTF-8.
bool Utf8ToBytes(const std::string& utf8, std::string& bytes);

int RunExport(const std::string& path, const std::string& output);
int RunImport(const std::string& input, const std::string& path);
int RunDiff(const std::string& a, const std::string& b, const std::string& format);

}  // namespace tessmeta::tool
