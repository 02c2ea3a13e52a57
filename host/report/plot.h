// PNGs drawn by gnuplot: one week (load, sources stacked, unmet load, state of charge) and a
// year at a glance (energy by source and unmet load per month, state of charge).
#ifndef TAMLO_HOST_PLOT_H
#define TAMLO_HOST_PLOT_H

#include <cstddef>
#include <string>
#include <vector>

#include "tamlo_dispatch/simulation_parameters.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_host {

// Collects the steps of week `week` (1-based) of a run and plots them.
class WeekPlot {
public:
    WeekPlot(const tamlo_dispatch::SimulationParameters& parameters, std::size_t week);

    std::size_t first_step() const { return first_; }
    std::size_t end_step() const { return end_; }
    void record(std::size_t step, const tamlo_dispatch::SimulationState& state);
    // Runs gnuplot; throws InputError when gnuplot is missing or fails.
    void write_png(const std::string& file) const;

    // The gnuplot data lines and script, for tests.
    std::string data() const;
    std::string script(const std::string& data_file, const std::string& png_file) const;

private:
    std::vector<std::string> source_names_;
    std::size_t first_ = 0;
    std::size_t end_ = 0;
    double hours_ = 1.0;
    struct Row {
        double hour = 0.0;
        double load = 0.0;
        std::vector<double> sources;
        double unmet = 0.0;
        double soc_percent = 0.0;
    };
    std::vector<Row> rows_;
    bool has_battery_ = false;
};

// Sums each source and the unmet load per calendar month (step 0 is 1 January, 00:00, no
// leap days) and keeps the battery's state of charge of every step.
class YearPlot {
public:
    explicit YearPlot(const tamlo_dispatch::SimulationParameters& parameters);

    void record(std::size_t step, const tamlo_dispatch::SimulationState& state);
    // Runs gnuplot; throws InputError when gnuplot is missing or fails.
    void write_png(const std::string& file) const;

    // The gnuplot data (months, then state of charge) and script, for tests.
    std::string month_data() const;
    std::string charge_data() const;
    std::string script(const std::string& month_file, const std::string& charge_file, const std::string& png_file) const;

private:
    std::vector<std::string> source_names_;
    double hours_ = 1.0;
    bool has_battery_ = false;
    struct Month {
        std::vector<double> sources;  // kWh
        double unmet = 0.0;           // kWh
    };
    std::vector<Month> months_;
    std::vector<std::pair<double, double>> charge_;  // day of the run, state of charge (%)
};

}  // namespace tamlo_host

#endif
