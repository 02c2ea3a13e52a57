function [new_simulation_state, custom_variables] = dispatch_set_decisions(simulation_parameters, simulation_state, custom_variables)
% Decides a distinct value for everything that is read back.
new_simulation_state = set_decisions(simulation_state);
end
