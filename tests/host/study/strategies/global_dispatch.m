function [s, custom_variables] = global_dispatch(simulation_parameters, s, custom_variables)
% Study test fixture: like persistent_dispatch, with a global counter.
global study_calls
if isempty(study_calls)
  study_calls = 0;
end
study_calls = study_calls + 2;
s.grids(1).grid_purchases = min(s.ac_bus.load_requested, s.grids(1).max_grid_purchases) * mod(study_calls, 5) / 4;
end
