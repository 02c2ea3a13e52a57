function [init_error, custom_variables] = field_dump_start(simulation_parameters)
% Fixture: starts without error; field_dump_dispatch does the work.
init_error.severity_code = '';
init_error.error_description = '';
custom_variables.errors = {};
end
