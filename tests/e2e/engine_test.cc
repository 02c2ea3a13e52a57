// The engine behind the loaded extension: faults that end a run, closing and reopening, a long
// run's memory, and host-made grid models reaching MATLAB.
#include <gtest/gtest.h>

#include <dirent.h>
#include <dlfcn.h>
#include <malloc.h>
#include <signal.h>

#include <fstream>
#include <memory>

#include "loaded_extension.h"

namespace tamlo_e2e {
namespace {

using tamlo_dispatch::DISPATCH_CRITICAL_ERROR;
using tamlo_dispatch::DISPATCH_NO_ERROR;
using tamlo_dispatch::DISPATCH_SIMULATION_ERROR;
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
        {"", SIGSTOP, 2, time_limit, true},
        {"kill(getpid(), 4);", 0, 60, ended + "(killed by signal 4 (SIGILL)).", true},
        {"exit(3);", 0, 60, ended + "(quit or exit called, exit status 3).", true},
        {"quit;", 0, 60, ended + "(quit or exit called, exit status 0).", true},
        {"while true, end", 0, 2, time_limit, true},
        {"keyboard;", 0, 60, "error: keyboard" + no_terminal, false},
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
        EXPECT_TRUE(child_processes().empty());
        ASSERT_EQ(extension->start_simulation(code_run(""))->severity, DISPATCH_NO_ERROR);
        EXPECT_EQ(child_processes().size(), 1u);
    }
    set_default_call_timeout(0);
}

TEST(EngineLifecycle, ClosedEngineIsNeverUsedAndAStartOpensAFreshOne) {
    const std::size_t children_before = child_processes().size();
    const SimulationParameters mark = code_run("assignin('base', 'tamlo_marker', 1);");
    const SimulationParameters report = code_run(
        "init_error.severity_code = 'DISPATCH_SIMULATION_ERROR'; init_error.error_description = "
        "sprintf('marker present: %d', evalin('base', 'exist(''tamlo_marker'', ''var'')'));");
    ExtensionPtr extension = create_extension();
    ASSERT_EQ(extension->start_simulation(mark)->severity, DISPATCH_NO_ERROR);
    EXPECT_EQ(child_processes().size(), children_before + 1);
    // Same engine: the marker is there.
    EXPECT_EQ(extension->start_simulation(report)->message, "MATLAB error: marker present: 1");

    extension->close_engine();
    extension->close_engine();  // closing twice is harmless
    EXPECT_EQ(child_processes().size(), children_before);

    // A fresh engine: empty workspace, working folder set again.
    EXPECT_EQ(extension->start_simulation(report)->message, "MATLAB error: marker present: 0");
    EXPECT_EQ(child_processes().size(), children_before + 1);
    // Destroying the object closes its engine.
    extension.reset();
    EXPECT_EQ(child_processes().size(), children_before);
}

TEST(LongRun, ThousandTimeStepsReadBackAndKeepTheHeapFlat) {
    ExtensionPtr extension = create_extension();
    SimulationParameters parameters = code_run(
        "", "custom_variables.steps = custom_variables.steps + 1; "
            "new_simulation_state.generators(2).power_setpoint = custom_variables.steps;",
        "", tamlo_samples::make_system(1));
    ASSERT_EQ(extension->start_simulation(parameters)->severity, DISPATCH_NO_ERROR);
    const tamlo_dispatch::SimulationState first = tamlo_samples::make_state(parameters);
    auto run_steps = [&](std::uint32_t from, std::uint32_t count) {
        for (std::uint32_t step = from; step < from + count; ++step) {
            tamlo_dispatch::SimulationState state = first;
            state.current_timestep = step;
            extension->dispatch(state);
            ASSERT_EQ(state.generator_list[1].power_setpoint, static_cast<double>(step + 1));
        }
    };
    // The warning list fills up to its limit in the first steps; the cached structs are made.
    run_steps(0, 50);
    [[maybe_unused]] const std::size_t before = mallinfo2().uordblks;
    run_steps(50, 950);
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
    ExtensionPtr extension = create_extension();
    auto result = extension->start_simulation(parameters);
    EXPECT_EQ(result->severity, DISPATCH_SIMULATION_ERROR);
    EXPECT_EQ(result->message, "MATLAB error: "
              "grid 1: model_type,demand_rate,demand_rate_index,realtime_power_price,realtime_sellback_rate; "
              "prices [0.1 0.25 0.3];"
              "grid 2: model_type,tariff_name,tariff_code,consumption_rates,demand_rates,fixed_rates,minimum_rates,"
              "tax_rates,purchase_price,export_price,demand_price;"
              "grid 3: model_type,demand_rate,demand_rate_index,grid_rate,grid_rate_index;"
              "grid 4: model_type;"
              "grid 5: model_type;");
}

}  // namespace
}  // namespace tamlo_e2e
