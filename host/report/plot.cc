// Draws the week and year plots through gnuplot, run as a child process on a temporary folder.
#include "plot.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>

#include "input_error.h"

extern char** environ;

namespace tamlo_host {

using namespace tamlo_dispatch;

namespace {

// A NaN or infinite decision counts as 0 here, as it does in the books.
double finite(double value) { return std::isfinite(value) ? value : 0.0; }

std::vector<std::string> source_names(const SimulationParameters& p) {
    std::vector<std::string> names;
    for (const GeneratorParameters& g : p.generator_list) names.push_back("generator " + g.component.name);
    for (const PvParameters& pv : p.pv_list) names.push_back("PV " + pv.component.name);
    for (const WindTurbineParameters& w : p.wind_turbine_list) names.push_back("wind " + w.component.name);
    if (!p.battery_list.empty()) names.push_back("battery discharge");
    if (!p.grid_list.empty()) names.push_back("grid purchases");
    return names;
}

// kW of each source in source_names' order.
std::vector<double> source_powers(const SimulationState& s) {
    std::vector<double> powers;
    for (const GeneratorState& g : s.generator_list) powers.push_back(finite(g.power_setpoint));
    for (const PvState& pv : s.pv_list) powers.push_back(finite(pv.power_setpoint));
    for (const WindTurbineState& w : s.wind_turbine_list) powers.push_back(finite(w.power_setpoint));
    if (!s.battery_list.empty()) {
        double discharge = 0.0;
        for (const BatteryState& b : s.battery_list) discharge += std::max(0.0, -finite(b.power_setpoint));
        powers.push_back(discharge);
    }
    if (!s.grid_list.empty()) {
        double bought = 0.0;
        for (const GridState& g : s.grid_list) bought += finite(g.grid_purchases);
        powers.push_back(bought);
    }
    return powers;
}

double unmet_power(const SimulationState& s) { return finite(s.ac_bus.unmet_load) + finite(s.dc_bus.unmet_load); }

// Writes the files into a temporary folder, runs gnuplot on the script and removes the folder.
void draw(const std::string& option, const std::vector<std::pair<std::string, std::string>>& data_files,
          const std::function<std::string(const std::vector<std::string>& paths, const std::string& png)>& script,
          const std::string& png_file) {
    char folder_template[] = "/tmp/dispatch-bench-plot-XXXXXX";
    if (mkdtemp(folder_template) == nullptr) {
        throw InputError(option + ": cannot make a temporary folder for the plot: " + std::strerror(errno));
    }
    const std::filesystem::path folder = folder_template;
    std::vector<std::string> paths;
    for (const auto& [name, text] : data_files) {
        paths.push_back((folder / name).string());
        std::ofstream(paths.back()) << text;
    }
    const std::string script_file = (folder / "plot.gp").string();
    const std::string png = std::filesystem::absolute(png_file).string();
    std::ofstream(script_file) << script(paths, png);

    pid_t child = 0;
    char program[] = "gnuplot";
    std::string script_arg = script_file;
    char* argv[] = {program, script_arg.data(), nullptr};
    const int spawned = posix_spawnp(&child, program, nullptr, nullptr, argv, environ);
    std::string problem;
    if (spawned == ENOENT) {
        problem = "gnuplot was not found; install it (Debian package gnuplot-nox) or leave out " + option;
    } else if (spawned != 0) {
        problem = option + ": cannot start gnuplot: " + std::strerror(spawned);
    } else {
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) problem = option + ": gnuplot failed while drawing " + png_file;
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    if (!problem.empty()) throw InputError(problem);
}

}  // namespace

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
    source_names_ = source_names(p);
    has_battery_ = !p.battery_list.empty();
}

void WeekPlot::record(std::size_t step, const SimulationState& s) {
    if (step < first_ || step >= end_) return;
    Row row;
    row.hour = static_cast<double>(step - first_) * hours_;
    row.load = finite(s.ac_bus.load_requested) + finite(s.dc_bus.load_requested);
    row.sources = source_powers(s);
    row.unmet = unmet_power(s);
    if (has_battery_) row.soc_percent = finite(s.battery_list.front().state_of_charge_percent);
    rows_.push_back(row);
}

