function [new_simulation_state, custom_variables] = dispatch_golden(simulation_parameters, simulation_state, custom_variables)
% A plausible but sloppy strategy: runs every generator flat out, serves the AC load,
% and forgets the unmet load and the excess electricity.
custom_variables.steps = custom_variables.steps + 1;
s = simulation_state;
for i = 1:numel(s.generators)
  s.generators(i).power_setpoint = 60;
end
for i = 1:numel(s.pvs)
  s.pvs(i).power_setpoint = s.pvs(i).power_available;
end
for i = 1:numel(s.wind_turbines)
  s.wind_turbines(i).power_setpoint = s.wind_turbines(i).power_available;
end
s.ac_bus.load_served = s.ac_bus.load_requested;
s.ac_bus.operating_capacity_served = s.ac_bus.operating_capacity_requested;
for i = 1:numel(s.primary_loads)
  s.primary_loads(i).load_served = s.primary_loads(i).load_requested;
end
new_simulation_state = s;
end
