// Cost of one time step's engine round trip (put a simulation_state-sized struct, evaluate a
// .m function that changes every field, get the result) against the floor: the same function
// called in a loop inside Octave. Counters: floor_us (per call inside Octave), ratio (round
// trip / floor), overhead_us (round trip minus floor).
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "engine.h"
#include "matrix.h"

namespace {

const char* const step_function = R"(function s = step_state(s)
  names = fieldnames(s);
  for k = 1:numel(names)
    v = s.(names{k});
    if isstruct(v)
      f = fieldnames(v);
      for i = 1:numel(v)
        for j = 1:numel(f)
          v(i).(f{j}) = v(i).(f{j}) + 1;
        end
      end
      s.(names{k}) = v;
    else
      s.(names{k}) = v + 1;
    end
  end
end
)";

mxArray* struct_list(int elements, int fields, const char* prefix) {
    mxArray* s = mxCreateStructMatrix(static_cast<mwSize>(elements), 1, 0, nullptr);
    for (int f = 0; f < fields; ++f) mxAddField(s, (std::string(prefix) + "_" + std::to_string(f)).c_str());
    for (int i = 0; i < elements; ++i)
        for (int f = 0; f < fields; ++f)
            mxSetFieldByNumber(s, static_cast<mwIndex>(i), f, mxCreateDoubleScalar(i * 10.0 + f));
    return s;
}

// About the size of simulation_state: nine component lists of 1-3 entries with 2-7 numbers
// each, two 7-field buses and the time step.
mxArray* make_state() {
    struct List {
        const char* name;
        int elements, fields;
    } lists[] = {{"generators", 3, 5}, {"wind_turbines", 2, 2}, {"pvs", 2, 2},        {"converters", 1, 7},
                 {"flywheels", 1, 4},  {"batteries", 2, 7},     {"grids", 1, 6}, {"custom_components", 1, 3},
                 {"primary_loads", 3, 2}};
    mxArray* s = mxCreateStructMatrix(1, 1, 0, nullptr);
    mxAddField(s, "time_step");
    mxSetField(s, 0, "time_step", mxCreateDoubleScalar(1));
    for (const List& l : lists) {
        mxAddField(s, l.name);
        mxSetField(s, 0, l.name, struct_list(l.elements, l.fields, "value"));
    }
    for (const char* bus : {"ac_bus", "dc_bus"}) {
        mxAddField(s, bus);
        mxSetField(s, 0, bus, struct_list(1, 7, "quantity"));
    }
    return s;
}

struct Session {
    Engine* engine = nullptr;
    mxArray* state = nullptr;
    char output[1024] = "";
    std::string folder;

    Session() {
        char dir_template[] = "/tmp/tamlo_bench_XXXXXX";
        if (::mkdtemp(dir_template) == nullptr) return;
        folder = dir_template;
        std::ofstream(folder + "/step_state.m") << step_function;
        int status = 0;
        engine = engOpenSingleUse("", nullptr, &status);
        if (engine == nullptr) return;
        engOutputBuffer(engine, output, sizeof output);
        engEvalString(engine, ("cd('" + folder + "');").c_str());
        state = make_state();
    }
    ~Session() {
        if (engine != nullptr) engClose(engine);
        mxDestroyArray(state);
        if (!folder.empty()) {
            std::remove((folder + "/step_state.m").c_str());
            ::rmdir(folder.c_str());
        }
    }

    // Per-call time of step_state inside Octave, in microseconds, over n calls.
    double floor_us(int n) {
        engPutVariable(engine, "simulation_state", state);
        std::string loop = "s = simulation_state; tic; for i = 1:" + std::to_string(n) +
                           ", r = step_state(s); end; floor_seconds = toc;";
        engEvalString(engine, loop.c_str());
        mxArray* t = engGetVariable(engine, "floor_seconds");
        double us = mxGetScalar(t) * 1e6 / n;
        mxDestroyArray(t);
        return us;
    }
};

Session& session() {
    static Session s;
    return s;
}

void BM_EngineStepRoundTrip(benchmark::State& st) {
    Session& s = session();
    if (s.engine == nullptr || s.state == nullptr) {
        st.SkipWithError("engine did not start");
        return;
    }
    const double floor = s.floor_us(2000);
    s.output[0] = '\0';
    auto start = std::chrono::steady_clock::now();
    for (auto _ : st) {
        engPutVariable(s.engine, "simulation_state", s.state);
        engEvalString(s.engine, "new_simulation_state = step_state(simulation_state);");
        mxArray* result = engGetVariable(s.engine, "new_simulation_state");
        benchmark::DoNotOptimize(result);
        mxDestroyArray(result);
    }
    const double trip_us =
        std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count() /
        static_cast<double>(st.iterations());
    if (s.output[0] != '\0') st.SkipWithError(s.output);
    st.counters["floor_us"] = floor;
    st.counters["trip_us"] = trip_us;
    st.counters["ratio"] = trip_us / floor;
    st.counters["overhead_us"] = trip_us - floor;
}
BENCHMARK(BM_EngineStepRoundTrip)->Unit(benchmark::kMicrosecond)->MinTime(2.0);

// The fixed cost of one put, one trivial evaluation and one get of a scalar.
void BM_EngineFixedOverhead(benchmark::State& st) {
    Session& s = session();
    if (s.engine == nullptr) {
        st.SkipWithError("engine did not start");
        return;
    }
    mxArray* x = mxCreateDoubleScalar(1);
    for (auto _ : st) {
        engPutVariable(s.engine, "x", x);
        engEvalString(s.engine, "y = x;");
        mxArray* y = engGetVariable(s.engine, "y");
        benchmark::DoNotOptimize(y);
        mxDestroyArray(y);
    }
    mxDestroyArray(x);
}
BENCHMARK(BM_EngineFixedOverhead)->Unit(benchmark::kMicrosecond)->MinTime(1.0);

// One evaluation alone, the smallest request.
void BM_EngineEmptyEval(benchmark::State& st) {
    Session& s = session();
    if (s.engine == nullptr) {
        st.SkipWithError("engine did not start");
        return;
    }
    for (auto _ : st) engEvalString(s.engine, "");
}
BENCHMARK(BM_EngineEmptyEval)->Unit(benchmark::kMicrosecond)->MinTime(1.0);

}  // namespace

BENCHMARK_MAIN();
