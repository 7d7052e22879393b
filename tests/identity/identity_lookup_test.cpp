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
#include "platform/cmap.h"

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
        ASSERT_EQ(table.GetRow(id), table.GetIdMap().Find(id)) << id;
    }
}

TEST(IdentityLookup, RowsByIdFollowTheIdMapThroughAddsAndDeletes) {
    for (const bool lookAtLoad : {true, false}) {
        SCOPED_TRACE(lookAtLoad);
        // Stored: ids 0..40 with two duplicates, after one id far beyond the row
        // count (so the load files the id map while it still reads).
        std::vector<CUniqueObjectBase> stored;
        stored.push_back(StoredObject(100000, 12, 1, GuidTextFor(502).c_str()));
        for (ULONG id = 0; id <= 40; ++id)
            stored.push_back(StoredObject(id, 10, 1, GuidTextFor(id + 1).c_str()));
        stored.push_back(StoredObject(7, 11, 1, GuidTextFor(500).c_str()));
        stored.push_back(StoredObject(30, 11, 1, GuidTextFor(501).c_str()));
        auto file = CZmfFile::OpenMemory();
        StoreDefinitions(*file, StandardDefinitions());
        StoreObjects(*file, stored);
        auto mgr = LoadGuids(*file);
        CEnhUniqueObjectTable& table = *mgr->GetUniqueObjectTable();
        EXPECT_EQ(mgr->GetObjectTypeId(7u), 10);              // the first of a duplicate id answers
        EXPECT_EQ(table.GetIdMap().GetHashTableSize(), 75u);  // 44 stored rows x 1.7, odd

        std::vector<ULONG> probes;
        for (ULONG id = 0; id < 9000; ++id)
            probes.push_back(id);
        for (ULONG id : {99999u, 100000u, 100001u, 100500u, 0xFFFFFFFFu})
            probes.push_back(id);
        // The map is filed on first use: before it, or only when the adds need it.
        if (lookAtLoad) ExpectRowsAsTheMapAnswers(table, probes);

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
}

// The GUID index against a plain map from GUID to id driven the way the table
// used it: a row is filed with `map[guid]` kept when non-zero, deletion removes the
// entry when it names the deleted id, a GUID change removes the old entry when it
// names the row's id and sets the new one.
TEST(IdentityLookup, GuidIndexAnswersAsAMapFromGuidToId) {
    for (const bool lookAtLoad : {true, false}) {
        SCOPED_TRACE(lookAtLoad);
        using Model = CMap<GUID, const GUID&, ULONG, ULONG, SGuidHashTraits>;
        std::vector<GUID> pool(24);
        for (size_t i = 1; i < pool.size(); ++i)  // pool[0] stays nil
            ASSERT_TRUE(tessmeta::GuidFromText(GuidTextFor(static_cast<unsigned>(i)), pool[i]));
        auto textOf = [&pool](size_t i) {
            CString text;
            tessmeta::GuidToText(pool[i], text);
            return std::string(text.GetString());
        };

        // Stored: shared GUIDs, nil GUIDs, and id 0 ahead of a row with its GUID.
        std::vector<CUniqueObjectBase> stored;
        const size_t guidOf[] = {3, 0, 4, 4, 5, 0, 6, 7, 8, 3};
        for (ULONG id = 0; id < 10; ++id)
            stored.push_back(StoredObject(id, 10, 1, textOf(guidOf[id]).c_str()));
        auto file = CZmfFile::OpenMemory();
        StoreDefinitions(*file, StandardDefinitions());
        StoreObjects(*file, stored);
        auto mgr = LoadGuids(*file, 530, 1, 3);  // three buckets: the index must grow
        CEnhUniqueObjectTable& table = *mgr->GetUniqueObjectTable();

        Model model(10);
        model.InitHashTable(3, TRUE);
        auto modelId = [&model](const GUID& guid) {
            ULONG id = 0;
            model.Lookup(guid, id);
            return id;
        };
        auto file_ = [&model](const GUID& guid, ULONG id) {
            ULONG& filed = model[guid];
            if (!filed) filed = id;
        };
        for (ULONG id = 0; id < 10; ++id)
            file_(pool[guidOf[id]], id);

        auto expectSame = [&] {
            const CEnhUniqueObjectTable::GuidMap& index = *table.GetGuidMap();
            ASSERT_EQ(index.GetCount(), model.GetCount());
            ASSERT_EQ(index.GetHashTableSize(), model.GetHashTableSize());
            for (const GUID& guid : pool)
                ASSERT_EQ(table.GetIdByGuid(guid), modelId(guid));
        };
        // The index is filed on first use: looked at after the load or first asked
        // by an edit, it must be the same.
        if (lookAtLoad) expectSame();

        std::mt19937 rng(3);
        std::vector<ULONG> ids = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
        for (int step = 0; step < 4000; ++step) {
            SCOPED_TRACE(step);
            const GUID& guid = pool[rng() % pool.size()];
            const ULONG id = ids[rng() % ids.size()];
            switch (rng() % 3) {
                case 0: {  // a new row, its id often shared, sometimes 0
                    auto row = std::make_unique<CKelUniqueObject>();
                    row->Unique_Object_ID = rng() % 4 ? static_cast<ULONG>(rng() % 60) : id;
                    row->ObjectGuid = guid;
                    file_(guid, row->Unique_Object_ID);
                    ids.push_back(table.Add(std::move(row)));
                    break;
                }
                case 1:
                    if (const CKelUniqueObject* row = table.GetRow(id)) {
                        if (modelId(row->ObjectGuid) == id) model.RemoveKey(row->ObjectGuid);
                    }
                    table.Delete(id);
                    break;
                default:
                    if (CKelUniqueObject* row = table.GetRow(id)) {
                        if (modelId(row->ObjectGuid) == id) model.RemoveKey(row->ObjectGuid);
                        model.SetAt(guid, id);
                        table.SetObjectGuid(*row, guid);
                    }
                    break;
            }
            expectSame();
        }
        EXPECT_GT(table.GetGuidMap()->GetHashTableSize(), 3u);
    }
}

}  // namespace
