function result = dispatch_definitely_greater(a, b)
% True when a exceeds b by more than the extension's relative tolerance of 1e-6.
% Mirrors the comparison the extension uses when it checks a time step, so that a
% strategy takes the same branch the check takes.
t = 1e-6;
if isnan(a) || isnan(b)
  m = NaN;
else
  m = max(abs(a), abs(b));
end
if t > m
  result = false;
else
  result = ~((b - a) / m > -t);
end
end
