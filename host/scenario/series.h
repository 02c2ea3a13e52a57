// Time series read from CSV files by column name, checked value by value.
#ifndef TAMLO_HOST_SERIES_H
#define TAMLO_HOST_SERIES_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "value_rules.h"

namespace tamlo_host {

// Where a series comes from, and which scenario element named it (for messages).
struct SeriesRef {
    std::string file;    // as the user reads it: the scenario's folder joined with the name
    std::string column;
    std::string named_at;  // e.g. "plant.primary_loads[0].load in examples/hybrid.json"
};

// CSV layout: a header line of column names, then one line per time step; fields are
// separated by commas, blanks around them are ignored, lines starting with # are comments.
// Column names are unique; values are plain decimals ("12", "-0.5", "1e5").
class SeriesStore {
public:
    // The first `steps` values of the column; throws InputError naming the file and line.
    std::vector<double> read(const SeriesRef& ref, std::size_t steps, const ValueRule& rule);
    // The files read so far, as their refs named them.
    std::vector<std::string> files() const;

private:
    struct CsvFile {
        std::vector<std::string> header;
        std::vector<std::vector<std::string>> rows;
        std::vector<std::size_t> line_numbers;  // one-based line of each row
        bool whole = false;                     // false: rows stop at the most any read needed
    };
    // Reads at least `rows` rows when the file has them; lines past those a run needs are never
    // read, so a short run on a year of data does not pay for the year.
    const CsvFile& load(const SeriesRef& ref, std::size_t rows);

    std::map<std::string, CsvFile> files_;
};

}  // namespace tamlo_host

#endif
