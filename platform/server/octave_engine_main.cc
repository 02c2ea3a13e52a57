// octave-engine: the engine process behind our libeng. Embeds one Octave interpreter for its
// whole life and serves eval/put/get/close frames on the socket named on its command line.
//
// Usage: octave-engine --fd N [--parent PID]
#include <octave/oct.h>
#include <octave/defaults.h>
#include <octave/interpreter.h>
#include <octave/ov-builtin.h>
#include <octave/symtab.h>
#include <octave/lex.h>
#include <octave/pager.h>
#include <octave/quit.h>
#include <octave/utils.h>

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cmath>
#include <cstring>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "engine_template_server.h"
#include "folder_stat_cache.h"
#include "frame_io.h"
#include "octave_codec.h"
#include "wire_codec.h"

// jemalloc's settings, when it is the allocator: huge pages make the interpreter's start cheaper
// (each page first touched costs a fault); forks are unaffected.
extern "C" const char* malloc_conf;
const char* malloc_conf = "thp:always,metadata_thp:always";

namespace {

using tamlo::wire::Kind;
using tamlo::wire::Reader;
using tamlo::wire::Writer;

struct EvalOutcome {
    std::string output;
    bool quitting = false;
    int exit_status = 0;
};

// Sends everything Octave prints (its stdout, fprintf(2, ...), warnings) into one buffer for
// the time it lives, in the order printed, and restores the streams afterwards.
class CaptureOutput {
public:
    CaptureOutput() : old_out_(octave_stdout.rdbuf(&buf_)), old_err_(std::cerr.rdbuf(&buf_)) {}
    ~CaptureOutput() {
        octave_stdout.flush();
        std::cerr.flush();
        octave_stdout.rdbuf(old_out_);
        std::cerr.rdbuf(old_err_);
    }
    CaptureOutput(const CaptureOutput&) = delete;
    CaptureOutput& operator=(const CaptureOutput&) = delete;
    void append(const std::string& s) {
        octave_stdout.flush();
        std::cerr.flush();
        buf_.sputn(s.data(), static_cast<std::streamsize>(s.size()));
    }
    std::string text() {
        octave_stdout.flush();
        std::cerr.flush();
        return buf_.str();
    }

private:
    std::stringbuf buf_;
    std::streambuf* old_out_;
    std::streambuf* old_err_;
};

EvalOutcome evaluate(octave::interpreter& interp, const std::string& command) {
    EvalOutcome outcome;
    CaptureOutput capture;
    try {
        int parse_status = 0;
        interp.eval_string(command, false, parse_status, 0);
    } catch (const octave::execution_exception& e) {
        // As Octave's own command line prints it, after what the command printed before it:
        // the message, then "error: called from" and the function, line and column of each
        // frame of the user's code.
        std::ostringstream text;
        e.display(text);
        capture.append(text.str());
        interp.recover_from_exception();
    } catch (const octave::exit_exception& e) {
        outcome.quitting = true;
        outcome.exit_status = e.exit_status();
    } catch (const octave::interrupt_exception&) {
        capture.append("error: interrupted\n");
        interp.recover_from_exception();
    } catch (const std::bad_alloc&) {
        capture.append("error: out of memory or dimension too large for Octave's index type\n");
        interp.recover_from_exception();
    }
    outcome.output = capture.text();
    return outcome;
}

// Nothing in the engine may wait for a terminal: there is none, and a run is unattended.
// These built-ins replace Octave's own for the process's life (`clear all` keeps them).
[[noreturn]] void no_terminal(const char* name, const char* hint = "") {
    error("%s: the MATLAB engine runs without a terminal, so nothing can wait for a key or a reply%s", name,
          hint);
}

octave_value_list engine_keyboard(const octave_value_list&, int) { no_terminal("keyboard"); }
octave_value_list engine_input(const octave_value_list&, int) { no_terminal("input"); }
octave_value_list engine_kbhit(const octave_value_list&, int) { no_terminal("kbhit"); }
octave_value_list engine_yes_or_no(const octave_value_list&, int) { no_terminal("yes_or_no"); }
octave_value_list engine_waitforbuttonpress(const octave_value_list&, int) { no_terminal("waitforbuttonpress"); }
octave_value_list engine_ginput(const octave_value_list&, int) { no_terminal("ginput"); }
octave_value_list engine_dbstop(const octave_value_list&, int) { no_terminal("dbstop", " (no debugger)"); }

// Output is never paged: `more on` is accepted and changes nothing.
octave_value_list engine_more(const octave_value_list&, int) { return {}; }

// Entering the debugger on an error, warning or interrupt would wait for commands.
octave_value_list debug_switch(const char* name, const octave_value_list& args) {
    if (args.length() > 0 && args(0).is_true()) no_terminal(name, " (no debugger)");
    return ovl(false);
}
octave_value_list engine_debug_on_error(const octave_value_list& args, int) {
    return debug_switch("debug_on_error", args);
}
octave_value_list engine_debug_on_warning(const octave_value_list& args, int) {
    return debug_switch("debug_on_warning", args);
}
octave_value_list engine_debug_on_interrupt(const octave_value_list& args, int) {
    return debug_switch("debug_on_interrupt", args);
}

// Octave's own pause, kept for pauses of a given length.
octave_value original_pause;

octave_value_list engine_pause(octave::interpreter& interp, const octave_value_list& args, int nargout) {
    bool waits_for_key = args.length() == 0;
    if (args.length() == 1 && args(0).is_real_scalar() && std::isinf(args(0).double_value())) waits_for_key = true;
    if (waits_for_key) no_terminal("pause", "; use pause(seconds)");
    return interp.feval(original_pause, args, nargout);
}

void install_unattended_builtins(octave::interpreter& interp) {
    octave::symbol_table& symtab = interp.get_symbol_table();
    original_pause = symtab.find_built_in_function("pause");
    struct Replacement {
        const char* name;
        octave_builtin::fcn fn;
    };
    const Replacement replacements[] = {
        {"keyboard", engine_keyboard},
        {"input", engine_input},
        {"kbhit", engine_kbhit},
        {"yes_or_no", engine_yes_or_no},
        {"dbstop", engine_dbstop},
        {"more", engine_more},
        {"debug_on_error", engine_debug_on_error},
        {"debug_on_warning", engine_debug_on_warning},
        {"debug_on_interrupt", engine_debug_on_interrupt},
    };
    for (const Replacement& r : replacements)
        symtab.install_built_in_function(r.name, octave_value(new octave_builtin(r.fn, r.name)));
    symtab.install_built_in_function("pause", octave_value(new octave_builtin(engine_pause, "pause")));
    // These two are m-files, which come before built-ins; a locked command-line function
    // comes before the load path and survives `clear all`.
    const Replacement m_file_replacements[] = {
        {"waitforbuttonpress", engine_waitforbuttonpress},
        {"ginput", engine_ginput},
    };
    for (const Replacement& r : m_file_replacements) {
        auto* fn = new octave_builtin(r.fn, r.name);
        fn->lock();
        symtab.install_cmdline_function(r.name, octave_value(fn));
    }
}

bool valid_variable_name(const std::string& name) {
    return octave::valid_identifier(name) && !octave::iskeyword(name);
}

std::string error_frame(const std::string& message) {
    Writer w(Kind::error);
    w.put_string(message);
    return w.finish();
}

class Server {
public:
    Server(octave::interpreter& interp, int fd) : interp_(interp), fd_(fd) {}

