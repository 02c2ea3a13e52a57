// Groups case results into plot lines and draws them with gnuplot.
#include "tradeoff_plot.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>

#include "input_error.h"

extern char** environ;

namespace tamlo_host {

namespace {

constexpr std::size_t max_lines = 12;

std::optional<std::size_t> numeric_variation(const Study& study) {
    for (std::size_t v = 0; v < study.variations.size(); ++v) {
        const Variation& variation = study.variations[v];
        if (variation.kind == VariationKind::strategy) continue;
        bool numbers = true;
        for (const Json& value : variation.values) numbers = numbers && value.is_number();
        if (numbers) return v;
    }
    return std::nullopt;
}

std::string series_key(const Study& study, const StudyCase& c, std::optional<std::size_t> x, bool strategies_only) {
    std::string key;
    for (std::size_t v = 0; v < study.variations.size(); ++v) {
        if (x && v == *x) continue;
        if (strategies_only && study.variations[v].kind != VariationKind::strategy) continue;
        const std::string label = choice_label(study, c, v);
        if (label.empty()) continue;
        if (!key.empty()) key += ", ";
        key += study.variations[v].name + "=" + label;
    }
    return key.empty() ? "all cases" : key;
}

std::string quoted(const std::string& text) {
    std::string q = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') q += '\\';
        q += c;
    }
    return q + "\"";
}

}  // namespace

TradeoffData tradeoff_data(const Study& study, const std::vector<StudyCase>& cases,
                           const std::vector<CaseResult>& results) {
    TradeoffData d;
    const std::optional<std::size_t> x = numeric_variation(study);
    d.x_label = x ? study.variations[*x].name : "case";
    struct Sum {
        double unmet = 0.0, fuel = 0.0;
        int n = 0;
    };
    auto group = [&](bool strategies_only) {
        std::map<std::string, std::map<double, Sum>> lines;
        for (std::size_t i = 0; i < cases.size(); ++i) {
            if (results[i].status != CaseStatus::completed) continue;
            const double at = x ? (cases[i].choice[*x] ? study.variations[*x].values[*cases[i].choice[*x]].get<double>()
                                                       : 0.0)
                                : static_cast<double>(i + 1);
            Sum& s = lines[series_key(study, cases[i], x, strategies_only)][at];
            s.unmet += results[i].unmet;
            s.fuel += results[i].fuel;
            ++s.n;
        }
        return lines;
    };
    auto lines = group(false);
    if (lines.size() > max_lines) lines = group(true);
    for (const auto& [name, points] : lines) {
        d.series.push_back(name);
        for (const auto& [at, s] : points) {
            char row[128];
            std::snprintf(row, sizeof row, "%.10g %.10g %.10g\n", at, s.unmet / s.n, s.fuel / s.n);
            d.data += row;
        }
        d.data += "\n\n";
    }
    return d;
}

std::string tradeoff_script(const TradeoffData& data, const std::string& data_file, const std::string& png_file) {
    std::string s;
    s += "set terminal pngcairo size 1200,900 noenhanced\n";
    s += "set output " + quoted(png_file) + "\n";
    s += "set multiplot layout 2,1\n";
    s += "set key outside right\nset grid\n";
    s += "set xlabel " + quoted(data.x_label) + "\n";
    for (const auto& [column, title] : {std::pair{2, "unmet load (kWh)"}, std::pair{3, "fuel"}}) {
        s += "set ylabel " + quoted(title) + "\n";
        s += "plot ";
        for (std::size_t k = 0; k < data.series.size(); ++k) {
            if (k > 0) s += ", \\\n     ";
            s += quoted(data_file) + " index " + std::to_string(k) + " using 1:" + std::to_string(column) +
                 " with linespoints title " + quoted(data.series[k]);
        }
        if (data.series.empty()) s += "NaN title \"no completed case\"";
        s += "\n";
    }
    s += "unset multiplot\n";
    return s;
}

void write_tradeoff_png(const TradeoffData& data, const std::string& folder, const std::string& png_file) {
    const std::string data_file = folder + "/tradeoff.dat";
    const std::string script_file = folder + "/tradeoff.gp";
    std::ofstream(data_file) << data.data;
    std::ofstream(script_file) << tradeoff_script(data, data_file, png_file);
    pid_t child = 0;
    char program[] = "gnuplot";
    std::string script_arg = script_file;
    char* argv[] = {program, script_arg.data(), nullptr};
    // gnuplot's complaints (an empty range when every case has the same figure) go to a log
    // beside the script, not between the study's lines.
    const std::string log_file = folder + "/gnuplot.log";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 2, log_file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int spawned = posix_spawnp(&child, program, &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned == ENOENT) throw InputError("gnuplot was not found; install it (Debian package gnuplot-nox)");
    if (spawned != 0) throw InputError(std::string("cannot start gnuplot: ") + std::strerror(spawned));
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw InputError("gnuplot failed while drawing " + png_file + " (see " + log_file + ")");
}

}  // namespace tamlo_host
