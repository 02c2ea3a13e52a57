function [new_simulation_state, custom_variables] = cycle_charging_dispatch(simulation_parameters, simulation_state, custom_variables)
% Cycle charging: PV and wind first, their surplus charges the batteries. When the
% batteries and the grid together cannot cover the rest, the generators run at
% their available output (or as much as the loads and the batteries can take, at
% least their minimum load) and charge the batteries with the surplus. A battery
% charged by a generator stays in charging mode, and generators keep running for
% it, until its state of charge reaches custom_variables.setpoint_soc.
% The plan itself is in dispatch_step. custom_variables.plant holds what
% cycle_charging_start read from simulation_parameters.
% Prints nothing: any printed text fails the time step.
if ~isfield(custom_variables, 'plant')
  custom_variables.plant = dispatch_plant(simulation_parameters);
end
nbat = custom_variables.plant.battery_count;
charging = false(nbat, 1);
if isfield(custom_variables, 'charging') && numel(custom_variables.charging) == nbat
  charging = logical(custom_variables.charging(:));
end
setpoint_soc = 80;
if isfield(custom_variables, 'setpoint_soc')
  setpoint_soc = custom_variables.setpoint_soc;
end
[new_simulation_state, charging] = dispatch_step(simulation_state, custom_variables.plant, true, charging, setpoint_soc);
custom_variables.charging = charging;
custom_variables.setpoint_soc = setpoint_soc;
end
