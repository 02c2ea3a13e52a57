function [init_error, custom_variables] = start_missing_description(simulation_parameters)
% Returns init_error without error_description.
init_error.severity_code = 'DISPATCH_CRITICAL_ERROR';
custom_variables = struct();
end
