// Whole runs of the loaded extension through the real engine, as a host makes them: settings,
// the three functions' outputs and failures, the run's error state and warnings, engine faults
// and restarts, a long run's memory, and host-made grid models.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <malloc.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "extension_loader.h"
#include "numbered_system.h"
#include "sample_systems.h"

namespace tamlo_e2e {
namespace {

using tamlo_dispatch::DISPATCH_CRITICAL_ERROR;
using tamlo_dispatch::DISPATCH_NO_ERROR;
using tamlo_dispatch::DISPATCH_SIMULATION_ERROR;
using tamlo_dispatch::SimulationParameters;
using tamlo_dispatch::SimulationState;
using tamlo_test_support::create_extension;
using tamlo_test_support::ExtensionPtr;
using Texts = std::vector<std::string>;

// `system` set to run the three named fixture functions.
SimulationParameters run_of(const char* start, const char* dispatch, const char* end,
                            SimulationParameters system = {}) {
    tamlo_samples::add_settings(system, {TAMLO_E2E_FIXTURE_DIR, start, dispatch, end});
    return system;
}

// A run of start_code, dispatch_code and end_code (end_empty_lists without end code), which run
// the MATLAB text given here.
SimulationParameters code_run(const std::string& start_code, const std::string& dispatch_code = "",
                              const std::string& end_code = "", SimulationParameters system = {}) {
    system = run_of("start_code", "dispatch_code", end_code.empty() ? "end_empty_lists" : "end_code", system);
    tamlo_samples::add_text_parameter(system, "start code", start_code);
    tamlo_samples::add_text_parameter(system, "dispatch code", dispatch_code);
    tamlo_samples::add_text_parameter(system, "end code", end_code);
    return system;
}

// Child processes of this test process (running or unreaped).
std::vector<int> child_processes() {
    std::vector<int> pids;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream children(task.path() / "children");
        for (int pid = 0; children >> pid;) pids.push_back(pid);
    }
    return pids;
}

// The default call time limit of the libeng the loaded extension uses.
void set_default_call_timeout(double seconds) {
    create_extension();  // the library is loaded by then
    void* library = dlopen(TAMLO_EXTENSION_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr) << dlerror();
    auto set = reinterpret_cast<int (*)(double)>(dlsym(library, "tamlo_engSetDefaultCallTimeout"));
    ASSERT_NE(set, nullptr) << dlerror();
    EXPECT_EQ(set(seconds), 0);
    dlclose(library);
}

const std::string no_engine_dispatch =
    "The dispatch function was not called: no MATLAB engine is open. start_simulation has to succeed in opening one "
    "first.";
const std::string no_engine_end =
    "The end simulation function was not called: no MATLAB engine is open. start_simulation has to succeed in "
    "opening one first.";
const std::string not_a_struct =
    "Output variable simulation_state was not of type struct. Check that your MATLAB dispatch function returns a "
    "struct simulation_state.";

// A start stopped by its settings opens no engine: dispatch and end report that instead of
// calling MATLAB, and the dispatch's critical error is final.
TEST(Settings, EmptySettingIsCriticalTakesTheParametersAndOpensNoEngine) {
    const std::string dir = TAMLO_E2E_FIXTURE_DIR;
    const struct {
        const char* behaviour;
        std::vector<std::pair<std::string, std::string>> parameters;
        const char* message;
    } rows[] = {
        {"end missing",
         {{"path", dir}, {"start simulation", "s"}, {"dispatch", "d"}},
         "Matlab end simulation function name cannot be empty"},
        {"key in other letter case",
         {{"Path", dir}, {"start simulation", "s"}, {"dispatch", "d"}, {"end simulation", "e"}},
         "Matlab working directory cannot be empty"},
        {"key with a blank",
         {{"path", dir}, {" start simulation", "s"}, {"dispatch", "d"}, {"end simulation", "e"}},
         "Matlab start simulation function name cannot be empty"},
        {"last occurrence wins",
         {{"path", dir}, {"start simulation", "s"}, {"dispatch", "d"}, {"dispatch", ""}, {"end simulation", "e"}},
         "Matlab dispatch function name cannot be empty"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.behaviour);
        SimulationParameters parameters;
        parameters.number_of_timesteps = 17;
        for (const auto& [name, value] : row.parameters) tamlo_samples::add_text_parameter(parameters, name, value);
        ExtensionPtr extension = create_extension();
        auto result = extension->start_simulation(parameters);
        EXPECT_EQ(result->severity, DISPATCH_CRITICAL_ERROR);
        EXPECT_EQ(result->message, row.message);
        EXPECT_EQ(extension->get_result_parameters()->number_of_timesteps, 17u);
        SimulationState state;
        state.ac_bus.load_served = 3;
        extension->dispatch(state);
        EXPECT_EQ(state.ac_bus.load_served, 3);
        EXPECT_EQ(extension->end_simulation()->simulation_errors, (Texts{no_engine_end, no_engine_dispatch}));
        EXPECT_EQ(extension->start_simulation(code_run(""))->message, no_engine_dispatch);
    }
}

// The working folder is entered when the engine opens: one that cannot be entered is critical.
TEST(EngineStart, MissingFolderIsCritical) {
    SimulationParameters parameters = code_run("");
    parameters.extension_parameters[0].text_value = "/nonexistent/tamlo folder";
    auto failed = create_extension()->start_simulation(parameters);
    EXPECT_EQ(failed->severity, DISPATCH_CRITICAL_ERROR);
    EXPECT_EQ(failed->message, "MATLAB error: error: /nonexistent/tamlo folder: No such file or directory");
}

// One engine serves every row: each row is a new run on the same object.
TEST(StartFunction, InitErrorDecidesTheOutcome) {
    const std::string refused =
        "init_error.severity_code = 'DISPATCH_CRITICAL_ERROR'; "
        "init_error.error_description = 'the start function refuses this run';";
    const struct {
        const char* start_function;
        std::string code;
        tamlo_dispatch::DispatchSeverity severity;
        std::string message;
    } rows[] = {
        // First, while the workspace holds no init_error of an earlier run.
        // A function with one output.
        {"end_empty_lists", "", DISPATCH_CRITICAL_ERROR,
         "MATLAB error while executing '[init_error, custom_variables] = end_empty_lists(simulation_parameters);': "
         "error: end_empty_lists: function called with too many outputserror: called from    end_empty_lists"},
        {"start_code", "disp('text'); warning('a warning'); x = 42", DISPATCH_NO_ERROR, ""},
        {"start_code", refused, DISPATCH_CRITICAL_ERROR, "MATLAB error: the start function refuses this run"},
        // Failing before returning leaves the earlier run's init_error in the workspace.
        {"start_code", "error('stops on purpose');", DISPATCH_CRITICAL_ERROR,
         "MATLAB error: the start function refuses this run"},
    };
    ExtensionPtr extension = create_extension();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code);
        SimulationParameters parameters = code_run(row.code);
        parameters.extension_parameters[1].text_value = row.start_function;
        auto result = extension->start_simulation(parameters);
        EXPECT_EQ(result->severity, row.severity);
        EXPECT_EQ(result->message, row.message);
    }
    // A critical start is the host's to act on: it is not stored, and dispatch still runs.
    SimulationState state;
    extension->dispatch(state);
    EXPECT_EQ(extension->end_simulation()->simulation_errors, Texts{});
}

