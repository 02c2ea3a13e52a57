function [init_error, custom_variables] = start_lower_case_critical(simulation_parameters)
% Spells the severity in lower case, which means no error.
init_error.severity_code = 'dispatch_critical_error';
init_error.error_description = 'this description is ignored';
custom_variables = struct();
end
