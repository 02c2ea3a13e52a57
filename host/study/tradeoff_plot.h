// The study's one picture: unmet load and fuel against a varied value, one line per strategy
// (or per combination of the other varied values), drawn by gnuplot.
#ifndef TAMLO_HOST_TRADEOFF_PLOT_H
#define TAMLO_HOST_TRADEOFF_PLOT_H

#include <string>
#include <vector>

#include "case_result.h"
#include "study_cases.h"

namespace tamlo_host {

struct TradeoffData {
    std::string x_label;
    std::vector<std::string> series;  // one gnuplot data block each
    std::string data;                 // blocks separated by two blank lines: x unmet fuel
};

// Completed cases only; x is the first variation whose values are all numbers (else the case
// number); the lines are the other variations' values, averaged down to the strategies when
// they would make more than twelve lines.
TradeoffData tradeoff_data(const Study& study, const std::vector<StudyCase>& cases,
                           const std::vector<CaseResult>& results);

std::string tradeoff_script(const TradeoffData& data, const std::string& data_file, const std::string& png_file);

// Writes folder/tradeoff.dat, folder/tradeoff.gp and runs gnuplot; throws InputError when it
// cannot.
void write_tradeoff_png(const TradeoffData& data, const std::string& folder, const std::string& png_file);

}  // namespace tamlo_host

#endif
