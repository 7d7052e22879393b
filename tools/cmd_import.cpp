// tessmeta import: a model file from a JSON document written by export.
//
// The whole document is checked before anything is written: a fault is reported
// as one line naming its place (a JSON pointer) and no file is created.
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "command.h"
#include "exchange.h"
#include "zmflib/db_object.h"
#include "zmflib/fields.h"
#include "zmflib/zmf_file.h"

namespace tessmeta::tool {
namespace {

using Json = nlohmann::json;

// The largest key kind a document may set a counter for.
constexpr std::int64_t kMaxKeyKind = 4095;

struct SBadInput {
    std::string place;  // a JSON pointer
    std::string what;
};

[[noreturn]] void Bad(const std::string& place, const std::string& what) {
    throw SBadInput{place.empty() ? "/" : place, what};
}

std::string Pointer(const std::string& base, const std::string& token) {
    std::string escaped;
    for (char c : token)
        escaped += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    return base + "/" + escaped;
}

std::int64_t Integer(const Json& value, const std::string& place, std::int64_t low,
                     std::int64_t high) {
    if (!value.is_number_integer()) Bad(place, "expected an integer");
    const std::int64_t number =
        value.is_number_unsigned() && value.get<std::uint64_t>() > static_cast<std::uint64_t>(high)
            ? high + 1
            : value.get<std::int64_t>();
    if (number < low || number > high)
        Bad(place,
            "expected an integer from " + std::to_string(low) + " to " + std::to_string(high));
    return number;
}

DWORD Unsigned(const Json& value, const std::string& place, std::int64_t low = 0) {
    return static_cast<DWORD>(Integer(value, place, low, std::numeric_limits<DWORD>::max()));
}

std::string Text(const Json& value, const std::string& place) {
    if (!value.is_string()) Bad(place, "expected a string");
    std::string bytes;
    if (!Utf8ToBytes(value.get_ref<const std::string&>(), bytes))
        Bad(place, "has a character outside Latin-1 (U+0000 to U+00FF)");
    return bytes;
}

ExchangeCell Cell(const SZmfColumnDesc& column, const Json& value, const std::string& place) {
    switch (column.type) {
        case EZmfColumnType::Key:
        case EZmfColumnType::U32:
            return std::int64_t{Unsigned(value, place)};
        case EZmfColumnType::Int:
            return Integer(value, place, std::numeric_limits<LONG>::min(),
                           std::numeric_limits<LONG>::max());
        case EZmfColumnType::String:
            return Text(value, place);
        case EZmfColumnType::Date:
            if (value.is_number() && std::isfinite(value.get<double>())) return value.get<double>();
            if (value == "null" || value == "invalid") return value.get<std::string>();
            Bad(place, "expected a number, \"null\" or \"invalid\"");
        case EZmfColumnType::StringId:
            if (value.is_number_integer() && value == 0) return std::int64_t{0};
            if (!value.is_object() || value.size() != 2 || !value.contains("id") ||
                !value.contains("text"))
                Bad(place, "expected 0 or {\"id\": ..., \"text\": ...}");
            Text(value["text"], place + "/text");
            return std::int64_t{Unsigned(value["id"], place + "/id", 1)};
    }
    Bad(place, "unknown column type");
}

ExchangeRow Row(const SZmfTableDesc& desc, const Json& value, const std::string& place) {
    if (!value.is_object()) Bad(place, "expected an object (a row)");
    for (const auto& [name, cell] : value.items()) {
        bool known = false;
        for (const SZmfColumnDesc& column : desc.columns)
            known = known || name == column.name;
        if (!known) Bad(Pointer(place, name), "no such column in table " + std::string(desc.name));
    }
    ExchangeRow row;
    for (const SZmfColumnDesc& column : desc.columns) {
        auto it = value.find(column.name);
        if (it == value.end()) Bad(place, "missing column " + std::string(column.name));
        row.push_back(Cell(column, *it, Pointer(place, column.name)));
    }
    return row;
}

// Checks the document and turns it into rows; throws SBadInput.
SExchangeModel ReadDocument(const Json& doc) {
    if (!doc.is_object()) Bad("", "expected an object");
    for (const auto& [name, value] : doc.items())
        if (name != "format_version" && name != "key_counters" && name != "tables")
            Bad(Pointer("", name), "unknown member");
    for (const char* name : {"format_version", "key_counters", "tables"})
        if (!doc.contains(name)) Bad("", std::string("missing member ") + name);

    SExchangeModel model;
    model.formatVersion = Unsigned(doc["format_version"], "/format_version", 1);
    const Json& counters = doc["key_counters"];
    if (!counters.is_array()) Bad("/key_counters", "expected an array");
    std::set<int> kinds;
    for (std::size_t i = 0; i < counters.size(); ++i) {
        const std::string place = "/key_counters/" + std::to_string(i);
        if (!counters[i].is_array() || counters[i].size() != 2)
            Bad(place, "expected [key kind, counter]");
        const int kind = static_cast<int>(Integer(counters[i][0], place + "/0", 0, kMaxKeyKind));
        if (!kinds.insert(kind).second) Bad(place + "/0", "key kind given twice");
        model.counters.emplace_back(kind, Unsigned(counters[i][1], place + "/1"));
    }

    const Json& tables = doc["tables"];
    if (!tables.is_object()) Bad("/tables", "expected an object");
    for (const auto& [name, rows] : tables.items())
        if (!zmf::FindTableByName(name.c_str())) Bad(Pointer("/tables", name), "unknown table");
    for (const SZmfTableDesc* desc : zmf::AllTables()) {
        SExchangeTable& table = model.tables.emplace_back();
        table.desc = desc;
        auto it = tables.find(desc->name);
        if (it == tables.end()) continue;  // a table left out is empty
        const std::string place = Pointer("/tables", desc->name);
        if (!it->is_array()) Bad(place, "expected an array of rows");
        table.rows.reserve(it->size());
        for (std::size_t i = 0; i < it->size(); ++i)
            table.rows.push_back(Row(*desc, (*it)[i], place + "/" + std::to_string(i)));
    }
    model.ResolveTexts();

    // Every string id must name a text of the document, and its inline text must be
    // that text.
    for (const SExchangeTable& table : model.tables) {
        auto rows = tables.find(table.desc->name);
        for (std::size_t c = 0; c < table.desc->columns.size(); ++c) {
            const SZmfColumnDesc& column = table.desc->columns[c];
            if (column.type != EZmfColumnType::StringId) continue;
            for (std::size_t r = 0; r < table.rows.size(); ++r) {
                const auto id = static_cast<DWORD>(std::get<std::int64_t>(table.rows[r][c]));
                if (id == 0) continue;
                const std::string place = Pointer("/tables", table.desc->name) + "/" +
                                          std::to_string(r) + "/" + column.name;
                auto text = model.texts.find(id);
                if (text == model.texts.end())
                    Bad(place + "/id", "no string " + std::to_string(id) + " in the model");
                if (BytesToUtf8(*text->second) != (*rows)[r][column.name]["text"])
                    Bad(place + "/text", "differs from the text of string " + std::to_string(id));
            }
        }
    }
    return model;
}

// Supplies the cells of one row to a row object.
class CCellsToRow final : public IZmfColumnSource {
  public:
    explicit CCellsToRow(const ExchangeRow& row) : m_row(row) {}
    DWORD U32(int index) override { return static_cast<DWORD>(Number(index)); }
    LONG Int(int index) override { return static_cast<LONG>(Number(index)); }
    void String(int index, CZmfString& out) override {
        out = CString(std::get<std::string>(m_row[static_cast<std::size_t>(index)]));
    }
    COleDateTime Date(int index) override {
        const ExchangeCell& cell = m_row[static_cast<std::size_t>(index)];
        COleDateTime date;
        if (const auto* value = std::get_if<double>(&cell)) {
            date.m_dt = *value;
            date.m_status = COleDateTime::valid;
        } else {
            date.m_status =
                std::get<std::string>(cell) == "null" ? COleDateTime::null : COleDateTime::invalid;
        }
        return date;
    }

