// Per-step CSV results, columns named like the MATLAB fields they hold.
#include "results_csv.h"

#include <cstdio>

#include "input_error.h"

namespace tamlo_host {

using namespace tamlo_dispatch;

namespace {

const char* const bus_fields[] = {"load_requested", "load_served", "unmet_load", "excess_electricity",
                                  "operating_capacity_requested", "operating_capacity_served", "capacity_shortage"};

double BusState::*const bus_members[] = {&BusState::load_requested, &BusState::load_served,
                                          &BusState::unmet_load, &BusState::excess_electricity,
                                          &BusState::operating_capacity_requested,
                                          &BusState::operating_capacity_served, &BusState::capacity_shortage};

const char* const converter_fields[] = {"inverter_power_input", "inverter_power_output", "rectifier_power_input",
                                        "rectifier_power_output"};

double ConverterState::*const converter_members[] = {
    &ConverterState::inverter_power_input, &ConverterState::inverter_power_output,
    &ConverterState::rectifier_power_input, &ConverterState::rectifier_power_output};

std::string element(const char* list, std::size_t i) { return std::string(list) + "(" + std::to_string(i + 1) + ")."; }

void add(std::string& line, double value) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, ",%.6g", value);
    line += buffer;
}

// One column name of the header line, after a comma.
void add_name(std::string& header, const std::string& prefix, const char* field) {
    header += ',';
    header += prefix;
    header += field;
}

}  // namespace

std::string results_header(const SimulationParameters& p) {
    std::string h = "time_step";
    for (const char* bus : {"ac_bus.", "dc_bus."}) {
        for (const char* f : bus_fields) add_name(h, bus, f);
    }
    for (std::size_t i = 0; i < p.generator_list.size(); ++i) {
        for (const char* f : {"power_available", "power_setpoint", "current_state"}) add_name(h, element("generators", i), f);
    }
    for (std::size_t i = 0; i < p.pv_list.size(); ++i) {
        for (const char* f : {"power_available", "power_setpoint"}) add_name(h, element("pvs", i), f);
    }
    for (std::size_t i = 0; i < p.wind_turbine_list.size(); ++i) {
        for (const char* f : {"power_available", "power_setpoint"}) add_name(h, element("wind_turbines", i), f);
    }
    for (std::size_t i = 0; i < p.battery_list.size(); ++i) {
        for (const char* f : {"state_of_charge_kwh", "state_of_charge_percent", "max_charge_power",
                              "max_discharge_power", "power_setpoint"}) {
            add_name(h, element("batteries", i), f);
        }
        for (const char* f : converter_fields) add_name(h, element("batteries", i) + "dedicated_converter.", f);
    }
    for (std::size_t i = 0; i < p.converter_list.size(); ++i) {
        for (const char* f : converter_fields) add_name(h, element("converters", i), f);
    }
    for (std::size_t i = 0; i < p.grid_list.size(); ++i) {
        for (const char* f : {"grid_is_down", "max_grid_purchases", "max_grid_sales", "power_price", "sellback_rate",
                              "grid_purchases", "grid_sales"}) {
            add_name(h, element("grids", i), f);
        }
    }
    for (std::size_t i = 0; i < p.primary_load_list.size(); ++i) {
        for (const char* f : {"load_requested", "load_served"}) add_name(h, element("primary_loads", i), f);
    }
    for (std::size_t i = 0; i < p.custom_component_list.size(); ++i) {
        for (const char* f : {"power_available", "power_setpoint"}) add_name(h, element("custom_components", i), f);
    }
    for (std::size_t i = 0; i < p.flywheel_list.size(); ++i) {
        for (const char* f : {"flywheel_state", "load_served"}) add_name(h, element("flywheels", i), f);
    }
    return h;
}

ResultsCsv::ResultsCsv(const std::string& file, const SimulationParameters& parameters)
    : file_(file), out_(file) {
    if (!out_) throw InputError(file + ": cannot write the results file");
    out_ << results_header(parameters) << '\n';
}

void ResultsCsv::write(std::size_t step, const SimulationState& s) {
    std::string line = std::to_string(step);
    for (const BusState* bus : {&s.ac_bus, &s.dc_bus}) {
        for (double BusState::*m : bus_members) add(line, bus->*m);
    }
    for (const GeneratorState& g : s.generator_list) {
        add(line, g.power_available);
        add(line, g.power_setpoint);
        add(line, g.current_state);
    }
    for (const PvState& pv : s.pv_list) {
        add(line, pv.power_available);
        add(line, pv.power_setpoint);
    }
    for (const WindTurbineState& w : s.wind_turbine_list) {
        add(line, w.power_available);
        add(line, w.power_setpoint);
    }
    for (const BatteryState& b : s.battery_list) {
        for (double v : {b.state_of_charge_kwh, b.state_of_charge_percent, b.max_charge_power, b.max_discharge_power,
                         b.power_setpoint}) {
            add(line, v);
        }
        for (double ConverterState::*m : converter_members) add(line, b.dedicated_converter.*m);
    }
    for (const ConverterState& c : s.converter_list) {
        for (double ConverterState::*m : converter_members) add(line, c.*m);
    }
    for (const GridState& g : s.grid_list) {
        for (double v : {g.grid_state.grid_is_down ? 1.0 : 0.0, g.max_grid_purchases, g.max_grid_sales, g.power_price,
                         g.sellback_rate, g.grid_purchases, g.grid_sales}) {
            add(line, v);
        }
    }
    for (const PrimaryLoadState& l : s.primary_load_list) {
        add(line, l.load_requested);
        add(line, l.load_served);
    }
    for (const CustomComponentState& c : s.custom_component_list) {
        add(line, c.power_available);
        add(line, c.power_setpoint);
    }
    for (const FlywheelState& f : s.flywheel_list) {
        add(line, f.flywheel_state);
        add(line, f.load_served);
    }
    line += '\n';
    out_ << line;
    if (!out_) throw InputError(file_ + ": writing the results failed");
}

}  // namespace tamlo_host
