function [s, custom_variables] = global_dispatch(simulation_parameters, simulation_state, custom_variables)
% Study test fixture: like persistent_dispatch, with a global counter.
global study_calls
if isempty(study_calls)
  study_calls = 0;
end
study_calls = study_calls + 2;
calls = study_calls;
s = simulation_state;
for i = 1:numel(s.pvs)
  s.pvs(i).power_setpoint = s.pvs(i).power_available;
end
for i = 1:numel(s.grids)
  s.grids(i).grid_purchases = min(s.ac_bus.load_requested, s.grids(i).max_grid_purchases) * mod(calls, 5) / 4;
end
for i = 1:numel(s.primary_loads)
  s.primary_loads(i).load_served = s.primary_loads(i).load_requested;
end
s.ac_bus.load_served = s.ac_bus.load_requested;
s.dc_bus.load_served = s.dc_bus.load_requested;
end
