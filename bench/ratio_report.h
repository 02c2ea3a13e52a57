// Console output of a benchmark program followed by ratios between its own benchmarks, so that
// every ratio compares figures measured in the same run on the same machine load.
#ifndef TAMLO_BENCH_RATIO_REPORT_H
#define TAMLO_BENCH_RATIO_REPORT_H

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tamlo_bench {

// numerator / denominator, each a benchmark's name as Google Benchmark prints it, without
// the suffixes it adds ("BM_WholeStep/identity/1" matches "BM_WholeStep/identity/1/real_time"):
// its wall time per iteration. "name@counter" is one of its counters instead, in seconds. A
// benchmark run several times (--benchmark_repetitions) counts with its median.
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
            figures_[{run.benchmark_name(), ""}].push_back(run.real_accumulated_time /
                                                          static_cast<double>(run.iterations));
            for (const auto& [counter, value] : run.counters) figures_[{run.benchmark_name(), counter}].push_back(value);
        }
        ConsoleReporter::ReportRuns(runs);
    }

    // Prints each ratio, or which figure it lacks (a failed or filtered-out benchmark).
    // False when any benchmark failed.
    bool print_ratios(const std::vector<Ratio>& ratios) const {
        bool ok = failed_.empty();
        std::printf("\nRatios (wall time per iteration, same run):\n");
        for (const Ratio& ratio : ratios) {
            const std::optional<Figure> top = find(ratio.numerator);
            const std::optional<Figure> bottom = find(ratio.denominator);
            if (!top || !bottom || bottom->value <= 0.0) {
                std::printf("  %-58s not measured (%s missing)\n", ratio.label.c_str(),
                            !top ? ratio.numerator.c_str() : ratio.denominator.c_str());
                continue;
            }
            const std::size_t runs = std::min(top->runs, bottom->runs);
            const std::string medians = runs > 1 ? "medians of " + std::to_string(runs) + ": " : "";
            std::printf("  %-58s %8.3f  (%s%s / %s)\n", ratio.label.c_str(), top->value / bottom->value,
                        medians.c_str(), format_seconds(top->value).c_str(), format_seconds(bottom->value).c_str());
        }
        for (const std::string& failure : failed_) {
            std::fprintf(stderr, "FAILED %s\n", failure.c_str());
        }
        return ok;
    }

private:
    // A benchmark's figure over its repetitions: the median, so that one run slowed by a busy
    // machine does not decide a ratio.
    struct Figure {
        double value = 0.0;
        std::size_t runs = 0;
    };

    std::optional<Figure> find(const std::string& figure) const {
        const auto at = figure.find('@');
        const std::string name = figure.substr(0, at);
        const std::string counter = at == std::string::npos ? "" : figure.substr(at + 1);
        for (const auto& [key, values] : figures_) {
            if (key.second != counter) continue;
            if (key.first == name || key.first.rfind(name + "/", 0) == 0) return Figure{median(values), values.size()};
        }
        return std::nullopt;
    }

    static double median(std::vector<double> values) {
        std::sort(values.begin(), values.end());
        const std::size_t n = values.size();
        return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2.0;
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

    // (benchmark, counter or "") to its figure in each repetition
    std::map<std::pair<std::string, std::string>, std::vector<double>> figures_;
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
