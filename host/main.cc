// dispatch-bench: runs MATLAB dispatch strategies over scenarios without the simulator.
#include <exception>
#include <iostream>

#include "command_line.h"

int main(int argc, char** argv) {
    try {
        return tamlo_host::run_command_line(argc, argv, std::cout, std::cerr);
    } catch (const std::exception& e) {
        // Not bad input: something the bench did not expect, such as a full disk.
        std::cerr << "dispatch-bench: " << e.what() << '\n';
        return tamlo_host::exit_critical;
    }
}
