function [init_error, custom_variables] = start_endless_loop(simulation_parameters)
% Never returns.
while true
end
init_error.severity_code = '';
init_error.error_description = '';
custom_variables.steps = 0;
end
