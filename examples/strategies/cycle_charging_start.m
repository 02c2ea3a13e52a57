function [init_error, custom_variables] = cycle_charging_start(simulation_parameters)
% Start of a run with the cycle-charging strategy. The extension parameter
% 'cycle_charging_setpoint' (number, percent, default 80) is the state of charge
% up to which a generator that started charging the batteries keeps charging them.
% custom_variables.plant holds what the strategy needs from simulation_parameters,
% read once here rather than in every time step.
init_error = dispatch_no_error();
setpoint = dispatch_extension_parameter(simulation_parameters, 'cycle_charging_setpoint', 80);
custom_variables.setpoint_soc = 80;
custom_variables.charging = false(numel(simulation_parameters.batteries), 1);
custom_variables.plant = dispatch_plant(simulation_parameters);
if ~isnumeric(setpoint) || ~isscalar(setpoint) || ~(setpoint >= 0 && setpoint <= 100)
  init_error.severity_code = 'DISPATCH_SIMULATION_ERROR';
  init_error.error_description = ['cycle_charging_start: the extension parameter ', ...
    'cycle_charging_setpoint must be a number from 0 to 100 (percent).'];
  return;
end
custom_variables.setpoint_soc = double(setpoint);
end
