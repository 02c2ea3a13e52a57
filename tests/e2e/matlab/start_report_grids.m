function [init_error, custom_variables] = start_report_grids(simulation_parameters)
% Reports each grid model's type and field count, and the first grid's real-time prices, as a
% simulation error, so the host can read them.
text = '';
for i = 1:numel(simulation_parameters.grids)
  model = simulation_parameters.grids(i).technical_model;
  text = [text, sprintf('%s %d;', model.model_type, numfields(model))];
end
prices = mat2str(simulation_parameters.grids(1).technical_model.realtime_power_price');
init_error.severity_code = 'DISPATCH_SIMULATION_ERROR';
init_error.error_description = [text, 'prices ', prices];
custom_variables = struct();
end
