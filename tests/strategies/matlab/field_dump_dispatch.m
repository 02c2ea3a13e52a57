function [new_simulation_state, custom_variables] = field_dump_dispatch(simulation_parameters, simulation_state, custom_variables)
% Fixture: adds the field list of simulation_state to the dump and returns the state
% unchanged.
field_dump_write(custom_variables.file, 'a', 'simulation_state', simulation_state);
new_simulation_state = simulation_state;
end
