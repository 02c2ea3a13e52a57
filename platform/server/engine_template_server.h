// The template side of warm engines: after the interpreter has started, the process forks one
// fresh engine per request instead of serving requests itself.
#ifndef TAMLO_PLATFORM_ENGINE_TEMPLATE_SERVER_H
#define TAMLO_PLATFORM_ENGINE_TEMPLATE_SERVER_H

namespace tamlo::server {

// True when the command line carries "--template" with a value other than 0.
bool template_requested(int argc, char** argv);

// Serves fork requests on template_fd; returns only in a fork, with the fork's own engine
// socket, after telling its client that the engine is ready. The template itself leaves when
// template_fd ends. "--template bind-now" on the command line: LD_BIND_NOW was set for the
// template's start only, and is removed before the first fork.
int serve_engine_forks(int template_fd, int argc, char** argv);

// In a fork at the end of its session: notes the pages of the template's memory it wrote, for
// the next fork to copy at once. Does nothing in an engine that is not a fork.
void remember_written_pages();

}  // namespace tamlo::server

#endif
