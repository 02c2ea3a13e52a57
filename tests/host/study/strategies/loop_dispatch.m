function [s, custom_variables] = loop_dispatch(simulation_parameters, simulation_state, custom_variables)
% Study test fixture: never returns.
while true
end
end
