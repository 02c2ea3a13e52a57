// The extension, loaded as a host loads it, and the settings the strategy tests give it.
#include "loaded_extension.h"

namespace tamlo_strategies {

tamlo_dispatch::ExtensionParameter text_parameter(std::string name, std::string value) {
    tamlo_dispatch::ExtensionParameter parameter;
    parameter.name = std::move(name);
    parameter.type = tamlo_dispatch::ExtensionParameterType::text;
    parameter.text_value = std::move(value);
    return parameter;
}

std::vector<tamlo_dispatch::ExtensionParameter> settings(const std::string& folder, const std::string& prefix) {
    return {text_parameter("path", folder), text_parameter("start simulation", prefix + "_start"),
            text_parameter("dispatch", prefix + "_dispatch"), text_parameter("end simulation", prefix + "_end")};
}

}  // namespace tamlo_strategies
