function [init_error, custom_variables] = start_empty_severity(simulation_parameters)
% Leaves the severity empty, which means no error.
init_error.severity_code = '';
init_error.error_description = 'this description is ignored';
custom_variables = struct();
end
