function mode = dispatch_generator_mode(generators, k)
% -1 when generator k is forced off, 1 when it is forced on, 0 when the dispatch
% decides (also when the simulator gave no current_state).
mode = 0;
if isfield(generators, 'current_state')
  state = generators(k).current_state;
  if ischar(state)
    if strncmp(state, 'FORCED_OFF', 10)
      mode = -1;
    elseif strncmp(state, 'FORCED_ON', 9)
      mode = 1;
    end
  end
end
end
