#include "progressbar.h"

#include <cstdio>
#include <unistd.h>

namespace {

constexpr std::uint64_t c_minimumBytes = 8u << 20;  // smaller work finishes too fast to watch
constexpr int c_width = 30;

}  // namespace

ProgressBar::ProgressBar(std::string label, std::uint64_t total)
    : m_label(std::move(label)), m_total(total), m_active(isatty(STDERR_FILENO) && (total == 0 || total >= c_minimumBytes))
{
}

ProgressBar::~ProgressBar() { Finish(); }

void ProgressBar::Advance(std::uint64_t bytes)
{
    m_done += bytes;
    if (m_active)
        draw();
}

void ProgressBar::draw()
{
    // Known total: one step per percent; unknown: one step per 4 MiB.
    const int step = m_total ? static_cast<int>(m_done * 100 / m_total) : static_cast<int>(m_done >> 22);
    if (step == m_lastStep)
        return;
    m_lastStep = step;
    if (m_total) {
        const int filled = step * c_width / 100;
        std::fprintf(stderr, "\r%s %3d%% [%.*s%*s]", m_label.c_str(), step, filled,
                     "##############################", c_width - filled, "");
    } else {
        std::fprintf(stderr, "\r%s %llu MiB", m_label.c_str(), static_cast<unsigned long long>(m_done >> 20));
    }
    std::fflush(stderr);
}

void ProgressBar::Finish()
{
    if (m_active && m_lastStep >= 0)
        std::fprintf(stderr, "\r%*s\r", static_cast<int>(m_label.size()) + c_width + 10, "");
    m_active = false;
}
