// Remembers the gets that follow each evaluated command text.
#include "fetch_plans.h"

#include <algorithm>

#include "wire_codec.h"

namespace tamlo::eng {

const std::vector<std::string>& FetchPlans::plan_for(std::string_view command) const {
    static const std::vector<std::string> none;
    for (const Plan& p : plans_) {
        if (p.command == command) return p.names;
    }
    return none;
}

void FetchPlans::open_window(std::string_view command) {
    close_window();
    if (command.size() > max_command_length) return;
    window_open_ = true;
    command_.assign(command);
    noted_.clear();
}

void FetchPlans::note_get(std::string_view name) {
    if (!window_open_ || name.empty() || name.size() > tamlo::wire::max_field_name_length) return;
    if (noted_.size() >= tamlo::wire::max_names_after_eval) return;
    if (std::find(noted_.begin(), noted_.end(), name) == noted_.end()) noted_.emplace_back(name);
}

void FetchPlans::close_window() {
    if (!window_open_) return;
    window_open_ = false;
    for (Plan& p : plans_) {
        if (p.command == command_) {
            p.names.swap(noted_);
            return;
        }
    }
    if (noted_.empty()) return;
    if (plans_.size() < max_plans) {
        plans_.push_back({command_, noted_});
        return;
    }
    plans_[next_replaced_] = {command_, noted_};
    next_replaced_ = (next_replaced_ + 1) % max_plans;
}

}  // namespace tamlo::eng
