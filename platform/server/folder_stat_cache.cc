// Answers stat and folder listings on Octave's own function folders from memory; see
// folder_stat_cache.h. The program exports stat, opendir, readdir, rewinddir and closedir, so
// that Octave's libraries call these instead of the C library's.
#include "folder_stat_cache.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <string_view>
#include <unordered_map>

namespace tamlo::server {

namespace {

struct Answer {
    int result;
    int error;
    struct stat status;
};

struct Cache {
    std::vector<std::string> folders;
    std::unordered_map<std::string, Answer> answers;
    std::unordered_map<std::string, std::vector<dirent>> listings;
};

Cache* cache = nullptr;  // set once, before the interpreter starts; never freed
// Taken by at most one caller at a time; one that finds it taken asks the system instead, so a
// fork made while another thread held it cannot wait for it forever.
std::atomic_flag busy = ATOMIC_FLAG_INIT;

// A listing being read, handed out in place of a DIR*: a DIR* from one of these slots is ours,
// any other the C library's.
struct OpenListing {
    std::atomic<bool> in_use{false};
    const std::vector<dirent>* entries = nullptr;
    std::size_t next = 0;
    dirent current{};  // what readdir returned last
};
constexpr std::size_t max_open_listings = 16;
OpenListing open_listings[max_open_listings];

OpenListing* ours(DIR* handle) {
    auto* p = reinterpret_cast<OpenListing*>(handle);
    return p >= open_listings && p < open_listings + max_open_listings ? p : nullptr;
}

bool in_folders(std::string_view path) {
    if (cache == nullptr || path.empty() || path[0] != '/' || path.find("/..") != std::string_view::npos) return false;
    for (const std::string& folder : cache->folders) {
        if (path.compare(0, folder.size(), folder) == 0 && (path.size() == folder.size() || path[folder.size()] == '/'))
            return true;
    }
    return false;
}

int ask_system(const char* path, struct stat* status) { return ::fstatat(AT_FDCWD, path, status, 0); }

// The C library's own functions of these names, looked up on first use: Octave's libraries
// may list a folder before this program's own statics are set up.
DIR* system_opendir(const char* path) {
    static const auto f = reinterpret_cast<DIR* (*)(const char*)>(::dlsym(RTLD_NEXT, "opendir"));
    return f(path);
}
dirent* system_readdir(DIR* handle) {
    static const auto f = reinterpret_cast<dirent* (*)(DIR*)>(::dlsym(RTLD_NEXT, "readdir"));
    return f(handle);
}
void system_rewinddir(DIR* handle) {
    static const auto f = reinterpret_cast<void (*)(DIR*)>(::dlsym(RTLD_NEXT, "rewinddir"));
    f(handle);
}
int system_closedir(DIR* handle) {
    static const auto f = reinterpret_cast<int (*)(DIR*)>(::dlsym(RTLD_NEXT, "closedir"));
    return f(handle);
}

// The folder's entries, read from the system the first time; null when it cannot be read.
const std::vector<dirent>* listing_of(const char* path) {
    auto found = cache->listings.find(path);
    if (found != cache->listings.end()) return &found->second;
    DIR* dir = system_opendir(path);
    if (dir == nullptr) return nullptr;
    std::vector<dirent> entries;
    errno = 0;
    while (const dirent* entry = system_readdir(dir)) entries.push_back(*entry);
    const bool complete = errno == 0;
    system_closedir(dir);
    if (!complete) return nullptr;
    return &cache->listings.emplace(path, std::move(entries)).first->second;
}

DIR* open_cached(const char* path) {
    if (path == nullptr || !in_folders(path) || busy.test_and_set()) return nullptr;
    DIR* handle = nullptr;
    try {
        if (const std::vector<dirent>* entries = listing_of(path)) {
            for (OpenListing& slot : open_listings) {
                if (slot.in_use.exchange(true)) continue;
                slot.entries = entries;
                slot.next = 0;
                handle = reinterpret_cast<DIR*>(&slot);
                break;
            }
        }
    } catch (...) {
        // no memory for the listing: the system answers
    }
    busy.clear();
    return handle;
}

}  // namespace

void remember_stats_under(const std::vector<std::string>& folders) {
    auto* c = new Cache;
    for (std::string folder : folders) {
        while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
        if (folder.size() > 1 && folder[0] == '/' && folder.find("/..") == std::string::npos)
            c->folders.push_back(folder);
    }
    cache = c;
}

}  // namespace tamlo::server

using namespace tamlo::server;

extern "C" int stat(const char* path, struct stat* status) {
    if (path == nullptr || !in_folders(path) || busy.test_and_set()) return ask_system(path, status);
    int result = 0;
    try {
        auto found = cache->answers.find(path);
        if (found == cache->answers.end()) {
            Answer answer{};
            answer.result = ask_system(path, &answer.status);
            answer.error = errno;
            // A passing failure (no memory, an interrupted call) is not the path's answer.
            if (answer.result != 0 && answer.error != ENOENT && answer.error != ENOTDIR) {
                busy.clear();
                errno = answer.error;
                return answer.result;
            }
            found = cache->answers.emplace(path, answer).first;
        }
        result = found->second.result;
        if (result == 0) {
            *status = found->second.status;
        } else {
            errno = found->second.error;
        }
    } catch (...) {
        result = ask_system(path, status);  // no memory for the answer: ask again next time
    }
    busy.clear();
    return result;
}

extern "C" DIR* opendir(const char* path) {
    if (DIR* cached = open_cached(path)) return cached;
    return system_opendir(path);
}

extern "C" dirent* readdir(DIR* handle) {
    OpenListing* listing = ours(handle);
    if (listing == nullptr) return system_readdir(handle);
    if (listing->next >= listing->entries->size()) return nullptr;
    listing->current = (*listing->entries)[listing->next++];
    return &listing->current;
}

extern "C" void rewinddir(DIR* handle) {
    if (OpenListing* listing = ours(handle)) {
        listing->next = 0;
    } else {
        system_rewinddir(handle);
    }
}

extern "C" int closedir(DIR* handle) {
    OpenListing* listing = ours(handle);
    if (listing == nullptr) return system_closedir(handle);
    listing->in_use.store(false);
    return 0;
}
