function [init_error, custom_variables] = start_pause(simulation_parameters)
% Waits for a key press.
pause;
init_error.severity_code = '';
init_error.error_description = '';
custom_variables.steps = 0;
end
