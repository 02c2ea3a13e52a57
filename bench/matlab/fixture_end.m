function end_sim_out = fixture_end(simulation_parameters, custom_variables)
% Test fixture for the bench: reports how many steps it saw as a MATLAB warning.
end_sim_out.simulation_errors = {};
end_sim_out.simulation_warnings = {sprintf('fixture saw %d time steps', custom_variables.steps)};
end
