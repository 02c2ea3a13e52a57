// Reads CSV time series; each file is read once however many columns are taken from it.
#include "series.h"

#include <filesystem>
#include <fstream>

#include "input_error.h"
#include "message_text.h"
#include "numbers.h"

namespace tamlo_host {

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


}  // namespace

const SeriesStore::CsvFile& SeriesStore::load(const SeriesRef& ref, std::size_t rows) {
    auto found = files_.find(ref.file);
    if (found != files_.end() && (found->second.whole || found->second.rows.size() >= rows)) return found->second;
    const std::string shown = display_text(ref.file);
    if (std::filesystem::is_directory(ref.file)) {
        throw InputError(shown + ": is a folder; name a CSV file (named at " + ref.named_at + ")");
    }
    std::ifstream in(ref.file);
    if (!in) throw InputError(shown + ": cannot open the file (named at " + ref.named_at + ")");
    CsvFile csv;
    std::string line;
    std::size_t number = 0;
    while ((csv.header.empty() || csv.rows.size() < rows) && std::getline(in, line)) {
        ++number;
        const std::string content = trim(line);
        if (content.empty() || content[0] == '#') continue;
        if (csv.header.empty()) {
            csv.header = split_fields(content);
            // Two columns of one name would make the choice between them silent.
            for (std::size_t i = 0; i < csv.header.size(); ++i) {
                for (std::size_t j = 0; j < i; ++j) {
                    if (!csv.header[i].empty() && csv.header[i] == csv.header[j]) {
                        throw InputError(shown + ":" + std::to_string(number) + ": column \"" +
                                         display_text(csv.header[i]) + "\" appears twice in the header line (fields " +
                                         std::to_string(j + 1) + " and " + std::to_string(i + 1) + ")");
                    }
                }
            }
            continue;
        }
        csv.rows.push_back(split_fields(content));
        csv.line_numbers.push_back(number);
    }
    csv.whole = csv.rows.size() < rows;
    if (csv.header.empty()) throw InputError(shown + ": the file has no header line of column names");
    if (found != files_.end()) return found->second = std::move(csv);
    return files_.emplace(ref.file, std::move(csv)).first->second;
}

std::vector<std::string> SeriesStore::files() const {
    std::vector<std::string> names;
    for (const auto& [name, csv] : files_) names.push_back(name);
    return names;
}

std::vector<double> SeriesStore::read(const SeriesRef& ref, std::size_t steps, const ValueRule& rule) {
    const CsvFile& csv = load(ref, steps);
    const std::string shown = display_text(ref.file);
    const std::string column_name = display_text(ref.column);
    std::size_t column = csv.header.size();
    for (std::size_t i = 0; i < csv.header.size(); ++i) {
        if (csv.header[i] == ref.column) column = i;
    }
    if (column == csv.header.size()) {
        throw InputError(shown + ": no column \"" + column_name + "\" in the header line (named at " +
                         ref.named_at + ")");
    }
    if (csv.rows.size() < steps) {
        throw InputError(shown + ": column \"" + column_name + "\" has " + std::to_string(csv.rows.size()) +
                         " values but the run has " + std::to_string(steps) + " time steps (named at " +
                         ref.named_at + ")");
    }
    std::vector<double> values(steps);
    for (std::size_t t = 0; t < steps; ++t) {
        const auto& row = csv.rows[t];
        const auto where = [&] { return shown + ":" + std::to_string(csv.line_numbers[t]) + ": "; };
        if (column >= row.size()) {
            throw InputError(where() + "the line has " + std::to_string(row.size()) + " fields; column \"" +
                             column_name + "\" is field " + std::to_string(column + 1));
        }
        double value = 0;
        const std::string& field = row[column];
        switch (parse_decimal(field, value)) {
            case NumberText::ok: break;
            case NumberText::not_a_number:
                throw InputError(where() + "column \"" + column_name + "\": \"" + display_text(field) +
                                 "\" is not a decimal number (like 12, -0.5 or 1e5)");
            case NumberText::out_of_range:
                throw InputError(where() + "column \"" + column_name + "\": " + display_text(field) +
                                 " is beyond the range of numbers");
        }
        if (!rule.accepts(value)) {
            throw InputError(where() + "column \"" + column_name + "\": " + display_text(field) +
                             " is not allowed here; it needs " + rule.needs);
        }
        values[t] = value;
    }
    return values;
}

}  // namespace tamlo_host
