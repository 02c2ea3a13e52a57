// Console output of a benchmark program followed by ratios between its own benchmarks, so that
// every ratio compares figures measured in the same run on the same machine load.
#ifndef TAMLO_BENCH_RATIO_REPORT_H
#define TAMLO_BENCH_RATIO_REPORT_H

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tamlo_bench {

// numerator / denominator, each a benchmark's name as Google Benchmark prints it, without
// the suffixes it adds ("BM_WholeStep/identity/1" matches "BM_WholeStep/identity/1/real_time"):
// its wall time per iteration. "name@counter" is one of its counters instead, in seconds.
struct Ratio {
    std::string label;
    std::string numerator;
    std::string denominator;
};

class RatioReporter : public benchmark::ConsoleReporter {
public:
    // Colours only on a terminal, so that a saved run reads as plain text.
    RatioReporter() : ConsoleReporter(isatty(STDOUT_FILENO) ? OO_ColorTabular : OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                failed_.push_back(run.benchmark_name() + ": " + run.error_message);
                continue;
            }
            if (run.run_type != Run::RT_Iteration || run.iterations == 0) continue;
            // Wall time: most of the work happens in the engine process, which this
            // process's CPU time does not see.
            seconds_[{run.benchmark_name(), ""}] = run.real_accumulated_time / static_cast<double>(run.iterations);
            for (const auto& [counter, value] : run.counters) seconds_[{run.benchmark_name(), counter}] = value;
        }
        ConsoleReporter::ReportRuns(runs);
    }

    // Prints each ratio, or which figure it lacks (a failed or filtered-out benchmark).
    // False when any benchmark failed.
    bool print_ratios(const std::vector<Ratio>& ratios) const {
        bool ok = failed_.empty();
        std::printf("\nRatios (wall time per iteration, same run):\n");
        for (const Ratio& ratio : ratios) {
            const double* top = find(ratio.numerator);
            const double* bottom = find(ratio.denominator);
            if (top == nullptr || bottom == nullptr || *bottom <= 0.0) {
                std::printf("  %-58s not measured (%s missing)\n", ratio.label.c_str(),
                            top == nullptr ? ratio.numerator.c_str() : ratio.denominator.c_str());
                continue;
            }
            std::printf("  %-58s %8.3f  (%s / %s)\n", ratio.label.c_str(), *top / *bottom,
                        format_seconds(*top).c_str(), format_seconds(*bottom).c_str());
        }
        for (const std::string& failure : failed_) {
            std::fprintf(stderr, "FAILED %s\n", failure.c_str());
        }
        return ok;
    }

private:
    const double* find(const std::string& figure) const {
        const auto at = figure.find('@');
        const std::string name = figure.substr(0, at);
        const std::string counter = at == std::string::npos ? "" : figure.substr(at + 1);
        for (const auto& [key, value] : seconds_) {
            if (key.second != counter) continue;
            if (key.first == name || key.first.rfind(name + "/", 0) == 0) return &value;
        }
        return nullptr;
    }

    static std::string format_seconds(double seconds) {
        char text[32];
        if (seconds >= 1.0) {
            std::snprintf(text, sizeof text, "%.3f s", seconds);
        } else if (seconds >= 1e-3) {
            std::snprintf(text, sizeof text, "%.3f ms", seconds * 1e3);
        } else {
            std::snprintf(text, sizeof text, "%.1f us", seconds * 1e6);
        }
        return text;
    }

    std::map<std::pair<std::string, std::string>, double> seconds_;  // (benchmark, counter or "")
    std::vector<std::string> failed_;
};

// The body of a benchmark program's main: runs what the command line selects, then prints
// the ratios. Exits non-zero when a benchmark failed, so a script running it notices.
inline int run_with_ratios(int argc, char** argv, const std::vector<Ratio>& ratios) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return reporter.print_ratios(ratios) ? 0 : 1;
}

}  // namespace tamlo_bench

#endif
