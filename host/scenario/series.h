// Time series read from CSV files by column name, checked value by value.
#ifndef TAMLO_HOST_SERIES_H
#define TAMLO_HOST_SERIES_H

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tamlo_host {

// Where a series comes from, and which scenario element named it (for messages).
struct SeriesRef {
    std::string file;    // as the user reads it: the scenario's folder joined with the name
    std::string column;
    std::string named_at;  // e.g. "plant.primary_loads[0].load in examples/hybrid.json"
};

// What values a series may hold.
struct ValueRule {
    std::string needs;  // completes "it needs ...", e.g. "a number of 0 or more"
    std::function<bool(double)> accepts;
};

// Whole numbers from 0 to count - 1: an index into a list of count entries named list.
ValueRule index_into(std::size_t count, const std::string& list);

extern const ValueRule any_number;
extern const ValueRule non_negative;
extern const ValueRule schedule_code;  // -1, 0 or 1
extern const ValueRule zero_or_one;
extern const ValueRule whole_non_negative;

// CSV layout: a header line of column names, then one line per time step; fields are
// separated by commas, blanks around them are ignored, lines starting with # are comments.
class SeriesStore {
public:
    // The first `steps` values of the column; throws InputError naming the file and line.
    std::vector<double> read(const SeriesRef& ref, std::size_t steps, const ValueRule& rule);

private:
    struct CsvFile {
        std::vector<std::string> header;
        std::vector<std::vector<std::string>> rows;
        std::vector<std::size_t> line_numbers;  // one-based line of each row
    };
    const CsvFile& load(const SeriesRef& ref);

    std::map<std::string, CsvFile> files_;
};

}  // namespace tamlo_host

#endif
