function [init_error, custom_variables] = start_fails(simulation_parameters)
% Fails before it assigns any output.
error('start_fails stops on purpose');
end