// Columns: hour, load, state of charge, load less unmet load, then the running sums of the
// sources (stacked).
std::string WeekPlot::data() const {
    std::string text;
    char buffer[96];
    for (const Row& row : rows_) {
        std::snprintf(buffer, sizeof buffer, "%g %g %g %g", row.hour, row.load, row.soc_percent, row.load - row.unmet);
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
    s += "set xlabel 'hour of the week'\nset ylabel 'kW'\nset key outside right\nset grid\nset autoscale xfix\n";
    if (has_battery_) s += "set y2label 'battery state of charge (%)'\nset y2range [0:100]\nset ytics nomirror\nset y2tics\n";
    s += "plot ";
    for (std::size_t i = 0; i < source_names_.size(); ++i) {
        const std::string lower = i == 0 ? "(0)" : std::to_string(i + 4);
        s += "'" + data_file + "' using 1:" + lower + ":" + std::to_string(i + 5) +
             " with filledcurves title '" + source_names_[i] + "', ";
    }
    // The unmet load hangs below the load line, down to what was served.
    s += "'" + data_file + "' using 1:4:2 with filledcurves fs transparent pattern 4 lc rgb 'red' title 'unmet load', ";
    s += "'" + data_file + "' using 1:2 with lines lw 2 lc rgb 'black' title 'load'";
    if (has_battery_) s += ", '" + data_file + "' using 1:3 axes x1y2 with lines dt 2 lw 2 title 'state of charge'";
    s += "\n";
    return s;
}

void WeekPlot::write_png(const std::string& png_file) const {
    draw("--plot", {{"week.dat", data()}},
         [this](const std::vector<std::string>& paths, const std::string& png) { return script(paths[0], png); },
         png_file);
}

YearPlot::YearPlot(const SimulationParameters& p) {
    hours_ = static_cast<double>(p.timestep_size_in_seconds) / 3600.0;
    source_names_ = source_names(p);
    has_battery_ = !p.battery_list.empty();
}

namespace {

constexpr int days_in_month[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
constexpr const char* month_names[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// Months since the start of the run for an hour of it; later years carry on counting.
std::size_t month_of(double hour) {
    const double year_hours = 365.0 * 24.0;
    const double years = std::floor(hour / year_hours);
    double within = hour - years * year_hours;
    std::size_t month = 0;
    while (month < 11 && within >= days_in_month[month] * 24.0) within -= days_in_month[month++] * 24.0;
    return static_cast<std::size_t>(years) * 12 + month;
}

}  // namespace

void YearPlot::record(std::size_t step, const SimulationState& s) {
    const double hour = static_cast<double>(step) * hours_;
    const std::size_t month = month_of(hour);
    while (months_.size() <= month) months_.push_back({std::vector<double>(source_names_.size(), 0.0), 0.0});
    const std::vector<double> powers = source_powers(s);
    for (std::size_t i = 0; i < powers.size() && i < source_names_.size(); ++i) months_[month].sources[i] += powers[i] * hours_;
    months_[month].unmet += unmet_power(s) * hours_;
    if (has_battery_) charge_.emplace_back(hour / 24.0, finite(s.battery_list.front().state_of_charge_percent));
}

// One line a month: its label, each source's kWh, the unmet load's kWh.
std::string YearPlot::month_data() const {
    std::string text;
    char buffer[96];
    for (std::size_t m = 0; m < months_.size(); ++m) {
        text += month_names[m % 12];
        if (months_.size() > 12) {
            text += '-';
            text += std::to_string(m / 12 + 1);
        }
        for (double v : months_[m].sources) {
            std::snprintf(buffer, sizeof buffer, " %g", v);
            text += buffer;
        }
        std::snprintf(buffer, sizeof buffer, " %g\n", months_[m].unmet);
        text += buffer;
    }
    return text;
}

std::string YearPlot::charge_data() const {
    std::string text;
    char buffer[96];
    for (const auto& [day, percent] : charge_) {
        std::snprintf(buffer, sizeof buffer, "%g %g\n", day, percent);
        text += buffer;
    }
    return text;
}

std::string YearPlot::script(const std::string& month_file, const std::string& charge_file,
                             const std::string& png_file) const {
    std::string s;
    s += "set terminal pngcairo size 1400," + std::string(has_battery_ ? "1000" : "600") + " noenhanced\n";
    s += "set output '" + png_file + "'\n";
    if (has_battery_) s += "set multiplot layout 2,1\n";
    s += "set title 'energy by source and unmet load per month'\nset ylabel 'kWh'\nset key outside right\n"
         "set grid ytics\nset style data histograms\nset style histogram rowstacked\n"
         "set style fill solid 0.8 border -1\nset boxwidth 0.75\nset yrange [0:*]\n";
    s += "plot ";
    for (std::size_t i = 0; i < source_names_.size(); ++i) {
        s += "'" + month_file + "' using " + std::to_string(i + 2) + (i == 0 ? ":xtic(1)" : "") + " title '" +
             source_names_[i] + "', ";
    }
    s += "'" + month_file + "' using " + std::to_string(source_names_.size() + 2) +
         (source_names_.empty() ? ":xtic(1)" : "") + " lc rgb 'red' title 'unmet load'\n";
    if (has_battery_) {
        s += "set title 'battery state of charge'\nset style data lines\nset xlabel 'day of the run'\n"
             "set ylabel 'state of charge (%)'\nset yrange [0:100]\nset autoscale xfix\nset grid xtics ytics\nset key off\n";
        s += "plot '" + charge_file + "' using 1:2 with lines lw 1 lc rgb 'dark-blue'\n";
        s += "unset multiplot\n";
    }
    return s;
}

void YearPlot::write_png(const std::string& png_file) const {
    draw("--plot-year", {{"months.dat", month_data()}, {"charge.dat", charge_data()}},
         [this](const std::vector<std::string>& paths, const std::string& png) {
             return script(paths[0], paths[1], png);
         },
         png_file);
}

}  // namespace tamlo_host
