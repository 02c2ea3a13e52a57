function [new_simulation_state, custom_variables] = dispatch_sign_violations(simulation_parameters, simulation_state, custom_variables)
% Breaks as many sign rules per time step as custom_variables.violations says (1 to 3).
new_simulation_state = simulation_state;
values = {'capacity_shortage', 'excess_electricity', 'unmet_load'};
for k = 1:custom_variables.violations
  new_simulation_state.ac_bus.(values{k}) = -k;
end
end
