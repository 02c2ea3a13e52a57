function [new_simulation_state, custom_variables] = dispatch_without_ac_bus(simulation_parameters, simulation_state, custom_variables)
% Decides everything, then drops the AC bus.
new_simulation_state = rmfield(set_decisions(simulation_state), 'ac_bus');
end
