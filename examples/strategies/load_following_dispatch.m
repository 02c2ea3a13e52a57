function [new_simulation_state, custom_variables] = load_following_dispatch(simulation_parameters, simulation_state, custom_variables)
% Load following: PV and wind first; batteries cover what they leave and charge
% from renewable surplus only; then the grid, then the generators follow the net
% load, each at no more than what is still needed (but at least its minimum load).
% Surplus is sold to the grid where allowed; what remains is excess electricity.
% The plan itself is in dispatch_step. custom_variables.plant holds what
% load_following_start read from simulation_parameters.
% Prints nothing: any printed text fails the time step.
if ~isfield(custom_variables, 'plant')
  custom_variables.plant = dispatch_plant(simulation_parameters);
end
new_simulation_state = dispatch_step(simulation_state, custom_variables.plant, false, [], 0);
end
