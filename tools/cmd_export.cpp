// tessmeta export: a whole model as one JSON document (see docs/exchange.md).
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "command.h"
#include "exchange.h"

namespace tessmeta::tool {
namespace {

using Json = nlohmann::ordered_json;  // keeps the columns in record order

Json CellToJson(const SExchangeModel& model, const SZmfColumnDesc& column,
                const ExchangeCell& cell) {
    if (const auto* text = std::get_if<std::string>(&cell)) return BytesToUtf8(*text);
    if (const auto* date = std::get_if<double>(&cell)) return *date;
    const std::int64_t value = std::get<std::int64_t>(cell);
    if (column.type != EZmfColumnType::StringId || value == 0) return value;
    return Json{{"id", value}, {"text", BytesToUtf8(model.Text(static_cast<DWORD>(value)))}};
}

// One row per line, tables in catalogue order, rows in stored order: equal models
// give equal documents, and a small edit gives a small text diff.
std::string ExportText(const SExchangeModel& model) {
    std::string out = "{\n  \"format_version\": " + std::to_string(model.formatVersion) +
                      ",\n  \"key_counters\": [";
    for (std::size_t i = 0; i < model.counters.size(); ++i)
        out += (i ? ", " : "") +
               Json::array({model.counters[i].first, model.counters[i].second}).dump();
    out += "],\n  \"tables\": {";
    bool firstTable = true;
    for (const SExchangeTable& table : model.tables) {
        out += (firstTable ? "\n    " : ",\n    ") + Json(table.desc->name).dump() + ": [";
        firstTable = false;
        bool firstRow = true;
        for (const ExchangeRow& row : table.rows) {
            Json json = Json::object();
            for (std::size_t c = 0; c < row.size(); ++c)
                json[table.desc->columns[c].name] =
                    CellToJson(model, table.desc->columns[c], row[c]);
            out += (firstRow ? "\n      " : ",\n      ") + json.dump();
            firstRow = false;
        }
        out += firstRow ? "]" : "\n    ]";
    }
    out += "\n  }\n}\n";
    return out;
}

}  // namespace

int RunExport(const std::string& path, const std::string& output) {
    SExchangeModel model;
    std::string error;
    if (!LoadExchangeModel(path, model, error)) return Fail(error);
    const std::string text = ExportText(model);
    if (output.empty()) {
        std::fwrite(text.data(), 1, text.size(), stdout);
        return std::fflush(stdout) == 0 ? kExitOk : Fail("cannot write the output", kExitProblems);
    }
    std::ofstream out(output, std::ios::binary | std::ios::trunc);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.close();
    if (!out) return Fail(output + ": cannot write", kExitProblems);
    return kExitOk;
}

}  // namespace tessmeta::tool
