// Draws a study's progress: one redrawn line on a terminal, a line every ten seconds elsewhere.
#include "study_progress.h"

#include "progress.h"

namespace tamlo_host {

StudyProgress::StudyProgress(std::FILE* out, bool enabled, std::size_t skipped, std::size_t total)
    : out_(out), enabled_(enabled), terminal_(stream_is_terminal(out)), skipped_(skipped), total_(total) {}

std::string StudyProgress::line(std::size_t done, std::size_t total, std::size_t failed, double seconds_left) {
    std::string s = "study: " + std::to_string(done) + " of " + std::to_string(total) + " cases done, " +
                    std::to_string(failed) + " failed";
    if (seconds_left >= 0.0) {
        const long left = static_cast<long>(seconds_left + 0.5);
        char text[64];
        std::snprintf(text, sizeof text, ", about %ld:%02ld:%02ld left", left / 3600, left / 60 % 60, left % 60);
        s += text;
    }
    return s;
}

void StudyProgress::case_done(bool failed) {
    ++done_;
    if (failed) ++failed_;
    if (!enabled_) return;
    const auto now = std::chrono::steady_clock::now();
    const double elapsed = std::chrono::duration<double>(now - start_).count();
    const std::size_t done_all = skipped_ + done_;
    const double left = elapsed / static_cast<double>(done_) * static_cast<double>(total_ - done_all);
    if (terminal_) {
        std::fprintf(out_, "\r%s\033[K", line(done_all, total_, failed_, left).c_str());
    } else if (now - last_line_ >= std::chrono::seconds(10) || done_all == total_) {
        std::fprintf(out_, "%s\n", line(done_all, total_, failed_, left).c_str());
        last_line_ = now;
    }
    std::fflush(out_);
}

void StudyProgress::finish() {
    if (enabled_ && terminal_) std::fprintf(out_, "\r\033[K");
}

}  // namespace tamlo_host
