// tessmeta diff: two models compared object by object (see docs/exchange.md).
//
// Rows are matched by identity, not by key: a unique object by its object GUID, a
// row that belongs to a unique object (Global_User_ID) by that object's GUID, any
// other row by its key. Columns that refer to other rows are compared through the
// identity of the row they name, so two models with equal GUIDs and different keys
// compare equal.
#include <cstdio>
#include <nlohmann/json.hpp>
#include <unordered_map>

#include "command.h"
#include "exchange.h"

namespace tessmeta::tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kObjectGuidColumn = 10;  // UniqueObject.Object_GUID
constexpr const char* kVersionGuid = "Version_GUID";

bool IsObjectReference(const char* column) {
    const std::string_view name(column);
    return name == "Object_ID" || name == "Model_ID" || name == "Global_User_ID";
}

// What a model's rows are called across models.
class CIdentities {
  public:
    explicit CIdentities(const SExchangeModel& model) : m_model(model) {
        for (const SExchangeTable& table : model.tables)
            Name(table);
    }

    const std::vector<std::string>& Of(const SExchangeTable& table) const {
        return m_ids.at(table.desc);
    }

    // The identity of the row a reference column names; null for a column that is
    // no reference, 0, or a key without a row.
    const std::string* Target(const SExchangeTable& table, std::size_t column,
                              const ExchangeCell& cell) const {
        const SZmfTableDesc* target = m_targets.at(table.desc)[column];
        const auto* value = std::get_if<std::int64_t>(&cell);
        if (!target || !value || *value == 0) return nullptr;
        const auto& keys = m_keys.at(target);
        auto it = keys.find(static_cast<DWORD>(*value));
        return it == keys.end() ? nullptr : it->second;
    }

    // The text of a string-id column; null for any other column.
    const std::string* Text(const SExchangeTable& table, std::size_t column,
                            const ExchangeCell& cell) const {
        if (table.desc->columns[column].type != EZmfColumnType::StringId) return nullptr;
        return &m_model.Text(static_cast<DWORD>(std::get<std::int64_t>(cell)));
    }

    // A value as JSON text, texts inline and references by identity.
    std::string Shown(const SExchangeTable& table, std::size_t column,
                      const ExchangeCell& cell) const {
        if (const std::string* text = Text(table, column, cell))
            return Json(BytesToUtf8(*text)).dump();
        if (const std::string* target = Target(table, column, cell)) return Json(*target).dump();
        if (const auto* text = std::get_if<std::string>(&cell))
            return Json(BytesToUtf8(*text)).dump();
        if (const auto* date = std::get_if<double>(&cell)) return Json(*date).dump();
        return std::to_string(std::get<std::int64_t>(cell));
    }

  private:
    // The table a U32 column refers to: the unique objects for the object columns,
    // else the table whose key column has the column's name.
    static const SZmfTableDesc* Referenced(const SZmfColumnDesc& column) {
        if (column.type != EZmfColumnType::U32) return nullptr;
        if (IsObjectReference(column.name)) return zmf::FindTableByName("UniqueObject");
        for (const SZmfTableDesc* desc : zmf::AllTables())
            if (std::string_view(desc->columns[0].name) == column.name) return desc;
        return nullptr;
    }

    const std::string* ObjectGuid(DWORD key) const {
        auto it = m_objectGuids.find(key);
        return it == m_objectGuids.end() ? nullptr : it->second;
    }

    void Name(const SExchangeTable& table) {
        const bool objects = std::string_view(table.desc->name) == "UniqueObject";
        std::size_t owner = 0;
        for (std::size_t c = 1; c < table.desc->columns.size(); ++c)
            if (std::string_view(table.desc->columns[c].name) == "Global_User_ID") owner = c;
        auto& targets = m_targets[table.desc];
        for (const SZmfColumnDesc& column : table.desc->columns)
            targets.push_back(Referenced(column));
        std::vector<std::string>& ids = m_ids[table.desc];
        auto& keys = m_keys[table.desc];
        std::unordered_map<std::string, int> seen;
        ids.reserve(table.rows.size());
        for (const ExchangeRow& row : table.rows) {
            const auto key = static_cast<DWORD>(std::get<std::int64_t>(row[0]));
            std::string id;
            if (objects) {
                id = std::get<std::string>(row[kObjectGuidColumn]);
            } else if (const std::string* guid =
                           owner
                               ? ObjectGuid(static_cast<DWORD>(std::get<std::int64_t>(row[owner])))
                               : nullptr) {
                id = *guid;
            } else {
                id = "key " + std::to_string(key);
            }
            if (const int n = ++seen[id]; n > 1) id += " #" + std::to_string(n);
            ids.push_back(std::move(id));
            keys.try_emplace(key, &ids.back());
            if (objects)
                m_objectGuids.try_emplace(key, &std::get<std::string>(row[kObjectGuidColumn]));
        }
    }

    const SExchangeModel& m_model;
    std::unordered_map<const SZmfTableDesc*, std::vector<std::string>> m_ids;
    std::unordered_map<const SZmfTableDesc*, std::unordered_map<DWORD, const std::string*>> m_keys;
    std::unordered_map<DWORD, const std::string*> m_objectGuids;
    std::unordered_map<const SZmfTableDesc*, std::vector<const SZmfTableDesc*>> m_targets;
};

