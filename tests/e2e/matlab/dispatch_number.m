function [new_simulation_state, custom_variables] = dispatch_number(simulation_parameters, simulation_state, custom_variables)
% Returns a number instead of a struct.
new_simulation_state = 42;
end
