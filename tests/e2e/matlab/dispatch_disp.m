function [new_simulation_state, custom_variables] = dispatch_disp(simulation_parameters, simulation_state, custom_variables)
% Displays one line, which fails the time step.
disp('hello from dispatch');
new_simulation_state = set_decisions(simulation_state);
end
