// tessmeta diff: two models compared object by object (see docs/exchange.md).
//
// Rows are matched by identity, not by key: a unique object by its object GUID, a
// row that belongs to a unique object (Global_User_ID) by that object's GUID, any
// other row by its key. Columns that refer to other rows are compared through the
// identity of the row they name, so two models with equal GUIDs and different keys
// compare equal.
#include <cstdio>
#include <deque>
#include <future>
#include <memory>
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

// Texts are compared inline through the string-id columns; the string tables
// themselves only hold them.
bool ComparedTable(const SZmfTableDesc& desc) {
    const std::string_view name(desc.name);
    return name != "SmallString" && name != "LargeString";
}

// What a model's rows are called across models, table by table in catalogue order.
class CIdentities {
  public:
    struct STable {
        std::vector<std::string_view> ids;                        // per row
        std::unordered_map<std::string_view, std::size_t> rowOf;  // id -> row
        std::unordered_map<DWORD, std::string_view> idOfKey;      // first row per key
        std::deque<std::string> owned;              // the ids that are no GUID of the model
        std::vector<const SZmfTableDesc*> targets;  // per column
    };

    explicit CIdentities(const SExchangeModel& model) : m_model(model) {
        m_tables.resize(model.tables.size());
        // Unique objects first: the other tables name their rows after them.
        for (std::size_t t = 0; t < model.tables.size(); ++t)
            if (model.tables[t].desc == Objects()) Name(t);
        for (std::size_t t = 0; t < model.tables.size(); ++t)
            if (model.tables[t].desc != Objects() && ComparedTable(*model.tables[t].desc)) Name(t);
    }

    const STable& Of(std::size_t table) const { return m_tables[table]; }

    // The identity of the row a reference column names; null for a column that is
    // no reference, 0, or a key without a row.
    const std::string_view* Target(std::size_t table, std::size_t column,
                                   const ExchangeCell& cell) const {
        const SZmfTableDesc* target = m_tables[table].targets[column];
        const auto* value = std::get_if<std::int64_t>(&cell);
        if (!target || !value || *value == 0) return nullptr;
        const auto& keys = m_tables[Position(target)].idOfKey;
        auto it = keys.find(static_cast<DWORD>(*value));
        return it == keys.end() ? nullptr : &it->second;
    }

    // The text of a string-id column; null for any other column.
    const std::string* Text(std::size_t table, std::size_t column, const ExchangeCell& cell) const {
        if (m_model.tables[table].desc->columns[column].type != EZmfColumnType::StringId)
            return nullptr;
        return &m_model.Text(static_cast<DWORD>(std::get<std::int64_t>(cell)));
    }

    // A value as JSON text, texts inline and references by identity.
    std::string Shown(std::size_t table, std::size_t column, const ExchangeCell& cell) const {
        if (const std::string* text = Text(table, column, cell))
            return Json(BytesToUtf8(*text)).dump();
        if (const std::string_view* target = Target(table, column, cell))
            return Json(*target).dump();
        if (const auto* text = std::get_if<std::string>(&cell))
            return Json(BytesToUtf8(*text)).dump();
        if (const auto* date = std::get_if<double>(&cell)) return Json(*date).dump();
        return std::to_string(std::get<std::int64_t>(cell));
    }

  private:
    static const SZmfTableDesc* Objects() {
        static const SZmfTableDesc* objects = zmf::FindTableByName("UniqueObject");
        return objects;
    }

    std::size_t Position(const SZmfTableDesc* desc) const {
        for (std::size_t t = 0; t < m_model.tables.size(); ++t)
            if (m_model.tables[t].desc == desc) return t;
        return 0;
    }

    // The table a U32 column refers to: the unique objects for the object columns,
    // else the table whose key column has the column's name.
    static const SZmfTableDesc* Referenced(const SZmfColumnDesc& column) {
        if (column.type != EZmfColumnType::U32) return nullptr;
        if (IsObjectReference(column.name)) return Objects();
        for (const SZmfTableDesc* desc : zmf::AllTables())
            if (std::string_view(desc->columns[0].name) == column.name) return desc;
        return nullptr;
    }

