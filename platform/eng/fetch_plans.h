// Which variables the host fetched after each command text it evaluates, so that the next
// evaluation of the same text can bring them back with its reply instead of one wait per get.
#ifndef TAMLO_ENG_FETCH_PLANS_H
#define TAMLO_ENG_FETCH_PLANS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tamlo::eng {

class FetchPlans {
public:
    // The names fetched after `command` the last time it ran; empty when unknown.
    const std::vector<std::string>& plan_for(std::string_view command) const;

    // An evaluation of `command` starts the window in which gets are noted.
    void open_window(std::string_view command);
    // A get inside the window.
    void note_get(std::string_view name);
    // Any call other than a get ends the window; what it noted becomes the command's plan.
    void close_window();

private:
    struct Plan {
        std::string command;
        std::vector<std::string> names;
    };
    // A host evaluates a few command texts over and over; beyond these, the oldest is forgotten.
    static constexpr std::size_t max_plans = 8;
    static constexpr std::size_t max_command_length = 4096;

    std::vector<Plan> plans_;
    std::size_t next_replaced_ = 0;
    bool window_open_ = false;
    std::string command_;
    std::vector<std::string> noted_;
};

}  // namespace tamlo::eng

#endif