  private:
    std::int64_t Number(int index) const {
        return std::get<std::int64_t>(m_row[static_cast<std::size_t>(index)]);
    }
    const ExchangeRow& m_row;
};

bool WriteModel(const SExchangeModel& model, CZmfFile& file) {
    for (const SExchangeTable& table : model.tables) {
        CTableBase* target = file.GetEmptyTable(table.desc->name);
        bool ok = target != nullptr;
        std::unique_ptr<CDbObjectBase> row(table.desc->createRow());
        for (std::size_t r = 0; ok && r < table.rows.size(); ++r) {
            CCellsToRow source(table.rows[r]);
            table.desc->writeRow(*row, source);
            ok = target->Insert(row.get()) != 0;
        }
        ok = file.ReleaseTable(&target, 0) && ok;
        if (!ok || file.HasError()) return false;
    }
    for (const auto& [kind, value] : model.counters)
        file.GetIdentityMgr()->SetKeyValue(kind, value);
    file.SetFormatVersion(model.formatVersion);
    return file.Commit();
}

}  // namespace

int RunImport(const std::string& input, const std::string& path) {
    std::ifstream in(input, std::ios::binary);
    if (!in) return Fail(input + ": cannot open");
    std::ostringstream buffer;
    buffer << in.rdbuf();
    Json doc;
    try {
        doc = Json::parse(buffer.str());
    } catch (const Json::parse_error& e) {
        return Fail(input + ": bad JSON at byte " + std::to_string(e.byte) + ": " + e.what());
    }
    SExchangeModel model;
    try {
        model = ReadDocument(doc);
    } catch (const SBadInput& bad) {
        return Fail(input + ": " + bad.place + ": " + bad.what);
    }

    std::string error;
    auto file = CZmfFile::Create(path, model.formatVersion, &error);
    if (!file) return Fail(error);
    if (WriteModel(model, *file)) return kExitOk;
    error = file->HasError() ? file->GetLastError() : path + ": cannot save: a row was refused";
    file->Rollback();
    file.reset();
    if (path.find("://") == std::string::npos) std::filesystem::remove(path);
    return Fail(error, kExitProblems);
}

}  // namespace tessmeta::tool
