// Cost of one time step of the extension, part by part and whole, for the typical system
// (argument 1: 2 generators, 1 PV, 1 wind turbine, 1 battery, 1 converter, 1 grid, 2 loads),
// a mid-sized one (10 of each kind) and a large one (50), with an identity strategy and with
// the two bundled strategies; ratios between them follow the table.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "dispatch_extension.h"
#include "engine.h"
#include "matlab_connection.h"
#include "ratio_report.h"
#include "sample_systems.h"
#include "settled_state.h"
#include "simulation_parameters_struct.h"
#include "simulation_state_struct.h"
#include "struct_primitives.h"
#include "validate_dispatch.h"

namespace {

using tamlo_dispatch::SimulationParameters;
using tamlo_dispatch::SimulationState;

// The three MATLAB functions of a strategy and the folder they live in.
struct Strategy {
    const char* path;
    const char* start;
    const char* dispatch;
    const char* end;

    std::string dispatch_command() const {
        return std::string("[new_simulation_state, custom_variables] = ") + dispatch +
               "(simulation_parameters, simulation_state, custom_variables);";
    }
};

// Hands the state back unchanged: what is left is the extension's and the engine's own cost.
const Strategy identity{TAMLO_BENCH_FIXTURE_DIR, "start_ok", "dispatch_identity", "end_empty_lists"};
// The strategies users start from (examples/strategies); they size themselves from
// simulation_parameters, so they run on the sample systems as they are.
const Strategy load_following{TAMLO_BENCH_STRATEGY_DIR, "load_following_start", "load_following_dispatch",
                              "load_following_end"};
const Strategy cycle_charging{TAMLO_BENCH_STRATEGY_DIR, "cycle_charging_start", "cycle_charging_dispatch",
                              "cycle_charging_end"};

const std::string dispatch_command = identity.dispatch_command();

// The count of warnings after which validation stops checking for the rest of a run.
constexpr std::size_t warning_limit = 10;

struct DestroyArray {
    void operator()(mxArray* a) const { mxDestroyArray(a); }
};
using Array = std::unique_ptr<mxArray, DestroyArray>;

// One engine for the whole program, with the strategy's folder, the parameters of the system
// last asked for, and the custom_variables of the strategy's start in its workspace.
class BenchEngine {
public:
    static BenchEngine& instance() {
        static BenchEngine engine;
        return engine;
    }

    // Null, with the reason in bench's error, when the strategy's start or one trial step
    // fails: the figures of a failing call would mean nothing.
    Engine* prepare(benchmark::State& bench, const SimulationParameters& parameters,
                    const Strategy& strategy = identity) {
        Array structure(tamlo_marshal::make_single_struct());
        tamlo_marshal::fill_simulation_parameters_struct(structure.get(), parameters);
        engPutVariable(engine_, "simulation_parameters", structure.get());
        Array state(tamlo_marshal::make_single_struct());
        tamlo_marshal::fill_simulation_state_struct(state.get(), tamlo_bench::settled_state(parameters));
        engPutVariable(engine_, "simulation_state", state.get());
        buffer_[0] = '\0';
        const std::string start = std::string("cd('") + strategy.path + "'); [init_error, custom_variables] = " +
                                  strategy.start + "(simulation_parameters); " + strategy.dispatch_command();
        if (engEvalString(engine_, start.c_str()) != 0 || buffer_[0] != '\0') {
            bench.SkipWithError(("the strategy's start or first step failed: " + std::string(buffer_)).c_str());
            return nullptr;
        }
        Array result(engGetVariable(engine_, "new_simulation_state"));
        if (result == nullptr || !mxIsStruct(result.get())) {
            bench.SkipWithError("the strategy's first step returned no new_simulation_state struct");
            return nullptr;
        }
        return engine_;
    }

private:
    BenchEngine() {
        int status = 0;
        engine_ = engOpenSingleUse("", nullptr, &status);
        if (engine_ == nullptr) {
            std::fprintf(stderr, "cannot start the engine: code %d\n", status);
            std::exit(1);
        }
        engOutputBuffer(engine_, buffer_, sizeof buffer_ - 1);
    }
    ~BenchEngine() { engClose(engine_); }

