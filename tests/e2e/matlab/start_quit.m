function [init_error, custom_variables] = start_quit(simulation_parameters)
% Quits the engine.
quit;
init_error.severity_code = '';
init_error.error_description = '';
custom_variables.steps = 0;
end
