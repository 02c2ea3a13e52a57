function end_sim_out = field_dump_end(simulation_parameters, custom_variables)
% Fixture: reports nothing.
end_sim_out.simulation_errors = {};
end_sim_out.simulation_warnings = {};
end