// A fresh engine: its workspace holds no end_sim_out of an earlier run, which would be read instead.
TEST(EndFunction, FailingIsAnErrorOfTheRun) {
    ExtensionPtr extension = create_extension();
    ASSERT_EQ(extension->start_simulation(code_run("", "", "x = 1;"))->severity, DISPATCH_NO_ERROR);
    EXPECT_EQ(extension->end_simulation()->simulation_errors,
              Texts{"MATLAB error: MATLAB error while executing 'end_sim_out = end_code(simulation_parameters, "
                    "custom_variables);': error: 'end_sim_out' undefined near line 1, column 10"
                    "error: called from    end_code at line 4 column 1"});
}

TEST(FailingDispatch, PrintingIsCriticalWithItsMessage) {
    ExtensionPtr extension = create_extension();
    ASSERT_EQ(extension->start_simulation(code_run("", "disp('hello from dispatch');"))->severity, DISPATCH_NO_ERROR);
    SimulationState state;
    extension->dispatch(state);
    EXPECT_EQ(extension->end_simulation()->simulation_errors,
              Texts{"MATLAB error while executing '[new_simulation_state, custom_variables] = dispatch_code("
                    "simulation_parameters, simulation_state, custom_variables);': hello from dispatch"});
}

TEST(ErrorState, WarningsAreThoseOfTheRunAndACriticalErrorIsFinalAndListedLast) {
    const auto shortage = [](const char* step) {
        return std::string(
                   "Capacity shortage can't be less than zero: simulation_state.ac_bus.capacity_shortage = "
                   "-1.000000 kW. Time step: ") +
               step;
    };
    const std::string negative_shortage = "new_simulation_state.ac_bus.capacity_shortage = -1; ";
    ExtensionPtr extension = create_extension();
    ASSERT_EQ(extension->start_simulation(code_run("", negative_shortage))->severity, DISPATCH_NO_ERROR);
    SimulationState state;
    state.current_timestep = 1;
    extension->dispatch(state);
    EXPECT_EQ(extension->end_simulation()->simulation_warnings, Texts{shortage("2")});

    // A new start empties the lists. A clean step at time step 0, then a failing one.
    SimulationParameters parameters = code_run(
        "",
        negative_shortage + "if custom_variables.steps, new_simulation_state = 42; end; custom_variables.steps = 1;",
        "disp('printing is ignored'); end_sim_out.simulation_errors = {'end error'}; "
        "end_sim_out.simulation_warnings = {'w'};");
    parameters.number_of_timesteps = 24;
    ASSERT_EQ(extension->start_simulation(parameters)->severity, DISPATCH_NO_ERROR);
    state.current_timestep = 0;
    extension->dispatch(state);
    state.current_timestep = 3;
    state.ac_bus.capacity_shortage = 12.5;
    extension->dispatch(state);
    // The failing dispatch, and every later one, leave the state alone.
    EXPECT_EQ(state.ac_bus.capacity_shortage, 12.5);

    // Every later start returns a copy of the stored error and takes nothing over.
    EXPECT_EQ(extension->start_simulation(code_run(""))->message, not_a_struct);
    EXPECT_EQ(extension->get_result_parameters()->number_of_timesteps, 24u);
    extension->dispatch(state);
    EXPECT_EQ(state.ac_bus.capacity_shortage, 12.5);

    // The end function of the first run still runs; its texts are prefixed, the critical message comes last.
    auto messages = extension->end_simulation();
    EXPECT_EQ(messages->simulation_errors, (Texts{"MATLAB error: end error", not_a_struct}));
    EXPECT_EQ(messages->simulation_warnings, (Texts{"MATLAB warning: w", shortage("1")}));
}