// Whether column `c` holds the same value in both rows, texts and references
// compared by what they stand for.
bool Same(const SExchangeTable& a, const CIdentities& idsA, const ExchangeCell& cellA,
          const SExchangeTable& b, const CIdentities& idsB, const ExchangeCell& cellB,
          std::size_t c) {
    if (const std::string* text = idsA.Text(a, c, cellA)) return *text == *idsB.Text(b, c, cellB);
    const std::string* targetA = idsA.Target(a, c, cellA);
    const std::string* targetB = idsB.Target(b, c, cellB);
    if (targetA || targetB) return targetA && targetB && *targetA == *targetB;
    return cellA == cellB;
}

struct SRowChange {
    const char* table;
    std::string id;
    const char* change;            // "added", "removed", "changed"
    Json fields = Json::object();  // column -> [before, after]
    bool versionMoved = false;
};

// Texts are compared inline through the string-id columns; the string tables
// themselves only hold them.
bool ComparedTable(const SZmfTableDesc& desc) {
    const std::string_view name(desc.name);
    return name != "SmallString" && name != "LargeString";
}

void CompareTables(const SExchangeTable& a, const CIdentities& idsA, const SExchangeTable& b,
                   const CIdentities& idsB, std::vector<SRowChange>& changes) {
    const std::vector<std::string>& namesA = idsA.Of(a);
    const std::vector<std::string>& namesB = idsB.Of(b);
    std::unordered_map<std::string_view, std::size_t> inB;
    inB.reserve(namesB.size());
    for (std::size_t r = 0; r < namesB.size(); ++r)
        inB.emplace(namesB[r], r);
    std::vector<bool> matched(namesB.size());
    for (std::size_t r = 0; r < namesA.size(); ++r) {
        auto it = inB.find(namesA[r]);
        if (it == inB.end()) {
            changes.push_back({a.desc->name, namesA[r], "removed"});
            continue;
        }
        matched[it->second] = true;
        const ExchangeRow& rowA = a.rows[r];
        const ExchangeRow& rowB = b.rows[it->second];
        SRowChange change{a.desc->name, namesA[r], "changed"};
        for (std::size_t c = 1; c < rowA.size(); ++c) {
            if (Same(a, idsA, rowA[c], b, idsB, rowB[c], c)) continue;
            if (std::string_view(a.desc->columns[c].name) == kVersionGuid)
                change.versionMoved = true;
            else
                change.fields[a.desc->columns[c].name] = {idsA.Shown(a, c, rowA[c]),
                                                          idsB.Shown(b, c, rowB[c])};
        }
        if (change.versionMoved || !change.fields.empty()) changes.push_back(std::move(change));
    }
    for (std::size_t r = 0; r < namesB.size(); ++r)
        if (!matched[r]) changes.push_back({b.desc->name, namesB[r], "added"});
}

void PrintText(const std::vector<SRowChange>& changes) {
    for (const SRowChange& change : changes) {
        const bool object = std::string_view(change.table) == "UniqueObject";
        std::string line = (object ? std::string("object") : std::string(change.table)) + " " +
                           change.change + " " + change.id;
        const char* separator = ": ";
        if (change.versionMoved) {
            line += separator + std::string("version GUID moved");
            separator = "; ";
        }
        for (const auto& [column, values] : change.fields.items()) {
            line += separator + column + " " + values[0].get<std::string>() + " -> " +
                    values[1].get<std::string>();
            separator = "; ";
        }
        std::printf("%s\n", line.c_str());
    }
}

Json ChangesToJson(const std::vector<SRowChange>& changes) {
    Json list = Json::array();
    for (const SRowChange& change : changes) {
        Json item = {{"table", change.table}, {"id", change.id}, {"change", change.change}};
        if (std::string_view(change.change) == "changed") {
            if (std::string_view(change.table) == "UniqueObject")
                item["version_guid_moved"] = change.versionMoved;
            Json fields = Json::object();
            for (const auto& [column, values] : change.fields.items())
                fields[column] = {{"before", Json::parse(values[0].get<std::string>())},
                                  {"after", Json::parse(values[1].get<std::string>())}};
            item["fields"] = std::move(fields);
        }
        list.push_back(std::move(item));
    }
    return list;
}

}  // namespace

int RunDiff(const std::string& pathA, const std::string& pathB, const std::string& format) {
    SExchangeModel a, b;
    std::string error;
    if (!LoadExchangeModel(pathA, a, error) || !LoadExchangeModel(pathB, b, error))
        return Fail(error);
    const CIdentities idsA(a), idsB(b);
    std::vector<SRowChange> changes;
    for (std::size_t t = 0; t < a.tables.size(); ++t)
        if (ComparedTable(*a.tables[t].desc))
            CompareTables(a.tables[t], idsA, b.tables[t], idsB, changes);
    const bool versionDiffers = a.formatVersion != b.formatVersion;
    if (format == "json") {
        Json out = {{"equal", changes.empty() && !versionDiffers}};
        if (versionDiffers) out["format_version"] = {a.formatVersion, b.formatVersion};
        out["changes"] = ChangesToJson(changes);
        std::printf("%s\n", out.dump(2).c_str());
    } else {
        if (versionDiffers)
            std::printf("format version %u -> %u\n", a.formatVersion, b.formatVersion);
        PrintText(changes);
    }
    return changes.empty() && !versionDiffers ? kExitOk : kExitProblems;
}

}  // namespace tessmeta::tool
