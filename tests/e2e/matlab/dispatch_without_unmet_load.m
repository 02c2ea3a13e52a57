function [new_simulation_state, custom_variables] = dispatch_without_unmet_load(simulation_parameters, simulation_state, custom_variables)
% Decides everything, then drops the AC bus's unmet load.
new_simulation_state = set_decisions(simulation_state);
new_simulation_state.ac_bus = rmfield(new_simulation_state.ac_bus, 'unmet_load');
end