TEST(EngineFaults, EachNamesItsCauseAndTheNextRunGetsAFreshEngine) {
    const std::string ended = "The MATLAB engine process has ended ";
    const std::string time_limit = "The MATLAB engine process was ended after the call ran past its time limit of 2 s.";
    const std::string no_terminal = ": the MATLAB engine runs without a terminal";
    const struct {
        const char* code;      // run by the start function
        int signal_from_test;  // sent to the engine after a first, good start; 0: no such start
        double time_limit;     // seconds; generous unless the limit is the cause
        std::string cause;     // must appear in the start's message
        bool engine_ends;
    } rows[] = {
        {"", SIGKILL, 60, ended + "(killed by signal 9 (SIGKILL)).", true},
        {"kill(getpid(), 4);", 0, 60, ended + "(killed by signal 4 (SIGILL)).", true},
        {"while true, end", 0, 2, time_limit, true},
        {"input('How much? ');", 0, 60, "error: input" + no_terminal, false},
        {"pause;", 0, 60, "error: pause" + no_terminal, false},
    };
    const std::string prefix =
        "MATLAB error while executing '[init_error, custom_variables] = start_code(simulation_parameters);': ";
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code + row.cause);
        set_default_call_timeout(row.time_limit);
        ExtensionPtr extension = create_extension();
        if (row.signal_from_test != 0) {
            ASSERT_EQ(extension->start_simulation(code_run(""))->severity, DISPATCH_NO_ERROR);
            const std::vector<int> engines = child_processes();
            ASSERT_EQ(engines.size(), 1u);
            ASSERT_EQ(::kill(engines[0], row.signal_from_test), 0);
        }
        auto result = extension->start_simulation(code_run(row.code));
        EXPECT_EQ(result->severity, DISPATCH_CRITICAL_ERROR);
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
        extension->close_engine();  // closing twice is harmless
        EXPECT_TRUE(child_processes().empty());
        ASSERT_EQ(extension->start_simulation(code_run(""))->severity, DISPATCH_NO_ERROR);
        EXPECT_EQ(child_processes().size(), 1u);
    }
    // Destroying the object closes its engine.
    EXPECT_TRUE(child_processes().empty());
    set_default_call_timeout(0);
}

