#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "identity/unique_object_table.h"
#include "zmflib/rows.h"

namespace {

template <class Field>
constexpr bool kIsText = std::is_same_v<std::decay_t<Field>, CZmfString>;

// Each column a row's VisitColumns reports: its index and value (texts as "text").
template <class Row>
std::vector<std::string> Columns(const Row& row) {
    std::vector<std::string> seen;
    row.VisitColumns([&](int index, const auto& field) {
        using Field = std::decay_t<decltype(field)>;
        std::string value = "text";
        if constexpr (std::is_same_v<Field, CZmfDateTime>)
            value = std::to_string(field.GetValue().m_dt);
        else if constexpr (!kIsText<Field>)
            value = std::to_string(static_cast<long long>(field));
        seen.push_back(std::to_string(index) + ":" + value);
    });
    return seen;
}

// A row without the text columns keeps every other column through a round trip
// (record -> row -> record) and numbers its columns as the stored row does.
TEST(RowSelection, WithoutTextsKeepsTheOtherColumnsAndTheirIndexes) {
    CUniqueObjectBase stored;
    stored.Unique_Object_ID = 7;
    stored.Object_Type_ID = -3;
    stored.Model_ID = 11;
    stored.Object_Domain_ID = 12;
    stored.Plex_ID_1 = 13;
    stored.Plex_ID_2 = -14;
    stored.Modification_Date = COleDateTime(2024, 5, 6, 7, 8, 9);
    stored.Creation_Time = 15;
    stored.Repository_Status = 16;
    stored.Reserved = 17;
    stored.Object_GUID = "0123456789abcdef0123456789abcdef";
    stored.Version_GUID = "fedcba9876543210fedcba9876543210";

    CUniqueObjectRow row;
    row.AssignColumns(stored);
    CUniqueObjectBase back;
    row.StoreColumns(back);
    std::vector<std::string> kept = Columns(stored);
    std::erase(kept, "10:text");
    std::erase(kept, "11:text");
    EXPECT_EQ(Columns(row), kept);
    EXPECT_EQ(Columns(back), Columns(stored));
    EXPECT_TRUE(back.Object_GUID.IsEmpty());
    EXPECT_EQ(sizeof(CUniqueObjectRow), sizeof(CUniqueObjectBase) - 2 * sizeof(CZmfString));
}

}  // namespace
