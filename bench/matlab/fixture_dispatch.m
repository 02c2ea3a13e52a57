function [s, custom_variables] = fixture_dispatch(simulation_parameters, simulation_state, custom_variables)
% Test fixture for the bench: a naive rule that takes every renewable kW, buys the rest of
% the AC load from the grid when it is up, and reports every load as served. It breaks
% some balance rules on purpose, so the golden summary also shows warnings by rule.
s = simulation_state;
custom_variables.steps = custom_variables.steps + 1;
for i = 1:numel(s.pvs)
  s.pvs(i).power_setpoint = s.pvs(i).power_available;
end
for i = 1:numel(s.wind_turbines)
  s.wind_turbines(i).power_setpoint = s.wind_turbines(i).power_available;
end
for i = 1:numel(s.generators)
  if strcmp(s.generators(i).current_state, 'FORCED_ON_FOR_SCHEDULE') || strcmp(s.generators(i).current_state, 'FORCED_ON_FOR_MINIMUM_RUNTIME')
    s.generators(i).power_setpoint = simulation_parameters.generators(i).minimum_load;
  else
    s.generators(i).power_setpoint = 0;
  end
end
for i = 1:numel(s.grids)
  need = s.ac_bus.load_requested;
  s.grids(i).grid_purchases = min(need, s.grids(i).max_grid_purchases);
  s.grids(i).grid_sales = 0;
end
for i = 1:numel(s.primary_loads)
  s.primary_loads(i).load_served = s.primary_loads(i).load_requested;
end
s.ac_bus.load_served = s.ac_bus.load_requested;
s.ac_bus.unmet_load = 0;
s.ac_bus.excess_electricity = 0;
s.ac_bus.operating_capacity_served = s.ac_bus.operating_capacity_requested;
s.ac_bus.capacity_shortage = 0;
s.dc_bus.load_served = s.dc_bus.load_requested;
s.dc_bus.unmet_load = 0;
s.dc_bus.excess_electricity = 0;
s.dc_bus.operating_capacity_served = s.dc_bus.operating_capacity_requested;
s.dc_bus.capacity_shortage = 0;
end
