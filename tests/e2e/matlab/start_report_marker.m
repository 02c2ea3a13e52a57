function [init_error, custom_variables] = start_report_marker(simulation_parameters)
% Reports as a simulation error whether the marker of start_mark_workspace is present.
init_error.severity_code = 'DISPATCH_SIMULATION_ERROR';
init_error.error_description = sprintf('marker present: %d', evalin('base', 'exist(''tamlo_workspace_marker'', ''var'')'));
custom_variables = struct();
end
