// A progress bar for long loads and saves, drawn on standard error.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace tessmeta::tool {

// Draws "label [#####     ]  45%" on standard error, but only when standard error
// is a terminal and the work has already taken a second: short work and piped
// output stay quiet.
class CProgressBar {
  public:
    CProgressBar(std::string label, std::uint64_t total);
    ~CProgressBar();
    CProgressBar(const CProgressBar&) = delete;
    CProgressBar& operator=(const CProgressBar&) = delete;

    void Update(std::uint64_t done);
    // Clears the bar's line if one was drawn.
    void Finish();

  private:
    std::string m_label;
    std::uint64_t m_total;
    bool m_terminal;
    bool m_drawn = false;
    int m_lastPercent = -1;
    std::chrono::steady_clock::time_point m_start;
};

}  // namespace tessmeta::tool
