// The one kind of failure the bench reports for bad input: a message naming the file and
// the JSON path or CSV line at fault. main turns it into exit status 2.
#ifndef TAMLO_HOST_INPUT_ERROR_H
#define TAMLO_HOST_INPUT_ERROR_H

#include <stdexcept>
#include <string>

namespace tamlo_host {

class InputError : public std::runtime_error {
public:
    explicit InputError(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace tamlo_host

#endif
