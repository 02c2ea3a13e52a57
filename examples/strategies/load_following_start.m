function [init_error, custom_variables] = load_following_start(simulation_parameters)
% Start of a run with the load-following strategy. The strategy keeps nothing
% between time steps; custom_variables.plant holds what it needs from
% simulation_parameters, read once here rather than in every time step.
init_error = dispatch_no_error();
custom_variables = struct();
if ~isstruct(simulation_parameters)
  init_error.severity_code = 'DISPATCH_CRITICAL_ERROR';
  init_error.error_description = 'load_following_start: simulation_parameters is not a struct.';
  return;
end
custom_variables.plant = dispatch_plant(simulation_parameters);
end
