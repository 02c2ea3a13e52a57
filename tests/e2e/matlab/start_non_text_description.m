function [init_error, custom_variables] = start_non_text_description(simulation_parameters)
% A critical error whose description is a number, not text.
init_error.severity_code = 'DISPATCH_CRITICAL_ERROR';
init_error.error_description = 12345;
custom_variables = struct();
end
