function [init_error, custom_variables] = year_start(simulation_parameters)
% Start of the minimal strategy the year comparison runs: counts steps, nothing else.
init_error.severity_code = 'DISPATCH_NO_ERROR';
init_error.error_description = '';
custom_variables.steps = 0;
end
