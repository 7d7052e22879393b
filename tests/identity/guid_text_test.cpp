// GUID texts: the stored 32-digit form, the forms accepted when parsing (checked
// against the runtime's own parser), and new GUIDs with their fallbacks.
#include "identity/guid_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "identity/guid_mgr.h"
#include "identity/unique_object_table.h"

using tessmeta::GuidFromText;
using tessmeta::GuidFromTextIgnoringDashes;
using tessmeta::GuidToText;

namespace {

constexpr GUID kSample{
    0x01234567, 0x89ab, 0xcdef, {0xfe, 0xdc, 0xba, 0x98, 0x76, 0x54, 0x32, 0x10}};
constexpr GUID kOther{0xdeadbeef, 0x1, 0x2, {3, 4, 5, 6, 7, 8, 9, 10}};

// What the stored text reads back as by the runtime's rule: dashes inserted at
// 20, 16, 12 and 8 into text without any, then the strict 36-character parse.
bool ReferenceParse(std::string text, GUID& guid) {
    if (text.empty()) return false;
    if (text.find('-') == std::string::npos) {
        for (size_t at : {20u, 16u, 12u, 8u})
            text.insert(std::min(at, text.size()), 1, '-');
    }
    return UuidFromStringA(reinterpret_cast<RPC_CSTR>(text.data()), &guid) == RPC_S_OK;
}

std::string Text(const GUID& guid) {
    CString out("stale");
    GuidToText(guid, out);
    return out.GetString();
}

RPC_STATUS FailingSource(UUID*) {
    return RPC_S_UUID_NO_ADDRESS;
}

// Installs a GUID source for one scope.
class ScopedGuidSource {
  public:
    explicit ScopedGuidSource(tessmeta::GuidSource source)
        : m_previous(tessmeta::SetGuidSource(source)) {}
    ~ScopedGuidSource() { tessmeta::SetGuidSource(m_previous); }

  private:
    tessmeta::GuidSource m_previous;
};

TEST(GuidText, LookupsIgnoreDashes) {
    // Parsing proper is checked against the runtime below; lookups drop dashes
    // wherever they stand, and still need exactly 32 digits.
    GUID g{}, target = kOther;
    EXPECT_TRUE(GuidFromTextIgnoringDashes("-01-23456789abcdeffedcba98765432-10--", g));
    EXPECT_EQ(g, kSample);
    EXPECT_FALSE(GuidFromTextIgnoringDashes("0123456789abcdeffedcba98765432100", target));
    EXPECT_FALSE(GuidFromTextIgnoringDashes("--", target));
    EXPECT_EQ(target, kOther);
}

// Random texts near the accepted forms, against the runtime's parser.
TEST(GuidText, ParseAgreesWithTheRuntimeOnRandomTexts) {
    std::mt19937 rng(2024);
    const std::string alphabet = "0123456789abcdefABCDEF-g ";
    int accepted = 0;
    for (int i = 0; i < 20000; ++i) {
        GUID base;
        UuidCreate(&base);
        std::string text = Text(base);
        if (i < 200) {  // the stored form is the runtime's text without its dashes
            RPC_CSTR runtime = nullptr;
            ASSERT_EQ(UuidToStringA(&base, &runtime), RPC_S_OK);
            CString expected(reinterpret_cast<const char*>(runtime));
            RpcStringFreeA(&runtime);
            expected.Remove('-');
            ASSERT_EQ(text, expected.GetString());
        }
        if (rng() % 2) {  // the dashed form
            for (size_t at : {20u, 16u, 12u, 8u})
                text.insert(at, 1, '-');
        }
        for (int edits = static_cast<int>(rng() % 3); edits > 0; --edits) {
            const size_t at = rng() % (text.size() + 1);
            switch (rng() % 3) {
                case 0:
                    text.insert(at, 1, alphabet[rng() % alphabet.size()]);
                    break;
                case 1:
                    if (at < text.size()) text.erase(at, 1);
                    break;
                default:
                    if (at < text.size()) text[at] = alphabet[rng() % alphabet.size()];
                    break;
            }
        }
        GUID expected = kOther;
        GUID actual = kOther;
        const bool ok = ReferenceParse(text, expected);
        ASSERT_EQ(GuidFromText(text, actual), ok) << text;
        ASSERT_EQ(actual, expected) << text;
        accepted += ok;
    }
    EXPECT_GT(accepted, 5000);  // both outcomes well represented
    EXPECT_LT(accepted, 15000);
    EXPECT_EQ(Text(GUID_NULL), "");  // nil is stored as no text, in either kind of field
    CZmfString field("previous text");
    GuidToText(GUID_NULL, field);
    EXPECT_STREQ(field, "");
}

TEST(GuidText, NewGuidsAndTheirFallbacks) {
    CString dashed, plain, other;
    EXPECT_TRUE(CGuidMgr::CreateNewGUID(dashed, false, false));
    EXPECT_TRUE(CGuidMgr::CreateNewGUID(plain, false, true));
    EXPECT_TRUE(CGuidMgr::CreateNewGUID(other, false, true));
    EXPECT_EQ(dashed.GetLength(), 36);
    EXPECT_EQ(dashed[8], '-');
    EXPECT_EQ(plain.GetLength(), 32);
    EXPECT_EQ(plain.Find('-'), -1);
    EXPECT_NE(plain, other);
    GUID g{};
    EXPECT_TRUE(GuidFromText(plain.View(), g));
    EXPECT_FALSE(tessmeta::IsNilGuid(g));
    EXPECT_TRUE(CGuidMgr::CreateNewGUID(&g));

    ScopedGuidSource failing(&FailingSource);
    g = kSample;
    EXPECT_FALSE(CGuidMgr::CreateNewGUID(&g));
    EXPECT_EQ(g, GUID_NULL);
    CString text("untouched?");
    EXPECT_FALSE(CGuidMgr::CreateNewGUID(text, true, false));
    EXPECT_EQ(text, "");
    EXPECT_FALSE(CGuidMgr::CreateNewGUID(text, false, true));
    EXPECT_EQ(text, "00000000000000000000000000000000");
    EXPECT_FALSE(CGuidMgr::CreateNewGUID(text, false, false));
    EXPECT_EQ(text, "00000000-0000-0000-0000-000000000000");
    EXPECT_FALSE(CGuidMgr::CreateNewGUID(text, true, true));
    EXPECT_EQ(text, "");
}

}  // namespace
