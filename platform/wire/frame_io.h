// Sending and receiving whole frames over a stream socket, with EINTR handled and SIGPIPE
// never raised.
#ifndef TAMLO_PLATFORM_FRAME_IO_H
#define TAMLO_PLATFORM_FRAME_IO_H

#include <string>

namespace tamlo::wire {

// Sends a finished frame. False when the peer is gone or the socket failed.
bool send_frame(int fd, const std::string& frame);

enum class ReceiveStatus { ok, closed, failed };

// Receives one frame's payload (kind byte and what follows). `closed` when the peer closed
// the socket before a frame began; `failed` with a message for a short or oversized frame
// or a socket error.
ReceiveStatus receive_frame(int fd, std::string& payload, std::string& error);

}  // namespace tamlo::wire

#endif
