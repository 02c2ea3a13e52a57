function [new_simulation_state, custom_variables] = dispatch_two_generators(simulation_parameters, simulation_state, custom_variables)
% Decides everything, then keeps only the first two generators.
new_simulation_state = set_decisions(simulation_state);
new_simulation_state.generators = new_simulation_state.generators(1:2);
end
