function value = parameter(simulation_parameters, name)
% The value of the run's last extension parameter called name, or '' when there is none.
value = '';
for i = 1:numel(simulation_parameters.extension_parameters)
  if strcmp(simulation_parameters.extension_parameters(i).name, name)
    value = simulation_parameters.extension_parameters(i).value;
  end
end
end
