function [new_simulation_state, custom_variables] = dispatch_identity(simulation_parameters, simulation_state, custom_variables)
% Returns the state unchanged.
new_simulation_state = simulation_state;
end
