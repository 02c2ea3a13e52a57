// Writes summary.csv and the terminal table of a study.
#include "study_summary.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

namespace tamlo_host {

namespace {

std::string csv_field(const std::string& text) {
    if (text.find_first_of(",\"\n\r") == std::string::npos) return text;
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + "\"";
}

std::string figure(double value, int decimals = 6) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
    return buffer;
}

std::string rules_text(const CaseResult& r) {
    std::string text;
    for (const auto& [rule, count] : r.warnings_by_rule) {
        if (!text.empty()) text += ' ';
        text += rule + ":" + std::to_string(count);
    }
    return text;
}

std::string joined(const std::vector<std::string>& fields) {
    std::string line;
    for (const std::string& f : fields) {
        if (!line.empty()) line += ',';
        line += f;
    }
    line += '\n';
    return line;
}

std::string pad(std::string text, std::size_t width) {
    if (text.size() < width) text.append(width - text.size(), ' ');
    return text;
}

std::string table_row(const std::string& id, std::size_t id_width, const CaseResult& r) {
    return "  " + pad(id, id_width) + "  " + pad(figure(r.unmet, 1), 10) + pad(figure(r.fuel, 1), 10) +
           pad(figure(r.renewable_percent, 1), 8) + pad(figure(r.net_cost, 2), 10) + std::to_string(r.warnings) + "\n";
}

}  // namespace

std::string summary_csv(const Study& study, const std::vector<StudyCase>& cases, const std::vector<CaseResult>& results) {
    std::vector<std::string> header = {"id"};
    for (const Variation& v : study.variations) header.push_back(csv_field(v.name));
    for (const char* column : {"status", "steps_run", "served_kwh", "unmet_kwh", "fuel", "renewable_percent",
                               "battery_throughput_kwh", "grid_bought_kwh", "grid_sold_kwh", "net_cost", "warnings",
                               "warnings_by_rule", "errors", "message", "wall_seconds"}) {
        header.emplace_back(column);
    }
    std::string csv = joined(header);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const CaseResult& r = results[i];
        std::vector<std::string> row = {csv_field(cases[i].id)};
        for (std::size_t v = 0; v < study.variations.size(); ++v) row.push_back(csv_field(choice_label(study, cases[i], v)));
        row.insert(row.end(), {status_name(r.status), std::to_string(r.steps_run), figure(r.served), figure(r.unmet),
                               figure(r.fuel), figure(r.renewable_percent), figure(r.battery_throughput),
                               figure(r.grid_bought), figure(r.grid_sold), figure(r.net_cost),
                               std::to_string(r.warnings), csv_field(rules_text(r)), std::to_string(r.errors),
                               csv_field(r.message), figure(r.wall_seconds, 3)});
        csv += joined(row);
    }
    return csv;
}

std::string best_and_worst(const std::vector<StudyCase>& cases, const std::vector<CaseResult>& results,
                           std::size_t rows) {
    std::vector<std::size_t> completed;
    std::vector<std::size_t> failed;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        (results[i].status == CaseStatus::completed ? completed : failed).push_back(i);
    }
    std::stable_sort(completed.begin(), completed.end(), [&](std::size_t a, std::size_t b) {
        const CaseResult& x = results[a];
        const CaseResult& y = results[b];
        if (x.unmet != y.unmet) return x.unmet < y.unmet;
        if (x.fuel != y.fuel) return x.fuel < y.fuel;
        return x.net_cost < y.net_cost;
    });
    std::size_t id_width = 4;
    for (std::size_t i : completed) id_width = std::max(id_width, std::min<std::size_t>(cases[i].id.size(), 90));
    const std::string header = "  " + pad("case", id_width) + "  " + pad("unmet kWh", 10) + pad("fuel", 10) +
                               pad("RF %", 8) + pad("net cost", 10) + "warnings\n";
    std::string s = "Cases: " + std::to_string(cases.size()) + ", completed " + std::to_string(completed.size()) +
                    ", failed " + std::to_string(failed.size()) + "\n";
    if (!completed.empty()) {
        const std::size_t n = std::min(rows, completed.size());
        s += "\nBest (least unmet load, then fuel, then net cost)\n" + header;
        for (std::size_t k = 0; k < n; ++k) s += table_row(cases[completed[k]].id, id_width, results[completed[k]]);
        if (completed.size() > n) {
            const std::size_t m = std::min(rows, completed.size() - n);
            s += "\nWorst (worst first)\n" + header;
            for (std::size_t k = completed.size(); k-- > completed.size() - m;) {
                s += table_row(cases[completed[k]].id, id_width, results[completed[k]]);
            }
        }
    }
    if (!failed.empty()) {
        s += "\nFailed\n";
        for (std::size_t i : failed) {
            s += "  " + cases[i].id + ": " + status_name(results[i].status) +
                 (results[i].message.empty() ? "" : ": " + results[i].message) + "\n";
        }
    }
    return s;
}

}  // namespace tamlo_host
