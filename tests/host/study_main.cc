// Stand-in for dispatch-bench's study commands until its command line carries them: study
// STUDY --out DIR [--jobs N] [--slice K/M] [--collect] [--call-timeout S] [--extension P], and
// study-worker.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "study_command.h"
#include "study_worker.h"

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    if (!args.empty() && args[0] == "study-worker") return tamlo_host::run_study_worker({args.begin() + 1, args.end()});
    if (!args.empty() && args[0] == "run") {
        // One case alone: dispatch-bench itself, beside this program.
        const std::string bench = (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "dispatch-bench").string();
        argv[0] = const_cast<char*>(bench.c_str());
        ::execv(bench.c_str(), argv);
        return 2;
    }
    if (args.size() < 2 || args[0] != "study") return 2;
    tamlo_host::StudyOptions options;
    options.study_file = args[1];
    for (std::size_t i = 2; i < args.size(); ++i) {
        const std::string& a = args[i];
        const std::string next = i + 1 < args.size() ? args[i + 1] : std::string();
        if (a == "--out") options.out_dir = next, ++i;
        else if (a == "--jobs") options.jobs = std::stoul(next), ++i;
        else if (a == "--slice") options.slice = tamlo_host::parse_study_slice(next), ++i;
        else if (a == "--call-timeout") options.call_timeout = std::stod(next), ++i;
        else if (a == "--extension") options.extension = next, ++i;
        else if (a == "--collect") options.collect = true;
        else if (a == "--quiet") options.quiet = true;
        else if (a == "--slurm") {
            options.slurm = true;
            options.sbatch_args.assign(args.begin() + static_cast<long>(i) + 1, args.end());
            break;
        } else return 2;
    }
    return tamlo_host::run_study_command(options);
}
