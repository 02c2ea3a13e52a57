function [new_simulation_state, custom_variables] = dispatch_without_batteries(simulation_parameters, simulation_state, custom_variables)
% Decides everything, then drops the batteries.
new_simulation_state = rmfield(set_decisions(simulation_state), 'batteries');
end
