// Sending and receiving whole frames over a stream socket, with EINTR handled and SIGPIPE
// never raised.
#ifndef TAMLO_PLATFORM_FRAME_IO_H
#define TAMLO_PLATFORM_FRAME_IO_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tamlo::wire {

// Sends a finished frame. False when the peer is gone or the socket failed.
bool send_frame(int fd, std::string_view frame);

// Sends finished frames one after the other in one call, so the peer wakes once for them.
bool send_frames(int fd, std::string_view first, std::string_view second);

// Sends one request byte with the socket `fd` attached (SCM_RIGHTS), for a warm engine's
// template and its forks. False when the peer is gone.
bool send_socket(int channel, int fd);

// The socket attached to one request byte (close-on-exec): -1 when the peer is gone, -2 for a
// byte that came without one.
int receive_socket(int channel);

enum class ReceiveStatus { ok, closed, failed };

// Receives frames into one buffer kept from frame to frame: a frame that has already arrived
// whole takes a single recv(), and bytes of a following frame stay for the next call.
class FrameReceiver {
public:
    // One frame. On ok, payload() holds its payload (kind byte and what follows) until the next
    // call. `closed` when the peer closed the socket before a frame began; `failed` with a
    // message for a short or oversized frame or a socket error. The buffer grows with the
    // bytes that arrive, up to one frame of max_frame_length.
    ReceiveStatus receive(int fd, std::string& error);
    std::string_view payload() const { return {buf_.data() + payload_begin_, payload_length_}; }
    // True when bytes of another frame are already here: held, or readable without waiting.
    // payload() stays as it is.
    bool more_waiting(int fd);
    // The bytes of memory the receiver holds for frames.
    size_t capacity() const { return buf_.size(); }

private:
    // Receives until at least `want` unread bytes are held. 1 done, 0 the peer closed first,
    // -1 socket error, -2 no memory.
    int fill(int fd, size_t want);

    std::vector<char> buf_;
    size_t next_ = 0;  // first byte not yet handed out
    size_t end_ = 0;   // end of the bytes received
    size_t payload_begin_ = 0;
    size_t payload_length_ = 0;
};

}  // namespace tamlo::wire

#endif
