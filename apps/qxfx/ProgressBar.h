#pragma once
// A progress line on the terminal for long runs: drawn on stderr only when stderr is a
// terminal, and only once a run has lasted a moment, so that scripts and short runs
// stay quiet.
#include <chrono>
#include <string>

namespace qx::qxfx {

class ProgressBar {
public:
    ProgressBar(std::string label, long total);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void update(long done);

private:
    std::string label_;
    long total_;
    bool enabled_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point start_;
    std::chrono::steady_clock::time_point lastDraw_;
};

}  // namespace qx::qxfx