    Engine* engine_ = nullptr;
    char buffer_[1025] = {};
};

SimulationParameters system_of(const benchmark::State& state) {
    return tamlo_samples::make_system(static_cast<std::size_t>(state.range(0)));
}

// Host side: refilling the cached simulation_state struct.
void BM_BuildState(benchmark::State& bench) {
    const SimulationParameters parameters = system_of(bench);
    const SimulationState state = tamlo_bench::settled_state(parameters);
    Array cached(tamlo_marshal::make_single_struct());
    for (auto _ : bench) {
        tamlo_marshal::fill_simulation_state_struct(cached.get(), state);
        benchmark::ClobberMemory();
    }
}

// Transfer of simulation_state into the engine's workspace (our libeng and the pipe).
void BM_PutState(benchmark::State& bench) {
    const SimulationParameters parameters = system_of(bench);
    Engine* engine = BenchEngine::instance().prepare(bench, parameters);
    if (engine == nullptr) return;
    Array cached(tamlo_marshal::make_single_struct());
    tamlo_marshal::fill_simulation_state_struct(cached.get(), tamlo_bench::settled_state(parameters));
    for (auto _ : bench) {
        engPutVariable(engine, "simulation_state", cached.get());
    }
}

// The engine's evaluation of the strategy's dispatch command, round trip included.
void BM_EngineCall(benchmark::State& bench, const Strategy* strategy) {
    const SimulationParameters parameters = system_of(bench);
    Engine* engine = BenchEngine::instance().prepare(bench, parameters, *strategy);
    if (engine == nullptr) return;
    const std::string command = strategy->dispatch_command();
    for (auto _ : bench) {
        engEvalString(engine, command.c_str());
    }
}

// A round trip of an almost empty command: what an engine call costs besides the evaluation.
void BM_EngineRoundTrip(benchmark::State& bench) {
    Engine* engine = BenchEngine::instance().prepare(bench, system_of(bench));
    if (engine == nullptr) return;
    for (auto _ : bench) {
        engEvalString(engine, "tamlo_bench_x = 1;");
    }
}

// Transfer of new_simulation_state out of the engine.
void BM_GetResult(benchmark::State& bench) {
    Engine* engine = BenchEngine::instance().prepare(bench, system_of(bench));
    if (engine == nullptr) return;
    for (auto _ : bench) {
        Array result(engGetVariable(engine, "new_simulation_state"));
        benchmark::DoNotOptimize(result.get());
    }
}

// The engine traffic of one time step, in the extension's order: put simulation_state, the
// dispatch command, get new_simulation_state. With the separate figures above it shows what
// overlapping the three requests saves.
void BM_EngineTraffic(benchmark::State& bench) {
    const SimulationParameters parameters = system_of(bench);
    Engine* engine = BenchEngine::instance().prepare(bench, parameters);
    if (engine == nullptr) return;
    Array cached(tamlo_marshal::make_single_struct());
    tamlo_marshal::fill_simulation_state_struct(cached.get(), tamlo_bench::settled_state(parameters));
    for (auto _ : bench) {
        engPutVariable(engine, "simulation_state", cached.get());
        engEvalString(engine, dispatch_command.c_str());
        Array result(engGetVariable(engine, "new_simulation_state"));
        benchmark::DoNotOptimize(result.get());
    }
}

// Host side: reading every decision out of new_simulation_state.
void BM_ReadBack(benchmark::State& bench) {
    const SimulationParameters parameters = system_of(bench);
    Engine* engine = BenchEngine::instance().prepare(bench, parameters);
    if (engine == nullptr) return;
    SimulationState state = tamlo_bench::settled_state(parameters);
    Array result(engGetVariable(engine, "new_simulation_state"));
    for (auto _ : bench) {
        tamlo_dispatch::DispatchError outcome;
        bool ok = tamlo_matlab::MatlabConnection::read_new_simulation_state(result.get(), state, parameters, outcome);
        benchmark::DoNotOptimize(ok);
    }
}

// Host side: the validation of one time step that passes every check, as the whole step's
// does (the warning list emptied each time all the same, so no limit can cut the checks short).
void BM_Validate(benchmark::State& bench) {
    const SimulationParameters parameters = system_of(bench);
    const SimulationState state = tamlo_bench::settled_state(parameters);
    tamlo_dispatch::SimulationErrorsAndWarnings lists;
    for (auto _ : bench) {
        lists.simulation_warnings.clear();
        tamlo_validation::validate_dispatch(parameters, state, lists);
        benchmark::DoNotOptimize(lists.simulation_warnings.data());
    }
    if (!lists.simulation_warnings.empty()) {
        bench.SkipWithError(("the sample step warns: " + lists.simulation_warnings.front()).c_str());
    }
}

// The whole time step through the extension object, as the simulator calls it: building and
// putting simulation_state, the dispatch call, the read-back and the validation. Each step
// starts from the same fresh record, as the simulator's would, so a strategy's decisions of
// one step do not feed the next; the record is settled so the identity's answer passes
// validation and every step is checked in full.
void BM_WholeStep(benchmark::State& bench, const Strategy* strategy) {
    SimulationParameters parameters = system_of(bench);
    tamlo_samples::add_settings(parameters, {strategy->path, strategy->start, strategy->dispatch, strategy->end});
    auto extension = std::make_unique<DispatchExtension>();
    auto started = extension->start_simulation(parameters);
    if (started->severity != tamlo_dispatch::DISPATCH_NO_ERROR) {
        bench.SkipWithError(("the strategy's start failed: " + started->message).c_str());
        return;
    }
    const SimulationState first = tamlo_bench::settled_state(parameters);
    SimulationState state = first;
    for (auto _ : bench) {
        state = first;
        extension->dispatch(state);
    }
    // A failed step stops the dispatch calls short, and the end reports why.
    auto ended = extension->end_simulation();
    if (!ended->simulation_errors.empty()) {
        bench.SkipWithError(("the run reported an error: " + ended->simulation_errors.front()).c_str());
        return;
    }
    // Past its limit of warnings validation stops checking, and the figure would leave it out.
    if (ended->simulation_warnings.size() >= warning_limit) {
        bench.SkipWithError(("validation reached its warning limit, the first: " + ended->simulation_warnings.front())
                                .c_str());
        return;
    }
    bench.counters["warnings"] = static_cast<double>(ended->simulation_warnings.size());
}

#define TAMLO_SYSTEMS ->Arg(1)->Arg(10)->Arg(50)->Unit(benchmark::kMicrosecond)->UseRealTime()
BENCHMARK(BM_BuildState) TAMLO_SYSTEMS;
BENCHMARK(BM_PutState) TAMLO_SYSTEMS;
BENCHMARK(BM_EngineRoundTrip) TAMLO_SYSTEMS;
BENCHMARK_CAPTURE(BM_EngineCall, identity, &identity) TAMLO_SYSTEMS;
BENCHMARK_CAPTURE(BM_EngineCall, load_following, &load_following) TAMLO_SYSTEMS;
BENCHMARK_CAPTURE(BM_EngineCall, cycle_charging, &cycle_charging) TAMLO_SYSTEMS;
BENCHMARK(BM_GetResult) TAMLO_SYSTEMS;
BENCHMARK(BM_EngineTraffic) TAMLO_SYSTEMS;
BENCHMARK(BM_ReadBack) TAMLO_SYSTEMS;
BENCHMARK(BM_Validate) TAMLO_SYSTEMS;
BENCHMARK_CAPTURE(BM_WholeStep, identity, &identity) TAMLO_SYSTEMS;
BENCHMARK_CAPTURE(BM_WholeStep, load_following, &load_following) TAMLO_SYSTEMS;
BENCHMARK_CAPTURE(BM_WholeStep, cycle_charging, &cycle_charging) TAMLO_SYSTEMS;

std::vector<tamlo_bench::Ratio> step_ratios() {
    std::vector<tamlo_bench::Ratio> ratios;
    for (const char* n : {"1", "10", "50"}) {
        const std::string size = std::string(" (n = ") + n + ")";
        const std::string whole = std::string("BM_WholeStep/identity/") + n;
        ratios.push_back({"whole step, load following / identity" + size, std::string("BM_WholeStep/load_following/") + n,
                          whole});
        ratios.push_back({"whole step, cycle charging / identity" + size, std::string("BM_WholeStep/cycle_charging/") + n,
                          whole});
        ratios.push_back({"engine traffic / whole step, identity" + size, std::string("BM_EngineTraffic/") + n, whole});
        ratios.push_back({"whole step, identity / engine round trip" + size, whole,
                          std::string("BM_EngineRoundTrip/") + n});
    }
    return ratios;
}

}  // namespace

int main(int argc, char** argv) {
    return tamlo_bench::run_with_ratios(argc, argv, step_ratios());
}
