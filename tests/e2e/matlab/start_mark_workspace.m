function [init_error, custom_variables] = start_mark_workspace(simulation_parameters)
% Leaves a marker in the base workspace, to tell a reused engine from a fresh one.
assignin('base', 'tamlo_workspace_marker', 1);
init_error.severity_code = '';
init_error.error_description = '';
custom_variables = struct();
end
