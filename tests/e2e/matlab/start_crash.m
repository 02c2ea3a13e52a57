function [init_error, custom_variables] = start_crash(simulation_parameters)
% Crashes the engine: it sends itself a segmentation fault.
kill(getpid(), 11);
init_error.severity_code = '';
init_error.error_description = '';
custom_variables.steps = 0;
end
