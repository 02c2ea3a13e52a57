// Builds the common tail of every component struct and its cost struct.
#include "component_fields.h"

#include <utility>

#include "struct_primitives.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

void add_component_fields(mxArray* s, std::size_t index, ComponentParameters head, bool include_is_AC) {
    set_number_field(s, index, "component_number", count_to_double(head.component_number));
    if (include_is_AC) set_logical_field(s, index, "is_AC", head.is_AC);
    set_string_field(s, index, "name", std::move(head.name));
    set_struct_field(s, index, "cost", make_cost_struct(head.cost));
}

mxArray* make_cost_struct(const ComponentCost& cost) {
    mxArray* s = make_single_struct();
    set_number_field(s, 0, "capital", cost.capital);
    set_number_field(s, 0, "operation_and_maintenance", cost.operation_and_maintenance);
    set_number_field(s, 0, "replacement", cost.replacement);
    return s;
}

}  // namespace tamlo_marshal
