function [init_error, custom_variables] = study_start(simulation_parameters)
% Study test fixture: refuses to run unless the engine is fresh, in this folder, with nothing
% in its workspace but simulation_parameters and no global variables.
init_error.severity_code = 'DISPATCH_NO_ERROR';
init_error.error_description = '';
here = fileparts(mfilename('fullpath'));
if ~strcmp(pwd, here) || ~isequal(evalin('base', 'who'), {'simulation_parameters'}) || ~isempty(who('global'))
  init_error.severity_code = 'DISPATCH_CRITICAL_ERROR';
  init_error.error_description = ['not a fresh engine in ' here ': started in ' pwd];
end
custom_variables.steps = 0;
end
