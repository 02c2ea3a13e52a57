// Checks the first grid's purchases and sales against its outage flag and its limits.
#include "grid_checks.h"

#include "comparison.h"
#include "message_format.h"

namespace tamlo_validation {
namespace {

using tamlo_dispatch::GridState;

// Trade with a grid that is down (R1, R2).
struct OutageCheck {
    double GridState::*traded;
    const char* lead;
};

constexpr OutageCheck outage_checks[] = {
    {&GridState::grid_purchases, "simulation_state.grids(0).grid_is_down is TRUE but power is being purchased ("},
    {&GridState::grid_sales, "simulation_state.grids(0).grid_is_down is TRUE but power is being sold ("},
};

// Trade above the step's limit (R3, R4); compared plainly, without tolerance.
struct LimitCheck {
    double GridState::*traded;
    double GridState::*limit;
    const char* lead;
    const char* tail;
};

constexpr LimitCheck limit_checks[] = {
    {&GridState::grid_purchases, &GridState::max_grid_purchases, "simulation_state.grids[0].grid_purchases (",
     " kW) exceeds simulation_state.grids[0].max_grid_purchases in time step: "},
    {&GridState::grid_sales, &GridState::max_grid_sales, "simulation_state.grids[0].grid_sales (",
     " kW) exceeds simulation_state.grids[0].max_grid_sales in time step: "},
};

}  // namespace

void check_grid(const tamlo_dispatch::SimulationParameters& parameters, const tamlo_dispatch::SimulationState& state,
                std::vector<std::string>& warnings) {
    // Grid entries in the state count only when the parameters describe a grid.
    if (parameters.grid_list.empty() || state.grid_list.empty()) {
        return;
    }
    const GridState& grid = state.grid_list.front();
    const Count step = time_step_number(state);

    if (grid.grid_state.grid_is_down) {
        for (const OutageCheck& c : outage_checks) {
            if (grid.*c.traded > validation_tolerance) {
                add_warning(warnings, c.lead, Quantity{grid.*c.traded}, " kW) in time step: ", step);
            }
        }
    }
    for (const LimitCheck& c : limit_checks) {
        if (grid.*c.traded > grid.*c.limit) {
            add_warning(warnings, c.lead, Quantity{grid.*c.traded}, c.tail, step);
        }
    }
}

}  // namespace tamlo_validation
