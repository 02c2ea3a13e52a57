function [init_error, custom_variables] = fixture_start(simulation_parameters)
% Test fixture for the bench: counts steps, nothing else.
init_error.severity_code = 'DISPATCH_NO_ERROR';
init_error.error_description = '';
custom_variables.steps = 0;
end