    void Name(std::size_t t) {
        const SExchangeTable& table = m_model.tables[t];
        const bool objects = table.desc == Objects();
        std::size_t owner = 0;
        for (std::size_t c = 1; c < table.desc->columns.size(); ++c)
            if (std::string_view(table.desc->columns[c].name) == "Global_User_ID") owner = c;
        STable& named = m_tables[t];
        for (const SZmfColumnDesc& column : table.desc->columns)
            named.targets.push_back(Referenced(column));
        const auto& objectIds = m_tables[Position(Objects())].idOfKey;
        named.ids.reserve(table.rows.size());
        named.rowOf.reserve(table.rows.size());
        named.idOfKey.reserve(table.rows.size());
        for (const ExchangeRow& row : table.rows) {
            const auto key = static_cast<DWORD>(std::get<std::int64_t>(row[0]));
            std::string_view id;
            if (objects) {
                id = std::get<std::string>(row[kObjectGuidColumn]);
            } else if (auto it = owner ? objectIds.find(
                                             static_cast<DWORD>(std::get<std::int64_t>(row[owner])))
                                       : objectIds.end();
                       it != objectIds.end()) {
                id = it->second;
            } else {
                id = named.owned.emplace_back("key " + std::to_string(key));
            }
            const std::size_t r = named.ids.size();
            for (int n = 2; !named.rowOf.try_emplace(id, r).second; ++n)
                id = named.owned.emplace_back(std::string(id.substr(0, id.find(" #"))) + " #" +
                                              std::to_string(n));
            named.ids.push_back(id);
            named.idOfKey.try_emplace(key, id);
        }
    }

    const SExchangeModel& m_model;
    std::vector<STable> m_tables;
};

// Whether column `c` holds the same value in both rows, texts and references
// compared by what they stand for.
bool Same(std::size_t t, std::size_t c, const CIdentities& idsA, const ExchangeCell& cellA,
          const CIdentities& idsB, const ExchangeCell& cellB) {
    if (const std::string* text = idsA.Text(t, c, cellA)) return *text == *idsB.Text(t, c, cellB);
    const std::string_view* targetA = idsA.Target(t, c, cellA);
    const std::string_view* targetB = idsB.Target(t, c, cellB);
    if (targetA || targetB) return targetA && targetB && *targetA == *targetB;
    return cellA == cellB;
}

struct SRowChange {
    const char* table;
    std::string_view id;
    const char* change;            // "added", "removed", "changed"
    Json fields = Json::object();  // column -> [before, after]
    bool versionMoved = false;
};

void CompareTables(std::size_t t, const SExchangeModel& a, const CIdentities& idsA,
                   const SExchangeModel& b, const CIdentities& idsB,
                   std::vector<SRowChange>& changes) {
    const char* name = a.tables[t].desc->name;
    const auto& columns = a.tables[t].desc->columns;
    const CIdentities::STable& namesA = idsA.Of(t);
    const CIdentities::STable& namesB = idsB.Of(t);
    std::vector<bool> matched(namesB.ids.size());
    for (std::size_t r = 0; r < namesA.ids.size(); ++r) {
        auto it = namesB.rowOf.find(namesA.ids[r]);
        if (it == namesB.rowOf.end()) {
            changes.push_back({name, namesA.ids[r], "removed"});
            continue;
        }
        matched[it->second] = true;
        const ExchangeRow& rowA = a.tables[t].rows[r];
        const ExchangeRow& rowB = b.tables[t].rows[it->second];
        SRowChange change{name, namesA.ids[r], "changed"};
        for (std::size_t c = 1; c < rowA.size(); ++c) {
            if (Same(t, c, idsA, rowA[c], idsB, rowB[c])) continue;
            if (std::string_view(columns[c].name) == kVersionGuid)
                change.versionMoved = true;
            else
                change.fields[columns[c].name] = {idsA.Shown(t, c, rowA[c]),
                                                  idsB.Shown(t, c, rowB[c])};
        }
        if (change.versionMoved || !change.fields.empty()) changes.push_back(std::move(change));
    }
    for (std::size_t r = 0; r < namesB.ids.size(); ++r)
        if (!matched[r]) changes.push_back({name, namesB.ids[r], "added"});
}

void PrintText(const std::vector<SRowChange>& changes) {
    for (const SRowChange& change : changes) {
        const bool object = std::string_view(change.table) == "UniqueObject";
        std::string line = (object ? std::string("object") : std::string(change.table)) + " " +
                           change.change + " " + std::string(change.id);
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
    // The two models are read and named at the same time, each on its own thread.
    SExchangeModel a, b;
    std::string errorA, errorB;
    std::unique_ptr<CIdentities> idsA, idsB;
    auto load = [](const std::string& path, SExchangeModel& model, std::string& error,
                   std::unique_ptr<CIdentities>& ids) {
        if (!LoadExchangeModel(path, model, error)) return false;
        ids = std::make_unique<CIdentities>(model);
        return true;
    };
    auto second = std::async(std::launch::async, load, std::cref(pathB), std::ref(b),
                             std::ref(errorB), std::ref(idsB));
    const bool okA = load(pathA, a, errorA, idsA);
    const bool okB = second.get();
    if (!okA || !okB) return Fail(okA ? errorB : errorA);
    std::vector<SRowChange> changes;
    for (std::size_t t = 0; t < a.tables.size(); ++t)
        if (ComparedTable(*a.tables[t].desc)) CompareTables(t, a, *idsA, b, *idsB, changes);
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