// The numbered system has every component kind and grid model, so every struct is built each step.
TEST(LongRun, ThousandTimeStepsReadBackAndKeepTheHeapFlat) {
    tamlo_numbered::Numbering numbering;
    SimulationParameters parameters =
        code_run("",
                 "custom_variables.steps = custom_variables.steps + 1; "
                 "new_simulation_state.generators(1).power_setpoint = custom_variables.steps;",
                 "", tamlo_numbered::numbered_system(numbering));
    const SimulationState first = tamlo_numbered::numbered_state(numbering);
    ExtensionPtr extension = create_extension();
    ASSERT_EQ(extension->start_simulation(parameters)->severity, DISPATCH_NO_ERROR);
    // The warning list fills up to its limit in the first steps; the cached structs are made.
    [[maybe_unused]] std::size_t before = 0;
    for (std::uint32_t step = 0; step < 1000; ++step) {
        if (step == 50) before = mallinfo2().uordblks;
        SimulationState state = first;
        state.current_timestep = step;
        extension->dispatch(state);
        ASSERT_EQ(state.generator_list[0].power_setpoint, step + 1.0);
    }
    [[maybe_unused]] const std::size_t after = mallinfo2().uordblks;
    EXPECT_EQ(extension->end_simulation()->simulation_errors, Texts{});
    // A coarse bound: even 64 bytes lost per step would exceed it. The sanitizer's allocator
    // keeps its own books.
#if !defined(__SANITIZE_ADDRESS__)
    EXPECT_LT(after, before + 950 * 64) << "heap grew from " << before << " to " << after;
#endif
}

// Claims to be a real-time model without being one.
class ImpostorModel : public tamlo_dispatch::IGridModel {
public:
    tamlo_dispatch::GridModelType get_model_type() const override { return tamlo_dispatch::GridModelType::RealTime; }
};

// Grid models made by this program, outside the library, reach MATLAB through the library's
// checked downcast.
TEST(GridModels, HostMadeModelsAppearInMatlab) {
    SimulationParameters parameters = run_of("start_report_grids", "d", "e");
    using namespace tamlo_dispatch;
    auto real_time = std::make_shared<RealTime>();
    real_time->realtime_power_price = {0.1, 0.25, 0.3};
    // The last two may not be read through a bad pointer.
    for (auto model : std::vector<std::shared_ptr<IGridModel>>{real_time, std::make_shared<ComplexUtility>(),
                                                               std::make_shared<Scheduled>(), nullptr,
                                                               std::make_shared<ImpostorModel>()}) {
        parameters.grid_list.emplace_back().technical_model = model;
    }
    auto result = create_extension()->start_simulation(parameters);
    EXPECT_EQ(result->severity, DISPATCH_SIMULATION_ERROR);
    EXPECT_EQ(result->message,
              "MATLAB error: RealTime 5;ComplexUtility 11;Scheduled 5;none 1;unknown 0 1;prices [0.1 0.25 0.3]");
}

}  // namespace
}  // namespace tamlo_e2e
