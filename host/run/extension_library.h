// Loads a dispatch extension library with dlopen and makes extension objects from it.
#ifndef TAMLO_HOST_EXTENSION_LIBRARY_H
#define TAMLO_HOST_EXTENSION_LIBRARY_H

#include <string>
#include <vector>

#include "dispatch_extension_interface.h"

namespace tamlo_host {

class ExtensionLibrary {
public:
    // Throws InputError when the library cannot be loaded or lacks create_engine_extension.
    explicit ExtensionLibrary(const std::string& path);
    ~ExtensionLibrary();
    ExtensionLibrary(const ExtensionLibrary&) = delete;
    ExtensionLibrary& operator=(const ExtensionLibrary&) = delete;

    // A new extension object; release it with destroy(), never delete.
    IDispatchExtension* create() const { return create_(); }
    const std::string& path() const { return path_; }
    // A symbol of the engine library the extension loaded, or null. A lookup through the
    // library's own handle searches what it pulled in; RTLD_DEFAULT would not, as the
    // extension is loaded RTLD_LOCAL.
    void* engine_symbol(const char* name) const;
    enum class CallTimeout { set, unavailable, refused };
    // Our libeng's time limit for every engine opened later in this process (0: none).
    // unavailable with an engine library that has no such limit, such as MATLAB's own.
    CallTimeout set_call_timeout(double seconds) const;

private:
    std::string path_;
    void* handle_ = nullptr;
    CreateEngineExtensionFunction create_ = nullptr;
};

// Where the bench looks for the extension when --extension is not given: beside the
// program in the build tree (../lib), in the installed library folder, then its own folder.
std::vector<std::string> default_extension_candidates();
// The first candidate that exists; throws InputError listing them all when none does.
std::string find_default_extension();

}  // namespace tamlo_host

#endif