    // Serves until the client closes the socket or asks to close; returns the exit status.
    int run() {
        std::string error;
        for (;;) {
            switch (requests_.receive(fd_, error)) {
                case tamlo::wire::ReceiveStatus::ok: break;
                case tamlo::wire::ReceiveStatus::closed: return 0;
                case tamlo::wire::ReceiveStatus::failed:
                    // The stream cannot be resynchronised after a bad length: end the session.
                    std::cerr << "octave-engine: " << error << "\n";
                    return 2;
            }
            const std::string_view payload = requests_.payload();
            Reader r(payload.data(), payload.size());
            Kind kind{};
            if (!tamlo::wire::read_kind(r, kind)) {
                if (!reply(error_frame(r.error()))) return 0;
                continue;
            }
            if (kind == Kind::close) {
                reply_empty(Kind::ok);
                return 0;
            }
            int exit_status = 0;
            if (!handle(kind, r, exit_status)) return exit_status;
        }
    }

private:
    // Sends a reply, after any held back.
    bool reply(const std::string& frame) {
        if (held_.empty()) return tamlo::wire::send_frame(fd_, frame);
        const bool sent = tamlo::wire::send_frames(fd_, held_, frame);
        held_.clear();
        return sent;
    }
    bool reply_empty(Kind kind) {
        reply_.begin(kind);
        return reply(reply_.finish());
    }

