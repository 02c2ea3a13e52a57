// Progress of a study on standard error: cases done of all, failed, time left.
#ifndef TAMLO_HOST_STUDY_PROGRESS_H
#define TAMLO_HOST_STUDY_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>

namespace tamlo_host {

class StudyProgress {
public:
    // skipped: cases already done by an earlier run; total: all cases this run covers.
    StudyProgress(std::FILE* out, bool enabled, std::size_t skipped, std::size_t total);
    void case_done(bool failed);
    void finish();

    static std::string line(std::size_t done, std::size_t total, std::size_t failed, double seconds_left);

private:
    std::FILE* out_;
    bool enabled_;
    bool terminal_;
    std::size_t skipped_;
    std::size_t total_;
    std::size_t done_ = 0;
    std::size_t failed_ = 0;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point last_line_ = start_;
};

}  // namespace tamlo_host

#endif
