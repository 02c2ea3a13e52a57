// Fills the per-component result layout the simulator asks for at the end of a run.
#include "dispatch_extension.h"

namespace tamlo_extension {

namespace {

template <typename ComponentRecord>
void add_component_results(std::vector<tamlo_dispatch::ComponentResults>& results,
                           const std::vector<ComponentRecord>& components) {
    for (const ComponentRecord& record : components) {
        results.push_back({record.component.component_number, {}});
    }
}

}  // namespace

void fill_result_parameters(tamlo_dispatch::ResultParameters& results,
                            const tamlo_dispatch::SimulationParameters& parameters) {
    results.valid = true;
    results.number_of_timesteps = parameters.number_of_timesteps;
    add_component_results(results.generator_results, parameters.generator_list);
    // Primary-load records carry no component number.
    for (std::size_t i = 0; i < parameters.primary_load_list.size(); ++i) {
        results.primary_load_results.push_back({0, {}});
    }
    add_component_results(results.pv_results, parameters.pv_list);
    add_component_results(results.battery_results, parameters.battery_list);
    add_component_results(results.wind_turbine_results, parameters.wind_turbine_list);
    add_component_results(results.converter_results, parameters.converter_list);
    add_component_results(results.flywheel_results, parameters.flywheel_list);
}

}  // namespace tamlo_extension
