function [new_simulation_state, custom_variables] = dispatch_code(simulation_parameters, simulation_state, custom_variables)
% Returns the state as the MATLAB text of the extension parameter 'dispatch code' changes it.
new_simulation_state = simulation_state;
eval(parameter(simulation_parameters, 'dispatch code'));
end
