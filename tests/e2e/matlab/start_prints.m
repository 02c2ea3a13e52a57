function [init_error, custom_variables] = start_prints(simulation_parameters)
% Prints text and a warning but returns a valid init_error.
disp('text printed during start');
warning('a warning printed during start');
x = 42
init_error.severity_code = '';
init_error.error_description = '';
custom_variables = struct();
end
