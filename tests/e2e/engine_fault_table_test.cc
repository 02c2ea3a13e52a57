// Engine faults seen through the extension: each ends the run with a critical error that names
// the cause, leaves no process behind once the engine is closed, and the next run gets a fresh
// engine. Errors in the user's code name the function and line.
#include <gtest/gtest.h>

#include <dirent.h>
#include <dlfcn.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>

#include <fstream>
#include <vector>

#include "loaded_extension.h"

namespace tamlo_e2e {
namespace {

using tamlo_dispatch::DISPATCH_CRITICAL_ERROR;
using tamlo_dispatch::DISPATCH_NO_ERROR;
using tamlo_dispatch::SimulationParameters;

// Child processes of this test process (running or unreaped).
std::vector<int> child_processes() {
    std::vector<int> pids;
    DIR* tasks = opendir("/proc/self/task");
    if (tasks == nullptr) return pids;
    while (dirent* entry = readdir(tasks)) {
        if (entry->d_name[0] == '.') continue;
        std::ifstream children(std::string("/proc/self/task/") + entry->d_name + "/children");
        int pid = 0;
        while (children >> pid) pids.push_back(pid);
    }
    closedir(tasks);
    return pids;
}

// Engine processes started by this test process, wherever they are now (an orphan has a new
// parent but keeps its command line).
std::vector<int> engines_of_this_process() {
    std::vector<int> pids;
    const std::string parent = std::to_string(::getpid());
    DIR* proc = opendir("/proc");
    if (proc == nullptr) return pids;
    while (dirent* entry = readdir(proc)) {
        const int pid = std::atoi(entry->d_name);
        if (pid <= 0) continue;
        std::ifstream file(std::string("/proc/") + entry->d_name + "/cmdline");
        std::vector<std::string> args;
        std::string arg;
        while (std::getline(file, arg, '\0')) args.push_back(arg);
        if (args.size() < 5 || args[0].find("octave-engine") == std::string::npos) continue;
        for (size_t k = 1; k + 1 < args.size(); ++k)
            if (args[k] == "--parent" && args[k + 1] == parent) pids.push_back(pid);
    }
    closedir(proc);
    return pids;
}

// The default call time limit of the libeng the loaded extension uses.
void set_default_call_timeout(double seconds) {
    create_extension();  // the library is loaded by then
    void* library = dlopen(TAMLO_EXTENSION_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr) << dlerror();
    using SetTimeout = int (*)(double);
    auto set = reinterpret_cast<SetTimeout>(dlsym(library, "tamlo_engSetDefaultCallTimeout"));
    ASSERT_NE(set, nullptr) << dlerror();
    EXPECT_EQ(set(seconds), 0);
    dlclose(library);
}

std::string start_command(const std::string& function) {
    return "[init_error, custom_variables] = " + function + "(simulation_parameters);";
}

TEST(EngineFaultTable, EachFaultNamesItsCauseAndTheNextRunGetsAFreshEngine) {
    const std::string ended = "The MATLAB engine process has ended ";
    const std::string time_limit = "The MATLAB engine process was ended after the call ran past its time limit of 2 s.";
    const std::string no_terminal = ": the MATLAB engine runs without a terminal";
    struct Row {
        const char* what;
        const char* start_function;
        int signal_from_test;  // sent to the engine after a first, good start; 0: no such start
        double time_limit;     // seconds; generous unless the limit is the cause
        std::string cause;     // must appear in the start's message
        bool engine_ends;
    } rows[] = {
        {"killed", "start_ok", SIGKILL, 60, ended + "(killed by signal 9 (SIGKILL)).", true},
        {"stopped", "start_ok", SIGSTOP, 2, time_limit, true},
        {"crash", "start_crash", 0, 60, ended + "(killed by signal 4 (SIGILL)).", true},
        {"exit(3)", "start_exit", 0, 60, ended + "(quit or exit called, exit status 3).", true},
        {"quit", "start_quit", 0, 60, ended + "(quit or exit called, exit status 0).", true},
        {"endless loop", "start_endless_loop", 0, 2, time_limit, true},
        {"keyboard", "start_keyboard", 0, 60, "error: keyboard" + no_terminal, false},
        {"input", "start_input", 0, 60, "error: input" + no_terminal, false},
        {"pause", "start_pause", 0, 60, "error: pause" + no_terminal, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        set_default_call_timeout(row.time_limit);
        ExtensionPtr extension = create_extension();
        SimulationParameters good = empty_system(fixture_settings("start_ok", "dispatch_identity", "end_empty_lists"));
        if (row.signal_from_test != 0) {
            ASSERT_EQ(extension->start_simulation(good)->severity, DISPATCH_NO_ERROR);
            const std::vector<int> engines = child_processes();
            ASSERT_EQ(engines.size(), 1u);
            ASSERT_EQ(::kill(engines[0], row.signal_from_test), 0);
        }

        auto result = extension->start_simulation(
            empty_system(fixture_settings(row.start_function, "dispatch_identity", "end_empty_lists")));
        EXPECT_EQ(result->severity, DISPATCH_CRITICAL_ERROR);
        const std::string prefix = "MATLAB error while executing '" + start_command(row.start_function) + "': ";
        EXPECT_EQ(result->message.rfind(prefix, 0), 0u) << result->message;
        EXPECT_NE(result->message.find(row.cause), std::string::npos) << result->message;
        if (row.engine_ends) {
            // A gone engine is reaped at once, and the end call says why it failed too.
            EXPECT_TRUE(child_processes().empty());
            auto messages = extension->end_simulation();
            ASSERT_FALSE(messages->simulation_errors.empty());
            EXPECT_NE(messages->simulation_errors[0].find(row.cause), std::string::npos)
                << messages->simulation_errors[0];
        }

        extension->close_engine();
        EXPECT_TRUE(child_processes().empty());
        EXPECT_TRUE(engines_of_this_process().empty());
        ASSERT_EQ(extension->start_simulation(good)->severity, DISPATCH_NO_ERROR);
        EXPECT_EQ(child_processes().size(), 1u);
        extension->close_engine();
    }
    set_default_call_timeout(0);
}

TEST(EngineFaultTable, ErrorsInTheUsersCodeNameFunctionAndLine) {
    struct Row {
        const char* dispatch_function;
        std::string location;  // after the message, line feeds removed
    } rows[] = {
        {"dispatch_misspelt_field", "error: called from    dispatch_misspelt_field at line 4 column 11"},
        {"dispatch_misspelt_in_subfunction",
         "error: called from    dispatch_misspelt_in_subfunction>first_availability at line 8 column 11"
         "    dispatch_misspelt_in_subfunction at line 4 column 11"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.dispatch_function);
        ExtensionPtr extension = create_extension();
        SimulationParameters parameters = with_settings(
            tamlo_samples::typical_system(), fixture_settings("start_ok", row.dispatch_function, "end_empty_lists"));
        ASSERT_EQ(extension->start_simulation(parameters)->severity, DISPATCH_NO_ERROR);
        auto state = tamlo_samples::make_state(parameters);
        extension->dispatch(state);
        auto messages = extension->end_simulation();
        ASSERT_EQ(messages->simulation_errors.size(), 1u);
        const std::string& message = messages->simulation_errors[0];
        EXPECT_NE(message.find("error: "), std::string::npos) << message;
        EXPECT_NE(message.find("power_availble"), std::string::npos) << message;
        EXPECT_NE(message.find(row.location), std::string::npos) << message;
        extension->close_engine();
    }
}

}  // namespace
}  // namespace tamlo_e2e
