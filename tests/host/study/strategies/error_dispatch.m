function [s, custom_variables] = error_dispatch(simulation_parameters, simulation_state, custom_variables)
% Study test fixture: fails on purpose.
error('study fixture fails on purpose');
end
