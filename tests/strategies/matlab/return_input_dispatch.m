function [new_simulation_state, custom_variables] = return_input_dispatch(simulation_parameters, simulation_state, custom_variables)
% Fixture: decides nothing, returns the state as received.
new_simulation_state = simulation_state;
end
