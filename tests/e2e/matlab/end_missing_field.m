function end_sim_out = end_missing_field(simulation_parameters, custom_variables)
% Returns end_sim_out without simulation_warnings.
end_sim_out.simulation_errors = {'an error nobody reads'};
end
