function [new_simulation_state, custom_variables] = dispatch_misspelt_in_subfunction(simulation_parameters, simulation_state, custom_variables)
% Calls a subfunction that reads a field whose name is misspelt.
new_simulation_state = simulation_state;
available = first_availability(simulation_state);
end

function available = first_availability(simulation_state)
available = simulation_state.generators(1).power_availble;
end
