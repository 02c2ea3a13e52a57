function [init_error, custom_variables] = start_code(simulation_parameters)
% Accepts the run, then runs the MATLAB text of the extension parameter 'start code'.
init_error.severity_code = '';
init_error.error_description = '';
custom_variables.steps = 0;
eval(parameter(simulation_parameters, 'start code'));
end
