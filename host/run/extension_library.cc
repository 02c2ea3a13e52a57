// dlopen and the default places of the extension relative to the running program.
#include "extension_library.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

#include "input_error.h"

#ifndef TAMLO_BENCH_RELATIVE_LIBDIR
#define TAMLO_BENCH_RELATIVE_LIBDIR "../lib"
#endif

namespace tamlo_host {

namespace {
constexpr const char* library_name = "libtamlo_matlab_dispatch.so";
}

ExtensionLibrary::ExtensionLibrary(const std::string& path) : path_(path) {
    // RTLD_LOCAL keeps the extension's symbols to itself; RTLD_NOW reports missing ones here;
    // RTLD_NODELETE keeps its code mapped after dlclose, so leak and crash reports at exit
    // can still name its functions.
    handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (handle_ == nullptr) {
        const char* why = dlerror();
        throw InputError(path + ": cannot load the extension: " + (why ? why : "unknown reason"));
    }
    void* symbol = dlsym(handle_, "create_engine_extension");
    if (symbol == nullptr) {
        dlclose(handle_);
        handle_ = nullptr;
        throw InputError(path + ": the library does not export create_engine_extension");
    }
    create_ = reinterpret_cast<CreateEngineExtensionFunction>(symbol);
}

ExtensionLibrary::~ExtensionLibrary() {
    if (handle_ != nullptr) dlclose(handle_);
}

void* ExtensionLibrary::engine_symbol(const char* name) const {
    dlerror();
    return dlsym(handle_, name);
}

ExtensionLibrary::CallTimeout ExtensionLibrary::set_call_timeout(double seconds) const {
    // Declared in platform/include/tamlo_eng_ext.h; looked up at run time so that the bench
    // also runs against MATLAB's libeng.
    using SetDefaultCallTimeout = int (*)(double);
    const auto set = reinterpret_cast<SetDefaultCallTimeout>(engine_symbol("tamlo_engSetDefaultCallTimeout"));
    if (set == nullptr) return CallTimeout::unavailable;
    return set(seconds) == 0 ? CallTimeout::set : CallTimeout::refused;
}

std::vector<std::string> default_extension_candidates() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::filesystem::path folder = error ? std::filesystem::current_path() : program.parent_path();
    std::vector<std::string> candidates;
    for (const std::filesystem::path& dir :
         {folder / "../lib", folder / TAMLO_BENCH_RELATIVE_LIBDIR, folder}) {
        const std::string candidate = (dir / library_name).lexically_normal().string();
        bool seen = false;
        for (const std::string& c : candidates) seen = seen || c == candidate;
        if (!seen) candidates.push_back(candidate);
    }
    return candidates;
}

std::string find_default_extension() {
    const std::vector<std::string> candidates = default_extension_candidates();
    for (const std::string& candidate : candidates) {
        if (std::filesystem::exists(candidate)) return candidate;
    }
    std::string message = std::string("cannot find the extension ") + library_name + "; looked in:";
    for (const std::string& candidate : candidates) message += "\n  " + candidate;
    message += "\nbuild it (target tamlo_matlab_dispatch) or name it with --extension PATH";
    throw InputError(message);
}

}  // namespace tamlo_host
