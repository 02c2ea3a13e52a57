function [init_error, custom_variables] = field_dump_start(simulation_parameters)
% Fixture: writes the field list of simulation_parameters into the file named by the
% extension parameter 'field dump file'.
init_error.severity_code = '';
init_error.error_description = '';
names = {simulation_parameters.extension_parameters.name};
custom_variables.file = simulation_parameters.extension_parameters(strcmp(names, 'field dump file')).value;
field_dump_write(custom_variables.file, 'w', 'simulation_parameters', simulation_parameters);
end
