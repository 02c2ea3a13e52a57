function [init_error, custom_variables] = start_report_grids(simulation_parameters)
% Reports the fields of the grids' technical models, and the real-time prices, as a simulation
% error, so the host can read them.
text = '';
for i = 1:numel(simulation_parameters.grids)
  model = simulation_parameters.grids(i).technical_model;
  text = [text, sprintf('grid %d: %s;', i, strjoin(fieldnames(model)', ','))];
  if isfield(model, 'realtime_power_price')
    text = [text, sprintf(' prices %s;', mat2str(model.realtime_power_price'))];
  end
end
init_error.severity_code = 'DISPATCH_SIMULATION_ERROR';
init_error.error_description = text;
custom_variables = struct();
end
