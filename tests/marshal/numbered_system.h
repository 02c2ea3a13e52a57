// A system and a time-step state with every component kind, every list filled and all three
// grid models, each member given a value of its own: the marshal tables and the field
// reference build their structs from it.
#ifndef TAMLO_TESTS_MARSHAL_NUMBERED_SYSTEM_H
#define TAMLO_TESTS_MARSHAL_NUMBERED_SYSTEM_H

#include <memory>
#include <string>
#include <vector>

#include "tamlo_dispatch/simulation_parameters.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_numbered {

using namespace tamlo_dispatch;

// A whole number that initializes a member of any integer type without a narrowing cast.
struct Whole {
    long long value;
    template <class T>
    operator T() const {
        return static_cast<T>(value);
    }
};

// Hands out the members' values and keeps a list of them. Numbers lie ten apart, so that a
// value off by one is no other member's; a flag takes bit `pass` of its own count, so that over
// several passes each flag spells a number of its own.
class Numbering {
public:
    explicit Numbering(int pass = 0) : pass_(pass) {}
    double d() { return numbers.emplace_back(10.0 * ++count_ + 0.5); }
    Whole w() { return Whole{static_cast<long long>(numbers.emplace_back(10.0 * ++count_))}; }
    std::string t() { return texts.emplace_back("text " + std::to_string(++count_)); }
    bool b() { return (++flags >> pass_) & 1; }

    std::vector<double> numbers;
    std::vector<std::string> texts;
    int flags = 0;

private:
    int pass_;
    int count_ = 0;
};

// Braced lists below give every member in declaration order (they are evaluated left to right).
// Members the simulator keeps for itself (opaque values, a dedicated converter's or custom
// component's own head) hold 0, false or "own": MATLAB never receives them.

inline ComponentParameters head(Numbering& n, bool sends_is_AC = true) {
    return {{n.d(), n.d(), n.d()}, n.t(), n.w(), sends_is_AC && n.b()};
}

inline GridStateFlags flags(Numbering& n) {
    return {n.b(), n.b(), n.b(), n.b(), n.b(), n.b(), n.b(), n.b(), n.d()};
}

inline TariffRate tariff(Numbering& n) {
    return {n.t(), {{n.d(), n.d()}, {n.d(), n.d()}}, {{n.w(), n.w(), n.w(), n.w(), n.w(), n.w()}},
            {n.w(), n.w(), n.w(), n.w()}, n.t()};
}

inline SimulationParameters numbered_system(Numbering& n) {
    SimulationParameters p;
    p.extension_parameters = {{n.t(), ExtensionParameterType::number, n.d(), false, "own", {}},
                              {n.t(), ExtensionParameterType::text, 0.0, false, n.t(), {}},
                              {n.t(), ExtensionParameterType::number_list, 0.0, false, "own", {n.d(), n.d()}},
                              {n.t(), ExtensionParameterType::boolean, 0.0, n.b(), "own", {}}};
    p.generator_list = {{head(n), {n.t(), n.d(), n.b(), n.d(), n.d(), n.d(), n.d(), n.d()},
                         n.d(), n.d(), n.d(), n.d(), n.d(), n.d(), n.b(), n.d(), n.d(), n.d(), n.d(),
                         0, n.d(), n.d(), n.d(), n.d()}};
    p.primary_load_list = {{n.t(), n.b(), n.d()}};
    p.pv_list = {{head(n), n.d(), n.d(), {n.d(), n.d()}}};
    DedicatedConverterParameters dedicated{
        {}, n.d(), n.d(), n.d(), n.b(), {{n.d(), n.d()}, {n.d(), n.d()}}, {{n.d(), n.d()}}, n.d(), n.d()};
    p.battery_list = {{head(n), n.d(), n.d(), n.d(), 0, n.d(), n.d(), n.d(), n.d(), n.d(), dedicated, n.b()}};
    p.converter_list = {{head(n, false), n.d(), n.d(), n.d(), n.d(), n.d(), n.b()}};
    p.flywheel_list = {{head(n), n.d(), n.d(), n.d(), n.w()}};

    auto real_time = std::make_shared<RealTime>();
    real_time->demand_rate = {{n.t(), flags(n), n.d()}};
    real_time->demand_rate_index = {n.w(), n.w()};
    real_time->realtime_power_price = {n.d(), n.d()};
    real_time->realtime_sellback_rate = {n.d(), n.d()};
    auto scheduled = std::make_shared<Scheduled>();
    scheduled->demand_rate = {{n.t(), flags(n), n.d()}};
    scheduled->demand_rate_index = {n.w()};
    scheduled->grid_rate = {{n.t(), flags(n), n.d(), n.d()}};
    scheduled->grid_rate_index = {n.w()};
    auto utility = std::make_shared<ComplexUtility>();
    utility->tariff_name = n.t();
    utility->tariff_code = n.t();
    utility->consumption_rates = {tariff(n)};
    utility->demand_rates = {tariff(n)};
    utility->fixed_rates = {tariff(n)};
    utility->minimum_rates = {tariff(n)};
    utility->tax_rates = {tariff(n)};
    utility->purchase_price = {n.d()};
    utility->export_price = {n.d()};
    utility->demand_price = {n.d()};
    p.grid_list = {{real_time, n.b(), n.d()}, {scheduled, n.b(), n.d()}, {utility, n.b(), n.d()}};

    p.custom_component_list = {{head(n), {{1.0, "own", "own"}}, {}, "own", 0, n.d(), 0, false}};
    p.wind_turbine_list = {{head(n), n.w(), n.d(), {{n.d(), n.d()}, {n.d(), n.d()}}}};
    p.emissions = {n.d(), n.d(), n.d(), n.d(), n.d(), n.d(), n.d(), n.d(), n.d(),
                   n.d(), n.d(), n.d(), n.b(), n.b(), n.b(), n.b(), n.b(), n.b()};
    p.operating_reserve = {n.d(), n.d(), n.d(), n.d()};
    p.maximum_annual_capacity_shortage = n.d();
    p.minimum_renewable_fraction = n.d();
    p.timestep_size_in_seconds = n.w();
    p.number_of_timesteps = n.w();
    return p;
}

// One state for the system above; the two current states are shown by one kind each.
inline SimulationState numbered_state(Numbering& n) {
    SimulationState s;
    s.generator_list = {{n.d(), n.d(), FORCED_OFF_OUT_OF_FUEL}};
    s.pv_list = {{n.d(), n.d()}};
    s.battery_list = {{{n.d(), n.d(), n.d(), n.d()}, n.d(), n.d(), n.d(), n.d(), n.d(), n.d()}};
    s.primary_load_list = {{n.d(), n.d()}};
    s.converter_list = {{n.d(), n.d(), n.d(), n.d()}};
    s.flywheel_list = {{0, n.d()}};
    s.grid_list = {{flags(n), n.d(), n.d(), n.d(), n.d(), n.d(), n.d()},
                   {flags(n), n.d(), n.d(), n.d(), n.d(), n.d(), n.d()},
                   {flags(n), n.d(), n.d(), n.d(), n.d(), n.d(), n.d()}};
    s.custom_component_list = {{n.d(), n.d()}};
    s.wind_turbine_list = {{n.d(), n.d(), FORCED_OFF_FOR_MAINTENANCE_EVENT}};
    s.ac_bus = {n.d(), n.d(), n.d(), n.d(), n.d(), n.d(), n.d()};
    s.dc_bus = {n.d(), n.d(), n.d(), n.d(), n.d(), n.d(), n.d()};
    s.current_timestep = n.w();
    return s;
}

}  // namespace tamlo_numbered

#endif
