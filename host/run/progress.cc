// Redraws the bar only when the percentage changes, so a year costs about 100 writes.
#include "progress.h"

#include <unistd.h>

namespace tamlo_host {

bool stream_is_terminal(std::FILE* stream) { return isatty(fileno(stream)) == 1; }

void ProgressBar::update(std::size_t done, std::size_t total) {
    if (!enabled_ || total == 0) return;
    const int percent = static_cast<int>(done * 100 / total);
    if (percent == last_percent_) return;
    last_percent_ = percent;
    constexpr int width = 40;
    const int filled = percent * width / 100;
    std::fprintf(out_, "\r[%.*s%*s] %3d%%  step %zu of %zu", filled, "########################################",
                 width - filled, "", percent, done, total);
    std::fflush(out_);
}

void ProgressBar::finish() {
    if (!enabled_ || last_percent_ < 0) return;
    std::fprintf(out_, "\r\033[K");
    std::fflush(out_);
}

}  // namespace tamlo_host
