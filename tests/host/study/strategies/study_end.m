function end_sim_out = study_end(simulation_parameters, custom_variables)
% Study test fixture: no messages of its own.
end_sim_out.simulation_errors = {};
end_sim_out.simulation_warnings = {};
end
