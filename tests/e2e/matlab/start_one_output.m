function init_error = start_one_output(simulation_parameters)
% Declares one output only, so the two-output call cannot run.
init_error.severity_code = '';
init_error.error_description = '';
end
