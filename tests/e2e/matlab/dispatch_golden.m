function [new_simulation_state, custom_variables] = dispatch_golden(simulation_parameters, simulation_state, custom_variables)
% A plausible but sloppy strategy: runs every generator flat out, serves the AC load,
% and forgets the unmet load and the excess electricity.
custom_variables.steps = custom_variables.steps + 1;
s = simulation_state;
[s.generators.power_setpoint] = deal(60);
[s.pvs.power_setpoint] = s.pvs.power_available;
[s.wind_turbines.power_setpoint] = s.wind_turbines.power_available;
s.ac_bus.load_served = s.ac_bus.load_requested;
s.ac_bus.operating_capacity_served = s.ac_bus.operating_capacity_requested;
[s.primary_loads.load_served] = s.primary_loads.load_requested;
new_simulation_state = s;
end
