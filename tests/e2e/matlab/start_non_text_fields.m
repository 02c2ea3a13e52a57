function [init_error, custom_variables] = start_non_text_fields(simulation_parameters)
% Puts numbers where texts belong.
init_error.severity_code = 2;
init_error.error_description = 12345;
custom_variables = struct();
end
