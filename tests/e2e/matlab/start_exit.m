function [init_error, custom_variables] = start_exit(simulation_parameters)
% Ends the engine process with exit status 3.
exit(3);
init_error.severity_code = '';
init_error.error_description = '';
custom_variables.steps = 0;
end
