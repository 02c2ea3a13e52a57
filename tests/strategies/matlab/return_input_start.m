function [init_error, custom_variables] = return_input_start(simulation_parameters)
% Fixture: starts without error and keeps nothing.
init_error.severity_code = '';
init_error.error_description = '';
custom_variables = [];
end
