// A progress bar on the terminal; silent when the output is not a terminal.
#ifndef TAMLO_HOST_PROGRESS_H
#define TAMLO_HOST_PROGRESS_H

#include <cstddef>
#include <cstdio>

namespace tamlo_host {

class ProgressBar {
public:
    // Draws on out only when enabled; the caller decides with stream_is_terminal.
    ProgressBar(std::FILE* out, bool enabled) : out_(out), enabled_(enabled) {}
    void update(std::size_t done, std::size_t total);
    // Clears the bar so the summary starts on a clean line.
    void finish();

private:
    std::FILE* out_;
    bool enabled_;
    int last_percent_ = -1;
};

bool stream_is_terminal(std::FILE* stream);

}  // namespace tamlo_host

#endif
