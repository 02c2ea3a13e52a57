// libFuzzer harness for libeng's side of the wire: a peer's bytes through FrameReceiver, each
// frame's payload read as the client reads replies, arrays through get_mx_array.
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "frame_io.h"
#include "mx_wire.h"

namespace {

using namespace tamlo::wire;

// What the decoder accepts, the encoder must write again in a form the decoder accepts.
void check_round_trip(const mxArray* a) {
    Writer w(Kind::value);
    std::string error;
    if (!put_mx_array(w, a, error)) {
        std::fprintf(stderr, "a decoded array cannot be encoded again: %s\n", error.c_str());
        std::abort();
    }
    const std::string& frame = w.finish();
    Reader r(frame.data() + header_length + 1, frame.size() - header_length - 1);
    ArrayPtr again = get_mx_array(r);
    if (again == nullptr || !r.expect_end()) {
        std::fprintf(stderr, "a re-encoded array does not decode: %s\n", r.error().c_str());
        std::abort();
    }
}

void read_payload(std::string_view payload) {
    Reader r(payload.data(), payload.size());
    Kind kind{};
    if (!read_kind(r, kind)) return;
    std::string_view text;
    uint8_t status = 0;
    switch (kind) {
        case Kind::eval_done:
            if (r.get_u8(status, "status") && r.get_string(text, "output")) r.expect_end();
            return;
        case Kind::error:
            if (r.get_string(text, "message")) r.expect_end();
            return;
        case Kind::put:
            if (!r.get_string(text, "variable name")) return;
            [[fallthrough]];
        case Kind::value: {
            ArrayPtr a = get_mx_array(r);
            if (a != nullptr && r.expect_end()) check_round_trip(a.get());
            if (a == nullptr && r.error().empty()) {
                std::fprintf(stderr, "a refused array without a message\n");
                std::abort();
            }
            return;
        }
        default: r.expect_end(); return;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Everything is sent before reading: it must fit the socket's buffer.
    if (size > 64 * 1024) return 0;
    int fds[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds) != 0) return 0;
    const bool sent = size == 0 || ::send(fds[0], data, size, MSG_NOSIGNAL) == static_cast<ssize_t>(size);
    ::close(fds[0]);
    if (sent) {
        FrameReceiver frames;
        std::string error;
        while (frames.receive(fds[1], error) == ReceiveStatus::ok) {
            frames.more_waiting(fds[1]);
            read_payload(frames.payload());
        }
    }
    ::close(fds[1]);
    return 0;
}
