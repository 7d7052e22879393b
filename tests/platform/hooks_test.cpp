#include "platform/hooks.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> g_boxes;
std::vector<std::string> g_traces;

int RecordBox(const char* text, const char* caption, unsigned int flags) {
    g_boxes.push_back(std::string(text) + "|" + caption + "|" + std::to_string(flags));
    return 7;
}
void RecordTrace(const char* text) {
    g_traces.emplace_back(text);
}

TEST(HooksTest, InstalledHooksReceiveExactTextsAndNullRestoresDefaults) {
    g_boxes.clear();
    g_traces.clear();
    const tessmeta::MessageBoxHook oldBox = tessmeta::SetMessageBoxHook(&RecordBox);
    const tessmeta::TraceHook oldTrace = tessmeta::SetTraceHook(&RecordTrace);

    EXPECT_EQ(AfxMessageBox("Macro File: x.bas not found"), 7);
    EXPECT_EQ(tessmeta::ShowMessageBox(nullptr, nullptr, 3), 7);
    tessmeta::Trace("Flush to zmflib Failure at line: 12\n");
    tessmeta::Trace(nullptr);
    EXPECT_EQ(g_boxes, (std::vector<std::string>{"Macro File: x.bas not found||0", "||3"}));
    EXPECT_EQ(g_traces, (std::vector<std::string>{"Flush to zmflib Failure at line: 12\n", ""}));

    // Installing returns the hook it replaces; null puts the default back, which
    // writes message boxes to standard error and drops traces.
    EXPECT_EQ(tessmeta::SetMessageBoxHook(nullptr), &RecordBox);
    EXPECT_EQ(tessmeta::SetTraceHook(nullptr), &RecordTrace);
    testing::internal::CaptureStderr();
    AfxMessageBox("shown");
    tessmeta::Trace("dropped");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "shown\n");
    EXPECT_EQ(g_boxes.size(), 2u);
    EXPECT_EQ(g_traces.size(), 2u);

    tessmeta::SetMessageBoxHook(oldBox);
    tessmeta::SetTraceHook(oldTrace);
}

}  // namespace
