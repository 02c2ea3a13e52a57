function [new_simulation_state, custom_variables] = dispatch_flywheel_states(simulation_parameters, simulation_state, custom_variables)
% Answers the three flywheels with logical true, logical false and the double 1.
new_simulation_state = simulation_state;
new_simulation_state.flywheels(1).flywheel_state = true;
new_simulation_state.flywheels(2).flywheel_state = false;
new_simulation_state.flywheels(3).flywheel_state = 1;
end
