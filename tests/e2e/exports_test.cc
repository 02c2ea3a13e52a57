// The extension library's dynamic symbols: what it imports from MATLAB's libraries and what
// it exports, read with nm as a build against MATLAB would show them.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>

namespace {

// Symbol names nm prints for the extension library with the given options.
std::set<std::string> dynamic_symbols(const std::string& options) {
    const std::string command = std::string(TAMLO_NM) + " -D " + options + " --format=posix '" +
                                TAMLO_EXTENSION_LIBRARY + "'";
    std::set<std::string> names;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return names;
    char line[4096];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        // Versioned names (name@VERSION) are the runtime's; ours carry no version.
        const std::string text(line);
        names.insert(text.substr(0, text.find(' ')));
    }
    pclose(pipe);
    return names;
}

TEST(LibraryExports, ImportsExactlyTheMatlabFunctionsItUses) {
    std::set<std::string> imports;
    for (const std::string& name : dynamic_symbols("--undefined-only")) {
        if (name.rfind("mx", 0) == 0 || name.rfind("eng", 0) == 0) imports.insert(name);
    }
    const std::set<std::string> expected = {
        "mxCreateStructMatrix_730", "mxAddField", "mxGetFieldNumber", "mxGetField_730", "mxSetField_730",
        "mxDuplicateArray", "mxDestroyArray", "mxCreateDoubleScalar", "mxCreateLogicalScalar", "mxCreateString",
        "mxCreateDoubleMatrix_730", "mxGetPr", "mxGetScalar", "mxGetString_730", "mxGetCell_730",
        "mxGetNumberOfElements", "mxIsStruct", "mxIsLogicalScalarTrue", "engOpenSingleUse", "engSetVisible",
        "engOutputBuffer", "engEvalString", "engPutVariable", "engGetVariable", "engClose",
    };
    EXPECT_EQ(imports, expected);
}

TEST(LibraryExports, ExportsOnlyTheFactoryAndTheSharedGridModelTypes) {
    std::set<std::string> exports;
    for (const std::string& name : dynamic_symbols("--defined-only")) {
        // Type information and virtual tables of the grid model classes are shared with the
        // host on purpose (checked downcast of host-made models).
        const bool grid_model_type = name.rfind("_ZTIN14tamlo_dispatch", 0) == 0 ||
                                     name.rfind("_ZTSN14tamlo_dispatch", 0) == 0 ||
                                     name.rfind("_ZTVN14tamlo_dispatch", 0) == 0;
        if (!grid_model_type) exports.insert(name);
    }
    EXPECT_EQ(exports, std::set<std::string>{"create_engine_extension"});
}

}  // namespace
