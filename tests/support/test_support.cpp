#include "support/test_support.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "platform/hooks.h"

namespace tessmeta::test {

TempDir::TempDir() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "tessmeta-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    m_path = pattern;
}

TempDir::~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(m_path, ec);
}

namespace {

std::vector<std::string> g_traces;
std::vector<std::string> g_boxes;

void CaptureTrace(const char* text) {
    g_traces.emplace_back(text);
}
int CaptureBox(const char* text, const char*, unsigned int) {
    g_boxes.emplace_back(text);
    return 1;
}

}  // namespace

CapturedOutput::CapturedOutput() {
    Clear();
    SetTraceHook(&CaptureTrace);
    SetMessageBoxHook(&CaptureBox);
}

CapturedOutput::~CapturedOutput() {
    SetTraceHook(nullptr);
    SetMessageBoxHook(nullptr);
}

const std::vector<std::string>& CapturedOutput::Traces() const {
    return g_traces;
}
const std::vector<std::string>& CapturedOutput::MessageBoxes() const {
    return g_boxes;
}

void CapturedOutput::Clear() {
    g_traces.clear();
    g_boxes.clear();
}

}  // namespace tessmeta::test
