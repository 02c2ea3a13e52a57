// Finds the constructs in MATLAB source that Octave runs and MATLAB refuses or reads otherwise.
#ifndef TAMLO_HOST_OCTAVE_ONLY_RULES_H
#define TAMLO_HOST_OCTAVE_ONLY_RULES_H

#include <string>
#include <string_view>
#include <vector>

namespace tamlo_host {

struct Finding {
    int line;              // from 1
    int column;            // from 1, in bytes
    std::string construct; // as Octave accepts it: "endif", "!=", "#", "\"...\""
    std::string matlab;    // what to write instead

    bool operator==(const Finding&) const = default;
};

// Every Octave-only construct in one file's text, in the order of the source.
std::vector<Finding> find_octave_only(std::string_view source);

}  // namespace tamlo_host

#endif
