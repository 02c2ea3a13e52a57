function [new_simulation_state, custom_variables] = year_dispatch(simulation_parameters, simulation_state, custom_variables)
% The minimal strategy of the year comparison: the state back unchanged and one more step
% counted, so that both sides can show they made every call.
new_simulation_state = simulation_state;
custom_variables.steps = custom_variables.steps + 1;
end
