#include "platform/guid.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

namespace {

std::string ToText(const GUID& g) {
    RPC_CSTR text = nullptr;
    EXPECT_EQ(UuidToStringA(&g, &text), RPC_S_OK);
    std::string out(reinterpret_cast<char*>(text));
    EXPECT_EQ(RpcStringFreeA(&text), RPC_S_OK);
    EXPECT_EQ(text, nullptr);
    return out;
}

RPC_STATUS Parse(const char* text, GUID* g) {
    return UuidFromStringA(reinterpret_cast<RPC_CSTR>(const_cast<char*>(text)), g);
}

TEST(GuidTest, MalformedTextLeavesTheTargetUntouched) {
    const GUID sentinel{0xAAAAAAAA, 0xBBBB, 0xCCCC, {1, 2, 3, 4, 5, 6, 7, 8}};
    const char* bad[] = {
        "",
        "01234567-89ab-cdef-fedc-ba987654321",    // 35
        "01234567-89ab-cdef-fedc-ba98765432100",  // 37
        "0123456-789ab-cdef-fedc-ba9876543210",   // dash one early
        "01234567-89ab-cdef-fedcba-9876543210",   // dash late
        "0123456789abcdeffedcba9876543210",       // no dashes
        "01234567-89ab-cdef-fedc-ba987654321g",   // non-hex last digit
        "0x234567-89ab-cdef-fedc-ba9876543210",
        "{1234567-89ab-cdef-fedc-ba987654321}",
        " 1234567-89ab-cdef-fedc-ba9876543210",
        "01234567+89ab-cdef-fedc-ba9876543210",
    };
    for (const char* text : bad) {
        GUID g = sentinel;
        EXPECT_EQ(Parse(text, &g), RPC_S_INVALID_STRING_UUID) << text;
        EXPECT_EQ(g, sentinel) << text;
    }
    // An embedded NUL ends the text early.
    char cut[] = "01234567-89ab-cdef-fedc-ba9876543210";
    cut[20] = '\0';
    GUID g = sentinel;
    EXPECT_EQ(Parse(cut, &g), RPC_S_INVALID_STRING_UUID);
    EXPECT_EQ(g, sentinel);
}

TEST(GuidTest, CreatedGuidsAreDistinctVersion4AndRoundTrip) {
    std::set<std::string> texts;
    for (int i = 0; i < 2000; ++i) {
        GUID g{};
        ASSERT_EQ(UuidCreate(&g), RPC_S_OK);
        const std::string text = ToText(g);
        ASSERT_EQ(text.size(), 36u);
        EXPECT_EQ(text[14], '4') << text;
        EXPECT_NE(std::string("89ab").find(text[19]), std::string::npos) << text;
        GUID back{};
        ASSERT_EQ(Parse(text.c_str(), &back), RPC_S_OK);
        EXPECT_EQ(back, g);
        texts.insert(text);
    }
    EXPECT_EQ(texts.size(), 2000u);
}

}  // namespace
