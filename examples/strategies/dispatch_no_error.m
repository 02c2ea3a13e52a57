function init_error = dispatch_no_error()
% The init_error of a start that went well.
init_error.severity_code = 'DISPATCH_NO_ERROR';
init_error.error_description = '';
end
