function [s, custom_variables] = persistent_dispatch(simulation_parameters, simulation_state, custom_variables)
% Study test fixture: buys a share of the load that follows a persistent call counter, so a
% counter left over from an earlier run changes the figures.
persistent calls
if isempty(calls)
  calls = 0;
end
calls = calls + 1;
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
