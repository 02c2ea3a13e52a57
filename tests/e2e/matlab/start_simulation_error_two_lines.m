function [init_error, custom_variables] = start_simulation_error_two_lines(simulation_parameters)
% Reports a simulation error whose description holds two lines.
init_error.severity_code = 'DISPATCH_SIMULATION_ERROR';
init_error.error_description = sprintf('first line\nsecond line');
custom_variables = struct();
end
