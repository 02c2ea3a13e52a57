function [new_simulation_state, custom_variables] = field_dump_dispatch(simulation_parameters, simulation_state, custom_variables)
% Fixture: writes the field list of simulation_state next to the parameters' list
% and returns the state unchanged.
field_dump_write(fullfile(custom_variables.folder, 'simulation_state.txt'), 'simulation_state', simulation_state);
new_simulation_state = simulation_state;
end
