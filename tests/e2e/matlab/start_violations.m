function [init_error, custom_variables] = start_violations(simulation_parameters)
% Takes the number of rules to break per time step from the extension parameter 'violations'.
init_error.severity_code = '';
init_error.error_description = '';
custom_variables.violations = 0;
for i = 1:numel(simulation_parameters.extension_parameters)
  if strcmp(simulation_parameters.extension_parameters(i).name, 'violations')
    custom_variables.violations = simulation_parameters.extension_parameters(i).value;
  end
end
end