    // False when the session is over (client gone, or the user's code asked Octave to quit).
    bool handle(Kind kind, Reader& r, int& exit_status) {
        switch (kind) {
            case Kind::eval: return handle_eval(r, exit_status, false);
            case Kind::eval_then_get: return handle_eval(r, exit_status, true);
            case Kind::put: return handle_put(r);
            case Kind::get: return handle_get(r);
            default: return reply(error_frame("unexpected frame kind " + std::to_string(static_cast<int>(kind))));
        }
    }

    // With then_get, the reply is followed by the replies to gets of the names the request lists,
    // all in one send: the client reads the variables it will ask for next without another wait.
    bool handle_eval(Reader& r, int& exit_status, bool then_get) {
        uint32_t limit = 0;
        std::string command;
        names_.clear();
        if (!r.get_u32(limit, "output limit") || !r.get_string(command, "command"))
            return reply(error_frame(r.error()));
        if (then_get) {
            uint32_t count = 0;
            if (!r.get_u32(count, "name count")) return reply(error_frame(r.error()));
            if (count > tamlo::wire::max_names_after_eval)
                return reply(error_frame("corrupt frame: " + std::to_string(count) + " names after an eval"));
            names_.resize(count);
            for (std::string& name : names_) {
                if (!r.get_string(name, "variable name")) return reply(error_frame(r.error()));
            }
        }
        if (!r.expect_end()) return reply(error_frame(r.error()));
        EvalOutcome outcome = evaluate(interp_, command);
        if (outcome.output.size() > limit) outcome.output.resize(limit);
        reply_.begin(Kind::eval_done);
        reply_.put_u8(outcome.quitting ? 1 : 0);
        reply_.put_string(outcome.output);
        if (outcome.quitting) {
            reply(reply_.finish());
            exit_status = outcome.exit_status;
            return false;
        }
        if (names_.empty()) return reply(reply_.finish());
        held_.append(reply_.finish());
        for (const std::string& name : names_) held_.append(value_frame(name));
        const bool sent = tamlo::wire::send_frame(fd_, held_);
        held_.clear();
        return sent;
    }

    bool handle_put(Reader& r) {
        std::string name;
        if (!r.get_string(name, "variable name")) return reply(error_frame(r.error()));
        octave_value value;
        try {
            if (!tamlo::engine::get_octave_value(r, value) || !r.expect_end()) return reply(error_frame(r.error()));
        } catch (const octave::execution_exception& e) {
            interp_.recover_from_exception();
            return reply(error_frame("cannot build '" + name + "': " + e.message()));
        } catch (const std::bad_alloc&) {
            return reply(error_frame("cannot build '" + name + "': out of memory"));
        }
        if (!valid_variable_name(name)) return reply(error_frame("invalid variable name '" + name + "'"));
        try {
            interp_.assign(name, value);
        } catch (const octave::execution_exception& e) {
            interp_.recover_from_exception();
            return reply(error_frame("cannot assign '" + name + "': " + e.message()));
        }
        if (requests_.more_waiting(fd_)) {
            // The client sent its next request without waiting for this reply: the two replies
            // go out together, and the client wakes once for both.
            reply_.begin(Kind::ok);
            held_.append(reply_.finish());
            return true;
        }
        return reply_empty(Kind::ok);
    }

    bool handle_get(Reader& r) {
        std::string name;
        if (!r.get_string(name, "variable name") || !r.expect_end()) return reply(error_frame(r.error()));
        return reply(value_frame(name));
    }

