function [init_error, custom_variables] = start_crash(simulation_parameters)
% Crashes the engine: it sends itself an illegal-instruction signal (a sanitizer in the
% engine would turn a segmentation fault into an abort).
kill(getpid(), 4);
init_error.severity_code = '';
init_error.error_description = '';
custom_variables.steps = 0;
end
