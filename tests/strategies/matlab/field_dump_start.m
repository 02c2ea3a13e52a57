function [init_error, custom_variables] = field_dump_start(simulation_parameters)
% Fixture: writes the field list of simulation_parameters into the folder named by
% the extension parameter 'field dump folder'.
init_error.severity_code = '';
init_error.error_description = '';
folder = '';
for k = 1:numel(simulation_parameters.extension_parameters)
  if strcmp(simulation_parameters.extension_parameters(k).name, 'field dump folder')
    folder = simulation_parameters.extension_parameters(k).value;
  end
end
custom_variables.folder = folder;
field_dump_write(fullfile(folder, 'simulation_parameters.txt'), 'simulation_parameters', simulation_parameters);
end
