function value = dispatch_extension_parameter(simulation_parameters, name, default_value)
% The value of the extension parameter called name, or default_value when the
% simulation has no such parameter.
value = default_value;
parameters = simulation_parameters.extension_parameters;
for k = 1:numel(parameters)
  if strcmp(parameters(k).name, name)
    value = parameters(k).value;
    return;
  end
end
end
