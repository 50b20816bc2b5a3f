#include "apps/qxfx/ProgressBar.h"

#include <cstdio>
#include <unistd.h>

namespace qx::qxfx {

namespace {

constexpr auto kQuietStart = std::chrono::milliseconds(500);
constexpr auto kRedrawEvery = std::chrono::milliseconds(100);
constexpr int kBarWidth = 30;

}  // namespace

ProgressBar::ProgressBar(std::string label, long total)
    : label_(std::move(label)), total_(total), enabled_(isatty(STDERR_FILENO) == 1 && total > 1),
      start_(std::chrono::steady_clock::now()), lastDraw_(start_)
{}

ProgressBar::~ProgressBar()
{
    if (drawn_) std::fputc('\n', stderr);
}

void ProgressBar::update(long done)
{
    if (!enabled_) return;
    const auto now = std::chrono::steady_clock::now();
    const bool last = done >= total_;
    if (now - start_ < kQuietStart || (!last && now - lastDraw_ < kRedrawEvery)) return;
    lastDraw_ = now;
    drawn_ = true;
    const int filled = int(double(done) / double(total_) * kBarWidth);
    const double seconds = std::chrono::duration<double>(now - start_).count();
    std::fprintf(stderr, "\r%s [%-*.*s] %ld/%ld frames, %.1f fps", label_.c_str(), kBarWidth, filled,
                 "##############################", done, total_, seconds > 0 ? double(done) / seconds : 0.0);
    std::fflush(stderr);
}

}  // namespace qx::qxfx
