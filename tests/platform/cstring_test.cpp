#include "platform/cstring.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

TEST(CStringTest, ConstructionCopiesAndSelfAliasing) {
    CString empty;
    EXPECT_STREQ(empty, "");
    EXPECT_TRUE(CString(static_cast<const char*>(nullptr)).IsEmpty());
    EXPECT_TRUE(CString("abc", 0).IsEmpty());
    EXPECT_TRUE(CString('x', 0).IsEmpty());
    EXPECT_EQ(CString('x', 3), "xxx");

    CString a("hello");
    CString b(a);
    b.SetAt(0, 'J');
    EXPECT_EQ(a, "hello");
    CString c(std::move(a));
    EXPECT_EQ(c, "hello");
    EXPECT_TRUE(a.IsEmpty());  // NOLINT(bugprone-use-after-move)

    // Assigning or appending from a pointer into the string's own bytes.
    c = c.GetString() + 2;
    EXPECT_EQ(c, "llo");
    c += c.GetString();
    EXPECT_EQ(c, "llollo");
    c.Empty();
    EXPECT_STREQ(c, "");

    // Embedded NULs are counted bytes.
    CString nul("a\0b", 3);
    EXPECT_EQ(nul.GetLength(), 3);
    EXPECT_NE(nul, CString("a"));
    EXPECT_EQ(nul.Find('b'), 2);

    EXPECT_EQ("cd" + CString("ab") + 'e', "cdabe");
    EXPECT_EQ('c' + CString() + CString(), "c");
    std::string expected;
    CString grown;
    for (int i = 0; i < 1000; ++i) {
        grown += static_cast<char>('a' + i % 26);
        expected += static_cast<char>('a' + i % 26);
    }
    EXPECT_EQ(grown.View(), expected);
}

TEST(CStringTest, ComparisonAndCaseRules) {
    CString a("abc");
    EXPECT_EQ(a.Compare("abd"), -1);
    EXPECT_EQ(a.Compare("ab"), 1);
    EXPECT_EQ(CString().Compare(nullptr), 0);
    EXPECT_LT(CString("z"), CString("\xE9"));  // bytes compare unsigned
    EXPECT_TRUE(a < "abd" && a <= "abc" && a > "ab" && a >= "abc" && a != "ABC");
    EXPECT_TRUE("abc" == a && "abd" > a);

    EXPECT_EQ(a.CompareNoCase("ABC"), 0);
    EXPECT_EQ(CString("abcd").CompareNoCase("ABC"), 1);
    // Folding is to upper case: '_' (0x5F) orders after 'A'.
    EXPECT_EQ(CString("_").CompareNoCase("a"), 1);
    EXPECT_NE(CString("\xE9").CompareNoCase("\xC9"), 0);

    CString s("azAZ09@[`{\xE9\xC9\xFF");
    EXPECT_EQ(s.MakeUpper(), "AZAZ09@[`{\xE9\xC9\xFF");
    EXPECT_EQ(s.MakeLower(), "azaz09@[`{\xE9\xC9\xFF");
}

TEST(CStringTest, EditsAtBoundaries) {
    CString s("banana");
    EXPECT_EQ(s.Remove('a'), 3);
    EXPECT_EQ(s.Remove('z'), 0);
    EXPECT_EQ(s.Insert(0, 'X'), 4);
    EXPECT_EQ(s.Insert(4, 'Y'), 5);
    EXPECT_EQ(s.Insert(-5, "<"), 6);
    EXPECT_EQ(s.Insert(100, ">"), 7);
    EXPECT_EQ(s, "<XbnnY>");
    EXPECT_EQ(s.Insert(3, ""), 7);
    EXPECT_EQ(s.Insert(1, s.GetString()), 14);
    EXPECT_EQ(s, "<<XbnnY>XbnnY>");
    EXPECT_EQ(s.Delete(1, 100), 1);
    EXPECT_EQ(s.Delete(1), 1);
    EXPECT_EQ(s.Delete(-1, 1), 0);

    CString r("aaa");
    EXPECT_EQ(r.Replace("a", "aa"), 3);  // replaced text is not rescanned
    EXPECT_EQ(r.Replace("aa", "b"), 3);
    EXPECT_EQ(r, "bbb");
    EXPECT_EQ(r.Replace("", "x"), 0);
    EXPECT_EQ(r.Replace("b", nullptr), 3);
    EXPECT_TRUE(r.IsEmpty());
    CString d("a-b-c");
    EXPECT_EQ(d.Replace('-', '+'), 2);
    EXPECT_EQ(d, "a+b+c");

    CString t(" \t\r\nab c\v\f ");
    EXPECT_EQ(t.Trim(), "ab c");
    CString blank("   ");
    EXPECT_TRUE(blank.TrimLeft().IsEmpty());
    CString x("xxaxx");
    EXPECT_EQ(x.TrimLeft('x'), "axx");
    EXPECT_EQ(x.TrimRight("xy"), "a");
}

TEST(CStringTest, SearchAndSubstringsClamp) {
    CString s("abcabc");
    EXPECT_EQ(s.Find('a', 1), 3);
    EXPECT_EQ(s.Find('c', 5), 5);
    EXPECT_EQ(s.Find('c', 6), -1);
    EXPECT_EQ(s.Find('c', -1), -1);
    EXPECT_EQ(s.Find("bc", 2), 4);
    EXPECT_EQ(s.Find("", 6), 6);
    EXPECT_EQ(s.Find("", 7), -1);
    EXPECT_EQ(s.Find("abcabcd"), -1);
    EXPECT_EQ(s.ReverseFind('a'), 3);
    EXPECT_EQ(s.ReverseFind('z'), -1);

    CString t("abcdef");
    EXPECT_EQ(t.Left(-1), "");
    EXPECT_EQ(t.Left(99), "abcdef");
    EXPECT_EQ(t.Mid(-3, 2), "ab");
    EXPECT_EQ(t.Mid(4, 99), "ef");
    EXPECT_EQ(t.Mid(6), "");
    EXPECT_EQ(t.Mid(9, 2), "");
    EXPECT_EQ(t.Mid(1, -2), "");
    EXPECT_EQ(t.Right(2), "ef");
    EXPECT_EQ(t.Right(99), "abcdef");
}

}  // namespace