    // The reply to a get of `name`: its value, no_variable, or an error frame; valid until the
    // next reply is built.
    const std::string& value_frame(const std::string& name) {
        if (!valid_variable_name(name) || !interp_.is_variable(name)) {
            reply_.begin(Kind::no_variable);
            return reply_.finish();
        }
        reply_.begin(Kind::value);
        try {
            tamlo::engine::put_octave_value(reply_, interp_.varval(name));
        } catch (const octave::execution_exception& e) {
            interp_.recover_from_exception();
            return error_ = error_frame("cannot convert '" + name + "': " + e.message());
        } catch (const std::bad_alloc&) {
            reply_.begin(Kind::value);  // gives back what the partial frame held
            return error_ = error_frame("cannot convert '" + name + "': out of memory");
        }
        if (reply_.too_long()) {
            reply_.begin(Kind::value);
            return error_ = error_frame("cannot send '" + name + "': its value does not fit in one frame (" +
                               std::to_string(tamlo::wire::max_frame_length) + " bytes)");
        }
        return reply_.finish();
    }

    octave::interpreter& interp_;
    int fd_;
    tamlo::wire::FrameReceiver requests_;
    Writer reply_;      // kept, so that its buffer is reused from reply to reply
    std::string held_;  // finished replies to puts, sent with the next reply
    std::vector<std::string> names_;  // the gets that follow an eval
    std::string error_;               // the last error frame value_frame built
};

bool parse_int(const char* s, long& out) {
    char* end = nullptr;
    errno = 0;
    out = std::strtol(s, &end, 10);
    return errno == 0 && end != s && *end == '\0';
}

}  // namespace

int main(int argc, char** argv) {
    long fd = -1, parent = -1;
    for (int k = 1; k + 1 < argc; k += 2) {
        long v = 0;
        if (!parse_int(argv[k + 1], v)) break;
        if (std::strcmp(argv[k], "--fd") == 0) fd = v;
        if (std::strcmp(argv[k], "--parent") == 0) parent = v;
    }
    if (fd < 0) {
        std::cerr << "usage: octave-engine --fd N [--parent PID]\n";
        return 64;
    }
    // Never outlive the host: die with it, and check it did not die before this was set.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (parent > 0 && ::getppid() != static_cast<pid_t>(parent)) return 1;
    std::signal(SIGPIPE, SIG_IGN);

    const int sock = static_cast<int>(fd);
    // Programs the user's code starts must not hold the socket open: the host sees the
    // engine's end as the socket's end.
    ::fcntl(sock, F_SETFD, FD_CLOEXEC);
    int status = 0;
    {
        octave::interpreter interp;
        // Only the folders of this Octave's version: packages and site folders may change.
        tamlo::server::remember_stats_under({octave::config::fcn_file_dir(), octave::config::oct_file_dir()});
        interp.initialize_history(false);
        // The site startup files set up the terminal (readline, pager), which an engine has not;
        // sourcing each also rescans the whole function search path. Of what they do, only the
        // system's hint for functions of packages not installed matters here; it is set below.
        interp.read_site_files(false);
        interp.initialize_load_path();
        interp.initialize();
        if (!interp.initialized() || interp.execute() != 0) {
            tamlo::wire::send_frame(sock, error_frame("the Octave interpreter did not start"));
            ::_exit(3);
        }
        install_unattended_builtins(interp);
        interp.get_output_system().page_screen_output(false);
        // A crash must not leave an octave-workspace file in the user's folder.
        std::string setup = "crash_dumps_octave_core(false); sighup_dumps_octave_core(false); "
                            "sigterm_dumps_octave_core(false);";
        if (!interp.get_load_path().find_fcn("debian_missing_handler").empty())
            setup += " missing_component_hook('debian_missing_handler');";
        interp.eval_string(setup, true, status, 0);
        status = 0;
        // Tells the client that the interpreter is ready.
        if (!tamlo::wire::send_frame(sock, Writer(Kind::ok).finish())) ::_exit(0);
        // A template forks a fresh engine per open; only its forks go on to serve.
        Server server(interp, tamlo::server::template_requested(argc, argv) ? tamlo::server::serve_engine_forks(sock, argc, argv) : sock);
        status = server.run();
        ::close(sock);
        tamlo::server::remember_written_pages();
        std::cout.flush();
        std::cerr.flush();
        // Tearing the interpreter down is slow and not needed: the process ends here.
        ::_exit(status);
    }
}
