function [init_error, custom_variables] = start_ok(simulation_parameters)
% Accepts every run and starts the run's own data.
init_error.severity_code = '';
init_error.error_description = '';
custom_variables.steps = 0;
end
