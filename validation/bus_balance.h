// Estimates what each bus receives and can hold in reserve, then checks the bus figures that
// the dispatch reported against those estimates and against each other.
#ifndef TAMLO_VALIDATION_BUS_BALANCE_H
#define TAMLO_VALIDATION_BUS_BALANCE_H

#include <string>
#include <vector>

#include "tamlo_dispatch/simulation_parameters.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_validation {

// Estimated power delivered to one bus and operating capacity available to it, kW.
struct BusSupply {
    double production = 0.0;
    double capacity = 0.0;
};

struct BusEstimates {
    BusSupply ac;
    BusSupply dc;

    BusSupply& bus(bool is_ac) { return is_ac ? ac : dc; }
};

// Sums production and capacity of both buses over generators, batteries, PV arrays, wind
// turbines, custom components, flywheels, the first converter and the first grid. The passes
// over PV arrays, wind turbines and custom components also check each one's set point, so
// their warnings are appended here, component by component.
//
// Pairing: a state entry with no parameter entry at its position has no known bus and adds
// to neither bus (its set-point check still runs, as it reads the state alone). The converter
// and grid steps need both lists' first entries and are skipped when either is missing.
BusEstimates estimate_bus_supply(const tamlo_dispatch::SimulationParameters& parameters,
                                 const tamlo_dispatch::SimulationState& state, std::vector<std::string>& warnings);

// Moves spare operating capacity across the converter towards the bus that lacks it, at most
// once and in one direction.
void transfer_converter_capacity(const tamlo_dispatch::ConverterParameters& converter, double ac_request,
                                 double dc_request, BusEstimates& estimates);

// The ten balance checks, in their fixed order.
void check_bus_balance(const tamlo_dispatch::SimulationState& state, const BusEstimates& estimates,
                       std::vector<std::string>& warnings);

}  // namespace tamlo_validation

#endif
