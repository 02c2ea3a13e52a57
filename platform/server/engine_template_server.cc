// Forks fresh engines from an octave-engine whose interpreter has started and run nothing.
#include "engine_template_server.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>
#include <vector>

#include "frame_io.h"
#include "wire_codec.h"

namespace tamlo::server {

namespace {

#ifndef MADV_POPULATE_WRITE
#define MADV_POPULATE_WRITE 23  // Linux 5.14
#endif

// The pages of the template's memory that a fork wrote, learned from the forks before it. A
// fork that reads a copy-on-write page and then writes it pays twice, and on virtual machines
// with shadow page tables the second fault is the dearest and does not scale across cores;
// the kernel copies the learned pages at once, before the fork reads them. Only a hint: a
// page that is gone or read-only makes madvise fail, never the fork.
constexpr std::size_t page_size = 4096;
constexpr std::uint32_t max_learned_pages = 16383;
struct LearnedPages {
    std::atomic<std::uint32_t> count;
    std::atomic<std::uint32_t> forks;  // forks so far, this one included
    std::uintptr_t pages[max_learned_pages];
};
LearnedPages* learned = nullptr;  // shared by the template and all its forks

// The template does not change between forks, so the list settles after a few: later forks
// only check it now and then, and spare their ends the reading of their page map.
bool learns(std::uint32_t fork_number) { return fork_number <= 4 || fork_number % 16 == 0; }
bool this_fork_learns = false;

void copy_learned_pages() {
    const std::uint32_t n = std::min(learned->count.load(std::memory_order_acquire), max_learned_pages);
    for (std::uint32_t i = 0; i < n;) {
        std::uint32_t j = i + 1;
        while (j < n && learned->pages[j] == learned->pages[j - 1] + page_size) ++j;
        if (::madvise(reinterpret_cast<void*>(learned->pages[i]), (j - i) * page_size, MADV_POPULATE_WRITE) != 0 &&
            errno == EINVAL) {
            return;  // a kernel without it
        }
        i = j;
    }
}

// One mapping of this process, as /proc/self/maps lists it.
struct Mapping {
    unsigned long begin = 0, end = 0;
    char perms[8] = "";  // "r-xp"
    bool named_by_path = false;
};

// Calls visit(mapping, pagemap) for each mapping of this process in address order, with the
// process's page map open; stops when visit returns false. Visits nothing when either cannot be
// opened.
template <typename Visit>
void for_each_mapping(Visit visit) {
    FILE* maps = std::fopen("/proc/self/maps", "re");
    const int pagemap = ::open("/proc/self/pagemap", O_RDONLY | O_CLOEXEC);
    Mapping m;
    char path[2];
    for (;;) {
        if (maps == nullptr || pagemap < 0) break;
        const int read = std::fscanf(maps, "%lx-%lx %7s %*s %*s %*s%*[ ]%1[^\n]%*[^\n]", &m.begin, &m.end, m.perms, path);
        if (read < 3) break;
        m.named_by_path = read == 4 && path[0] == '/';
        if (!visit(static_cast<const Mapping&>(m), pagemap)) break;
    }
    if (maps != nullptr) std::fclose(maps);
    if (pagemap >= 0) ::close(pagemap);
}

// The page map entries of up to count pages from address on; how many it read.
std::size_t read_page_map(int pagemap, unsigned long address, std::uint64_t* entries, std::size_t count) {
    const ssize_t got = ::pread(pagemap, entries, count * sizeof *entries,
                                static_cast<off_t>(address / page_size * sizeof *entries));
    return got > 0 ? static_cast<std::size_t>(got) / sizeof *entries : 0;
}

// The template's code and constant data, moved onto huge pages. A fork shares the template's
// page tables for anonymous huge pages and needs no fault to read them, where it faults on each
// small page of a mapped file it touches: about a fifth of a warm engine's time on machines
// with shadow page tables. Only the 2 MiB pieces the template has used are moved, so that the
// copies stay small (a few tens of MiB) beside libraries that are mostly never read.
constexpr unsigned long huge_page_size = 2ul << 20;

bool mostly_used(int pagemap, unsigned long piece) {
    std::uint64_t entries[huge_page_size / page_size];
    if (read_page_map(pagemap, piece, entries, std::size(entries)) != std::size(entries)) return false;
    std::size_t present = 0;
    for (const std::uint64_t e : entries) present += e >> 63;
    return present * 8 >= std::size(entries);
}

void move_to_huge_pages(unsigned long begin, unsigned long end, int prot) {
    const std::size_t length = end - begin;
    void* raw = ::mmap(nullptr, length + huge_page_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED) return;
    const auto raw_begin = reinterpret_cast<unsigned long>(raw), raw_end = raw_begin + length + huge_page_size;
    const unsigned long copy = (raw_begin + huge_page_size - 1) & ~(huge_page_size - 1);
    if (copy > raw_begin) ::munmap(raw, copy - raw_begin);
    if (raw_end > copy + length) ::munmap(reinterpret_cast<void*>(copy + length), raw_end - (copy + length));
    void* const to = reinterpret_cast<void*>(copy);
    ::madvise(to, length, MADV_HUGEPAGE);
    std::memcpy(to, reinterpret_cast<const void*>(begin), length);
    // Same bytes at the same addresses throughout: code running there, in this thread or another,
    // never sees the difference.
    if (::mprotect(to, length, prot) != 0 ||
        ::mremap(to, length, length, MREMAP_MAYMOVE | MREMAP_FIXED, reinterpret_cast<void*>(begin)) == MAP_FAILED)
        ::munmap(to, length);
}

void move_code_to_huge_pages() {
    // Without huge pages the copies would only cost memory.
    char thp[64] = "";
    if (FILE* f = std::fopen("/sys/kernel/mm/transparent_hugepage/enabled", "re")) {
        if (std::fgets(thp, sizeof thp, f) == nullptr) thp[0] = '\0';
        std::fclose(f);
    }
    if (thp[0] == '\0' || std::strstr(thp, "[never]") != nullptr) return;
    struct Piece {
        unsigned long begin, end;
        int prot;
    };
    std::vector<Piece> pieces;
    for_each_mapping([&](const Mapping& m, int pagemap) {
        // Private, readable, not writable, and named by a file's path.
        if (!m.named_by_path || m.perms[0] != 'r' || m.perms[1] == 'w' || m.perms[3] != 'p') return true;
        const int prot = PROT_READ | (m.perms[2] == 'x' ? PROT_EXEC : 0);
        for (unsigned long piece = (m.begin + huge_page_size - 1) & ~(huge_page_size - 1); piece + huge_page_size <= m.end;
             piece += huge_page_size) {
            if (!mostly_used(pagemap, piece)) continue;
            if (!pieces.empty() && pieces.back().end == piece && pieces.back().prot == prot)
                pieces.back().end += huge_page_size;
            else
                pieces.push_back({piece, piece + huge_page_size, prot});
        }
        return true;
    });
    for (const Piece& p : pieces) move_to_huge_pages(p.begin, p.end, p.prot);
}

bool send_pid(int template_fd, std::int32_t pid) {
    std::size_t sent = 0;
    while (sent < sizeof pid) {
        const ssize_t n = ::write(template_fd, reinterpret_cast<const char*>(&pid) + sent, sizeof pid - sent);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        sent += static_cast<std::size_t>(n);
    }
    return true;
}

// The value of "--template" on the command line, or null.
const char* template_option(int argc, char** argv) {
    for (int k = 1; k + 1 < argc; ++k) {
        if (std::strcmp(argv[k], "--template") == 0) return argv[k + 1];
    }
    return nullptr;
}

}  // namespace

bool template_requested(int argc, char** argv) {
    const char* value = template_option(argc, argv);
    return value != nullptr && std::strcmp(value, "0") != 0;
}

void remember_written_pages() {
    // Only some forks learn (this_fork_learns is set in a fork of a template with a shared list):
    // the template never returns from serve_engine_forks, and an engine started on its own has none.
    if (!this_fork_learns) return;
    // Private writable mappings, and in them the pages present and this process's alone
    // (bits 63 and 56 of a pagemap entry): those it wrote, or that the template wrote since.
    // Mappings larger than this only reserve address space (a sanitizer's shadow memory).
    constexpr unsigned long largest_mapping = 1ul << 30;
    std::uint64_t entries[512];
    std::uint32_t n = 0;
    for_each_mapping([&](const Mapping& m, int pagemap) {
        if (m.perms[1] != 'w' || m.perms[3] != 'p' || m.end - m.begin > largest_mapping) return true;
        for (unsigned long page = m.begin; page < m.end && n < max_learned_pages;) {
            const std::size_t got = read_page_map(
                pagemap, page, entries, std::min<std::size_t>(std::size(entries), (m.end - page) / page_size));
            if (got == 0) break;
            for (std::size_t k = 0; k < got && n < max_learned_pages; ++k, page += page_size) {
                if ((entries[k] >> 63 & 1) && (entries[k] >> 56 & 1)) learned->pages[n++] = page;
            }
        }
        return n < max_learned_pages;
    });
    learned->count.store(n, std::memory_order_release);
}

int serve_engine_forks(int template_fd, int argc, char** argv) {
    // libeng bound the template's symbols at start for it ("--template bind-now"); the user's
    // code must not inherit that setting.
    const char* value = template_option(argc, argv);
    if (value != nullptr && std::strcmp(value, "bind-now") == 0) ::unsetenv("LD_BIND_NOW");
    // Forks are reaped by the system: the host that uses them is not their parent.
    ::signal(SIGCHLD, SIG_IGN);
    const pid_t template_pid = ::getpid();
    void* shared = ::mmap(nullptr, sizeof(LearnedPages), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared != MAP_FAILED) learned = new (shared) LearnedPages{};
    bool code_moved = false;
    for (;;) {
        const int engine_fd = tamlo::wire::receive_socket(template_fd);
        if (engine_fd == -1) ::_exit(0);
        if (engine_fd == -2) {
            if (!send_pid(template_fd, -1)) ::_exit(0);
            continue;
        }
        const pid_t pid = ::fork();
        if (pid == 0) {
            if (learned != nullptr) {
                this_fork_learns = learns(learned->forks.fetch_add(1) + 1);
                copy_learned_pages();
            }
            ::close(template_fd);
            // The user's code may wait for its own children (system, popen).
            ::signal(SIGCHLD, SIG_DFL);
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (::getppid() != template_pid) ::_exit(1);
            ::fcntl(engine_fd, F_SETFD, 0);
            if (!tamlo::wire::send_frame(engine_fd, tamlo::wire::Writer(tamlo::wire::Kind::ok).finish())) ::_exit(0);
            return engine_fd;
        }
        ::close(engine_fd);
        if (!send_pid(template_fd, pid > 0 ? static_cast<std::int32_t>(pid) : -1)) ::_exit(0);
        // While the first engine runs: the first open does not wait for it.
        if (!code_moved) move_code_to_huge_pages();
        code_moved = true;
    }
}

}  // namespace tamlo::server
