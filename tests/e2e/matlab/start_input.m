function [init_error, custom_variables] = start_input(simulation_parameters)
% Asks for a value at a prompt.
answer = input('How much? ');
init_error.severity_code = '';
init_error.error_description = '';
custom_variables.steps = 0;
end
