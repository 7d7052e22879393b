// The lookup paths against simple models: GUID texts with dashes anywhere and
// bytes of every kind, and rows by id (the slots beside the id map) under random
// adds and deletes with duplicate, sparse and far-off ids.
#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <vector>

#include "identity/guid_mgr.h"
#include "identity/guid_text.h"
#include "identity_test_util.h"

using namespace tessmeta::test;

namespace {

// The rule, spelt out: drop the dashes, then exactly 32 ASCII hex digits.
std::optional<GUID> ModelParseIgnoringDashes(const std::string& text) {
    std::string digits;
    for (char ch : text)
        if (ch != '-') digits += ch;
    if (digits.size() != 32) return std::nullopt;
    std::uint8_t bytes[16];
    for (int i = 0; i < 32; ++i) {
        const char ch = digits[static_cast<size_t>(i)];
        int value;
        if (ch >= '0' && ch <= '9')
            value = ch - '0';
        else if (ch >= 'a' && ch <= 'f')
            value = ch - 'a' + 10;
        else if (ch >= 'A' && ch <= 'F')
            value = ch - 'A' + 10;
        else
            return std::nullopt;
        bytes[i / 2] = static_cast<std::uint8_t>(i % 2 ? bytes[i / 2] | value : value << 4);
    }
    GUID guid;
    guid.Data1 =
        static_cast<std::uint32_t>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
    guid.Data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
    guid.Data3 = static_cast<std::uint16_t>(bytes[6] << 8 | bytes[7]);
    for (int i = 0; i < 8; ++i)
        guid.Data4[i] = bytes[8 + i];
    return guid;
}

TEST(IdentityLookup, GuidTextIgnoringDashesAgreesWithItsRule) {
    // Digits of both cases, their neighbours in ASCII, the same with the high bit
    // set, and dashes.
    const std::string alphabet = "0123456789abcdefABCDEF/:@G`g-\xb0\xb9\xc1\xc6\xe1\xe6\xff";
    std::mt19937 rng(15);
    int accepted = 0;
    for (int i = 0; i < 20000; ++i) {
        GUID base;
        UuidCreate(&base);
        CString stored;
        tessmeta::GuidToText(base, stored);
        std::string text = stored.GetString();
        for (int edits = static_cast<int>(rng() % 4); edits > 0; --edits) {
            const size_t at = rng() % (text.size() + 1);
            const char ch = alphabet[rng() % alphabet.size()];
            if (rng() % 2)
                text.insert(at, 1, ch);
            else if (at < text.size())
                text[at] = ch;
        }
        const auto expected = ModelParseIgnoringDashes(text);
        GUID actual{0xdeadbeef, 1, 2, {3}};
        const GUID before = actual;
        ASSERT_EQ(tessmeta::GuidFromTextIgnoringDashes(text, actual), expected.has_value()) << text;
        ASSERT_EQ(actual, expected.value_or(before)) << text;
        accepted += expected.has_value();
    }
    EXPECT_GT(accepted, 4000);
    EXPECT_LT(accepted, 16000);
}

// Every id of `probes` is found by GetRow exactly as the id map answers it.
void ExpectRowsAsTheMapAnswers(const CEnhUniqueObjectTable& table,
                               const std::vector<ULONG>& probes) {
    for (ULONG id : probes) {
        CKelUniqueObject* mapped = nullptr;
        table.GetIdMap().Lookup(id, mapped);
        ASSERT_EQ(table.GetRow(id), mapped) << id;
    }
}

TEST(IdentityLookup, RowsByIdFollowTheIdMapThroughAddsAndDeletes) {
    // Stored: ids 0..40 with two duplicates and one id far beyond the row count.
    std::vector<CUniqueObjectBase> stored;
    for (ULONG id = 0; id <= 40; ++id)
        stored.push_back(StoredObject(id, 10, 1, GuidTextFor(id + 1).c_str()));
    stored.push_back(StoredObject(7, 11, 1, GuidTextFor(500).c_str()));
    stored.push_back(StoredObject(30, 11, 1, GuidTextFor(501).c_str()));
    stored.push_back(StoredObject(100000, 12, 1, GuidTextFor(502).c_str()));
    auto file = CZmfFile::OpenMemory();
    StoreDefinitions(*file, StandardDefinitions());
    StoreObjects(*file, stored);
    auto mgr = LoadGuids(*file);
    CEnhUniqueObjectTable& table = *mgr->GetUniqueObjectTable();
    EXPECT_EQ(mgr->GetObjectTypeId(7u), 10);  // the first of a duplicate id answers

    std::vector<ULONG> probes;
    for (ULONG id = 0; id < 9000; ++id)
        probes.push_back(id);
    for (ULONG id : {99999u, 100000u, 100001u, 100500u, 0xFFFFFFFFu})
        probes.push_back(id);
    ExpectRowsAsTheMapAnswers(table, probes);

    // An id first too far for the slots, reached by them once the table has grown.
    auto add = [&table](ULONG id) {
        auto row = std::make_unique<CKelUniqueObject>();
        row->Unique_Object_ID = id;
        return table.Add(std::move(row));
    };
    add(6000);
    for (ULONG id = 1000; id < 2000; ++id)
        add(id);
    add(6100);
    ExpectRowsAsTheMapAnswers(table, probes);

    // Random steps: rows with ids near the start, in the range the slots reach as
    // the table grows, and far off; new objects (numbered after 100000); deletes.
    std::mt19937 rng(7);
    std::vector<ULONG> ids;
    for (const auto& row : stored)
        ids.push_back(row.Unique_Object_ID);
    for (int step = 0; step < 3000; ++step) {
        ULONG touched;
        switch (rng() % 4) {
            case 0: {
                const ULONG ranges[] = {50, 9000, 200000};
                touched = add(static_cast<ULONG>(rng() % ranges[rng() % 3]));
                ids.push_back(touched);
                break;
            }
            case 1:
                touched = static_cast<ULONG>(mgr->GetNewUniqueId(10, 1, 0, 0));
                ids.push_back(touched);
                break;
            default:
                touched = ids[rng() % ids.size()];
                mgr->DeleteObject(static_cast<int>(touched), 1);
                break;
        }
        ExpectRowsAsTheMapAnswers(table, {touched, touched + 1, touched ? touched - 1 : 0});
        if (step % 250 == 0) ExpectRowsAsTheMapAnswers(table, probes);
    }
    ExpectRowsAsTheMapAnswers(table, probes);
    ExpectRowsAsTheMapAnswers(table, ids);
}

}  // namespace
