function [init_error, custom_variables] = start_keyboard(simulation_parameters)
% Asks for the debugger's prompt.
keyboard;
init_error.severity_code = '';
init_error.error_description = '';
custom_variables.steps = 0;
end
