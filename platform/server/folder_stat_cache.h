// Octave's own function folders, answered from memory: Octave lists and checks every entry of
// every folder on its search path on each cd (over a thousand stat calls and fifty folder
// listings, most of a warm engine's cd), and the folders Octave was installed with do not
// change under a running engine.
#ifndef TAMLO_PLATFORM_FOLDER_STAT_CACHE_H
#define TAMLO_PLATFORM_FOLDER_STAT_CACHE_H

#include <string>
#include <vector>

namespace tamlo::server {

// From now on, stat calls and folder listings (opendir, readdir) in this process on these
// folders and the paths in them (absolute, without "..") ask the system once and then answer
// from memory, in forks of this process too. Other paths always ask the system.
void remember_stats_under(const std::vector<std::string>& folders);

}  // namespace tamlo::server

#endif
