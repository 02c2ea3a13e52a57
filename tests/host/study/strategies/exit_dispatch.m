function [s, custom_variables] = exit_dispatch(simulation_parameters, simulation_state, custom_variables)
% Study test fixture: ends the engine.
exit(3);
end
