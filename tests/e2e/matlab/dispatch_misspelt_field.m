function [new_simulation_state, custom_variables] = dispatch_misspelt_field(simulation_parameters, simulation_state, custom_variables)
% Reads a field whose name is misspelt.
new_simulation_state = simulation_state;
available = simulation_state.generators(1).power_availble;
end
