// tessmeta dump: the rows of a model file, with name-space strings resolved.
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "command.h"
#include "exchange.h"
#include "zmflib/iterators.h"

namespace tessmeta::tool {
namespace {

using Json = nlohmann::ordered_json;  // keeps the columns in record order

// Turns one row into a JSON object; string-id columns become {"id", "text"}.
class CRowToJson final : public IZmfColumnSink {
  public:
    CRowToJson(const SZmfTableDesc& desc, CNameSpaceMgr& names) : m_desc(desc), m_names(names) {}

    Json row = Json::object();

    void U32(int index, DWORD value) override {
        const SZmfColumnDesc& column = m_desc.columns[static_cast<std::size_t>(index)];
        if (column.type != EZmfColumnType::StringId || value == 0) {
            row[column.name] = value;
            return;
        }
        CString text;
        m_names.GetStringFromNameSpace(text, static_cast<LONG>(value));
        row[column.name] = {{"id", value}, {"text", BytesToUtf8(std::string(text.View()))}};
    }
    void Int(int index, LONG value) override { row[Name(index)] = value; }
    void String(int index, const CString& value) override {
        row[Name(index)] = BytesToUtf8(std::string(value.View()));
    }
    void Date(int index, const COleDateTime& value) override {
        if (value.m_status == COleDateTime::valid)
            row[Name(index)] = value.m_dt;
        else
            row[Name(index)] = value.m_status == COleDateTime::null ? "null" : "invalid";
    }

  private:
    const char* Name(int index) const {
        return m_desc.columns[static_cast<std::size_t>(index)].name;
    }

    const SZmfTableDesc& m_desc;
    CNameSpaceMgr& m_names;
};

// "name=value" pairs of a row, strings resolved as name=id:"text".
std::string RowText(const Json& row) {
    std::string line;
    for (const auto& [name, value] : row.items()) {
        if (!line.empty()) line += "  ";
        line += name + "=";
        if (value.is_object())
            line += std::to_string(value["id"].get<DWORD>()) + ":" + value["text"].dump();
        else
            line += value.dump();
    }
    return line;
}

void DumpTable(CZmfFile& file, const SZmfTableDesc& desc, CNameSpaceMgr& names, bool json,
               bool& firstTable) {
    CTableBase* table = file.GetTable(desc.name);
    CIteratorBase it(table);
    std::unique_ptr<CDbObjectBase> row(desc.createRow());
    if (json) {
        std::printf("%s\n    %s: [", firstTable ? "" : ",", Json(desc.name).dump().c_str());
    } else {
        std::printf("%s== %s\n", firstTable ? "" : "\n", desc.name);
    }
    firstTable = false;
    bool firstRow = true;
    while (it.GetNext(row.get())) {
        CRowToJson sink(desc, names);
        desc.readRow(*row, sink);
        if (json)
            std::printf("%s\n      %s", firstRow ? "" : ",", sink.row.dump().c_str());
        else
            std::printf("%s\n", RowText(sink.row).c_str());
        firstRow = false;
    }
    if (json) std::printf("%s]", firstRow ? "" : "\n    ");
    file.ReleaseTable(&table, 0);
}

}  // namespace

int RunDump(const std::string& path, const SDumpOptions& options) {
    const SZmfTableDesc* only = nullptr;
    if (!options.table.empty()) {
        only = zmf::FindTableByName(options.table.c_str());
        if (!only) return Fail("unknown table \"" + options.table + "\"");
    }
    std::string error;
    auto file = CZmfFile::Open(path, &error);
    if (!file) return Fail(error);
    CNameSpaceMgr names(file.get());
    names.Init(0, 0, /*stringsOnly=*/1, 0, 0);
    names.ReleaseStorageTables(0);
    if (file->HasError()) return Fail(file->GetLastError());

    const bool json = options.format == "json";
    if (json)
        std::printf("{\n  \"file\": %s,\n  \"format_version\": %u,\n  \"tables\": {",
                    Json(zmf::ShownLocation(path)).dump().c_str(), file->GetFormatVersion());
    bool firstTable = true;
    for (const SZmfTableDesc* desc : zmf::AllTables())
        if (!only || desc == only) DumpTable(*file, *desc, names, json, firstTable);
    if (json) std::printf("\n  }\n}\n");
    if (file->HasError()) return Fail(file->GetLastError());
    return kExitOk;
}

}  // namespace tessmeta::tool
