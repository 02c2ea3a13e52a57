function [new_simulation_state, custom_variables] = dispatch_count_steps(simulation_parameters, simulation_state, custom_variables)
% Counts its calls in custom_variables and decides the generators from the count.
custom_variables.steps = custom_variables.steps + 1;
new_simulation_state = simulation_state;
for i = 1:numel(new_simulation_state.generators)
  new_simulation_state.generators(i).power_setpoint = custom_variables.steps;
end
end
