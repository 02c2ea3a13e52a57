function [init_error, custom_variables] = start_critical(simulation_parameters)
% Reports a critical error.
init_error.severity_code = 'DISPATCH_CRITICAL_ERROR';
init_error.error_description = 'the start function refuses this run';
custom_variables = struct();
end
