function [init_error, custom_variables] = start_long_description(simulation_parameters)
% Reports a 2000-character description: the letters a to z repeated.
init_error.severity_code = 'DISPATCH_SIMULATION_ERROR';
init_error.error_description = char(mod(0:1999, 26) + double('a'));
custom_variables = struct();
end
