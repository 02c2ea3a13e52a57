// Reads CSV time series; each file is read once however many columns are taken from it.
#include "series.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <fstream>

#include "input_error.h"

namespace tamlo_host {

const ValueRule any_number{"a number", [](double) { return true; }};
const ValueRule non_negative{"a number of 0 or more", [](double v) { return v >= 0; }};
const ValueRule schedule_code{"-1 (forced off), 0 (dispatch decides) or 1 (forced on)",
                              [](double v) { return v == -1 || v == 0 || v == 1; }};
const ValueRule zero_or_one{"0 or 1", [](double v) { return v == 0 || v == 1; }};
const ValueRule whole_non_negative{"a whole number of 0 or more",
                                   [](double v) { return v >= 0 && std::floor(v) == v; }};

ValueRule index_into(std::size_t count, const std::string& list) {
    const std::string needs =
        count == 0 ? "an index into " + list + ", which is empty"
                   : "a whole number from 0 to " + std::to_string(count - 1) + " (a zero-based index into " + list + ")";
    return {needs,
            [count](double v) { return v >= 0 && std::floor(v) == v && v < static_cast<double>(count); }};
}

namespace {

std::string trim(const std::string& s) {
    const auto first = s.find_first_not_of(" \t\r");
    if (first == std::string::npos) return "";
    const auto last = s.find_last_not_of(" \t\r");
    return s.substr(first, last - first + 1);
}

std::vector<std::string> split_fields(const std::string& line) {
    std::vector<std::string> fields;
    std::string::size_type start = 0;
    while (true) {
        const auto comma = line.find(',', start);
        fields.push_back(trim(line.substr(start, comma - start)));
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    return fields;
}

bool parse_number(const std::string& text, double& value) {
    if (text.empty()) return false;
    char* end = nullptr;
    errno = 0;
    value = std::strtod(text.c_str(), &end);
    return errno == 0 && end == text.c_str() + text.size() && std::isfinite(value);
}

}  // namespace

const SeriesStore::CsvFile& SeriesStore::load(const SeriesRef& ref) {
    auto found = files_.find(ref.file);
    if (found != files_.end()) return found->second;
    std::ifstream in(ref.file);
    if (!in) throw InputError(ref.file + ": cannot open the file (named at " + ref.named_at + ")");
    CsvFile csv;
    std::string line;
    std::size_t number = 0;
    while (std::getline(in, line)) {
        ++number;
        const std::string content = trim(line);
        if (content.empty() || content[0] == '#') continue;
        if (csv.header.empty()) {
            csv.header = split_fields(content);
            continue;
        }
        csv.rows.push_back(split_fields(content));
        csv.line_numbers.push_back(number);
    }
    if (csv.header.empty()) throw InputError(ref.file + ": the file has no header line of column names");
    return files_.emplace(ref.file, std::move(csv)).first->second;
}

std::vector<double> SeriesStore::read(const SeriesRef& ref, std::size_t steps, const ValueRule& rule) {
    const CsvFile& csv = load(ref);
    std::size_t column = csv.header.size();
    for (std::size_t i = 0; i < csv.header.size(); ++i) {
        if (csv.header[i] == ref.column) column = i;
    }
    if (column == csv.header.size()) {
        throw InputError(ref.file + ": no column \"" + ref.column + "\" in the header line (named at " +
                         ref.named_at + ")");
    }
    if (csv.rows.size() < steps) {
        throw InputError(ref.file + ": column \"" + ref.column + "\" has " + std::to_string(csv.rows.size()) +
                         " values but the run has " + std::to_string(steps) + " time steps (named at " +
                         ref.named_at + ")");
    }
    std::vector<double> values(steps);
    for (std::size_t t = 0; t < steps; ++t) {
        const auto& row = csv.rows[t];
        const std::string where = ref.file + ":" + std::to_string(csv.line_numbers[t]) + ": ";
        if (column >= row.size()) {
            throw InputError(where + "the line has " + std::to_string(row.size()) + " fields; column \"" +
                             ref.column + "\" is field " + std::to_string(column + 1));
        }
        double value = 0;
        if (!parse_number(row[column], value)) {
            throw InputError(where + "column \"" + ref.column + "\": \"" + row[column] + "\" is not a number");
        }
        if (!rule.accepts(value)) {
            throw InputError(where + "column \"" + ref.column + "\": " + row[column] + " is not allowed here; it needs " +
                             rule.needs);
        }
        values[t] = value;
    }
    return values;
}

}  // namespace tamlo_host
