// Draws the week plot through gnuplot, run as a child process on a temporary folder.
#include "plot.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "input_error.h"

extern char** environ;

namespace tamlo_host {

using namespace tamlo_dispatch;

WeekPlot::WeekPlot(const SimulationParameters& p, std::size_t week) {
    hours_ = static_cast<double>(p.timestep_size_in_seconds) / 3600.0;
    const std::size_t steps_per_week = std::max<std::size_t>(1, static_cast<std::size_t>(7 * 24 / hours_));
    if (week == 0) throw InputError("--week: weeks are counted from 1");
    first_ = (week - 1) * steps_per_week;
    end_ = std::min<std::size_t>(first_ + steps_per_week, p.number_of_timesteps);
    if (first_ >= p.number_of_timesteps) {
        throw InputError("--week " + std::to_string(week) + ": the run has only " +
                         std::to_string((p.number_of_timesteps + steps_per_week - 1) / steps_per_week) + " weeks");
    }
    for (const GeneratorParameters& g : p.generator_list) source_names_.push_back("generator " + g.component.name);
    for (const PvParameters& pv : p.pv_list) source_names_.push_back("PV " + pv.component.name);
    for (const WindTurbineParameters& w : p.wind_turbine_list) source_names_.push_back("wind " + w.component.name);
    has_battery_ = !p.battery_list.empty();
    if (has_battery_) source_names_.push_back("battery discharge");
    if (!p.grid_list.empty()) source_names_.push_back("grid purchases");
}

void WeekPlot::record(std::size_t step, const SimulationState& s) {
    if (step < first_ || step >= end_) return;
    Row row;
    row.hour = static_cast<double>(step - first_) * hours_;
    row.load = s.ac_bus.load_requested + s.dc_bus.load_requested;
    for (const GeneratorState& g : s.generator_list) row.sources.push_back(g.power_setpoint);
    for (const PvState& pv : s.pv_list) row.sources.push_back(pv.power_setpoint);
    for (const WindTurbineState& w : s.wind_turbine_list) row.sources.push_back(w.power_setpoint);
    if (has_battery_) {
        double discharge = 0.0;
        for (const BatteryState& b : s.battery_list) discharge += std::max(0.0, -b.power_setpoint);
        row.sources.push_back(discharge);
        row.soc_percent = s.battery_list.front().state_of_charge_percent;
    }
    if (!s.grid_list.empty()) {
        double bought = 0.0;
        for (const GridState& g : s.grid_list) bought += g.grid_purchases;
        row.sources.push_back(bought);
    }
    rows_.push_back(row);
}

// Columns: hour, load, state of charge, then the running sums of the sources (stacked).
std::string WeekPlot::data() const {
    std::string text;
    char buffer[48];
    for (const Row& row : rows_) {
        std::snprintf(buffer, sizeof buffer, "%g %g %g", row.hour, row.load, row.soc_percent);
        text += buffer;
        double sum = 0.0;
        for (double v : row.sources) {
            sum += v;
            std::snprintf(buffer, sizeof buffer, " %g", sum);
            text += buffer;
        }
        text += '\n';
    }
    return text;
}

std::string WeekPlot::script(const std::string& data_file, const std::string& png_file) const {
    std::string s;
    s += "set terminal pngcairo size 1400,700 noenhanced\n";
    s += "set output '" + png_file + "'\n";
    s += "set xlabel 'hour of the week'\nset ylabel 'kW'\nset key outside right\nset grid\n";
    if (has_battery_) s += "set y2label 'battery state of charge (%)'\nset y2range [0:100]\nset ytics nomirror\nset y2tics\n";
    s += "plot ";
    for (std::size_t i = 0; i < source_names_.size(); ++i) {
        const std::string lower = i == 0 ? "(0)" : std::to_string(i + 3);
        s += "'" + data_file + "' using 1:" + lower + ":" + std::to_string(i + 4) +
             " with filledcurves title '" + source_names_[i] + "', ";
    }
    s += "'" + data_file + "' using 1:2 with lines lw 2 lc rgb 'black' title 'load'";
    if (has_battery_) s += ", '" + data_file + "' using 1:3 axes x1y2 with lines dt 2 lw 2 title 'state of charge'";
    s += "\n";
    return s;
}

void WeekPlot::write_png(const std::string& png_file) const {
    char folder_template[] = "/tmp/dispatch-bench-plot-XXXXXX";
    if (mkdtemp(folder_template) == nullptr) {
        throw InputError(std::string("cannot make a temporary folder for the plot: ") + std::strerror(errno));
    }
    const std::filesystem::path folder = folder_template;
    const std::string data_file = (folder / "week.dat").string();
    const std::string script_file = (folder / "week.gp").string();
    const std::string png = std::filesystem::absolute(png_file).string();
    std::ofstream(data_file) << data();
    std::ofstream(script_file) << script(data_file, png);

    pid_t child = 0;
    char program[] = "gnuplot";
    std::string script_arg = script_file;
    char* argv[] = {program, script_arg.data(), nullptr};
    const int spawned = posix_spawnp(&child, program, nullptr, nullptr, argv, environ);
    std::string problem;
    if (spawned == ENOENT) {
        problem = "gnuplot was not found; install it (Debian package gnuplot-nox) or leave out --plot";
    } else if (spawned != 0) {
        problem = std::string("cannot start gnuplot: ") + std::strerror(spawned);
    } else {
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) problem = "gnuplot failed while drawing " + png_file;
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    if (!problem.empty()) throw InputError(problem);
}

}  // namespace tamlo_host
