#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace tessmeta::tool {

namespace {
constexpr int kWidth = 30;
constexpr auto kQuietFor = std::chrono::seconds(1);
}  // namespace

CProgressBar::CProgressBar(std::string label, std::uint64_t total)
    : m_label(std::move(label)),
      m_total(std::max<std::uint64_t>(total, 1)),
      m_terminal(::isatty(STDERR_FILENO) == 1),
      m_start(std::chrono::steady_clock::now()) {}

CProgressBar::~CProgressBar() {
    Finish();
}

void CProgressBar::Update(std::uint64_t done) {
    if (!m_terminal || std::chrono::steady_clock::now() - m_start < kQuietFor) return;
    const int percent = static_cast<int>(std::min<std::uint64_t>(done * 100 / m_total, 100));
    if (percent == m_lastPercent) return;
    m_lastPercent = percent;
    const int filled = percent * kWidth / 100;
    std::fprintf(stderr, "\r%s [%.*s%*s] %3d%%", m_label.c_str(), filled,
                 "##############################", kWidth - filled, "", percent);
    std::fflush(stderr);
    m_drawn = true;
}

void CProgressBar::Finish() {
    if (!m_drawn) return;
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(m_label.size()) + kWidth + 8, "");
    std::fflush(stderr);
    m_drawn = false;
}

}  // namespace tessmeta::tool
