function end_sim_out = end_two_errors(simulation_parameters, custom_variables)
% Reports two errors, the second with a line feed, and no warnings.
end_sim_out.simulation_errors = {'first error', sprintf('second error\nwith a second line')};
end_sim_out.simulation_warnings = {};
end
