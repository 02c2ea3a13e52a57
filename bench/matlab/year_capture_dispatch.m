function [new_simulation_state, custom_variables] = year_capture_dispatch(simulation_parameters, simulation_state, custom_variables)
% year_dispatch that first saves its three inputs, exactly as the extension passed them, to
% the file named by the extension parameter 'capture_file'; octave-cli then loads them.
file = '';
parameters = simulation_parameters.extension_parameters;
for k = 1:numel(parameters)
  if strcmp(parameters(k).name, 'capture_file')
    file = parameters(k).value;
  end
end
save('-binary', file, 'simulation_parameters', 'simulation_state', 'custom_variables');
[new_simulation_state, custom_variables] = year_dispatch(simulation_parameters, simulation_state, custom_variables);
end
