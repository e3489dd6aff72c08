// A one-line progress bar on standard error, drawn only when standard error
// is a terminal and the work is large enough to be worth showing.
//
//   ProgressBar bar("packing", totalBytes);
//   bar.Advance(chunk);   // redraws at most once per percent
//   bar.Finish();
#pragma once

#include <cstdint>
#include <string>

class ProgressBar
{
public:
    /// `total` 0 means the total is unknown: bytes are shown instead of a bar.
    ProgressBar(std::string label, std::uint64_t total);
    ~ProgressBar();

    void Advance(std::uint64_t bytes);
    /// Clears the line; called by the destructor too.
    void Finish();

private:
    void draw();

    std::string m_label;
    std::uint64_t m_total;
    std::uint64_t m_done = 0;
    int m_lastStep = -1;
    bool m_active;
};
