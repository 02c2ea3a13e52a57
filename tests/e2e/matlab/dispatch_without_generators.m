function [new_simulation_state, custom_variables] = dispatch_without_generators(simulation_parameters, simulation_state, custom_variables)
% Decides everything, then drops the generators.
new_simulation_state = rmfield(set_decisions(simulation_state), 'generators');
end
