// Whole-frame socket reads and writes shared by libeng and octave-engine.
#include "frame_io.h"

#include <sys/socket.h>
#include <sys/types.h>

#include <cerrno>
#include <cstring>

#include "wire_codec.h"

namespace tamlo::wire {
namespace {

// 0 on success, 1 when the peer closed before the first byte, -1 on error or a short read.
int receive_exact(int fd, char* p, size_t n) {
    size_t got = 0;
    while (got < n) {
        ssize_t r = ::recv(fd, p + got, n - got, 0);
        if (r > 0) {
            got += static_cast<size_t>(r);
        } else if (r == 0) {
            return got == 0 ? 1 : -1;
        } else if (errno != EINTR) {
            return -1;
        }
    }
    return 0;
}

}  // namespace

bool send_frame(int fd, const std::string& frame) {
    size_t sent = 0;
    while (sent < frame.size()) {
        // MSG_NOSIGNAL: a dead peer must give EPIPE here, never a SIGPIPE in the host.
        ssize_t r = ::send(fd, frame.data() + sent, frame.size() - sent, MSG_NOSIGNAL);
        if (r >= 0)
            sent += static_cast<size_t>(r);
        else if (errno != EINTR)
            return false;
    }
    return true;
}

ReceiveStatus receive_frame(int fd, std::string& payload, std::string& error) {
    unsigned char header[header_length];
    int r = receive_exact(fd, reinterpret_cast<char*>(header), header_length);
    if (r == 1) return ReceiveStatus::closed;
    if (r < 0) {
        error = "connection lost while reading a frame header";
        return ReceiveStatus::failed;
    }
    uint32_t length = 0;
    for (size_t k = 0; k < header_length; ++k) length |= static_cast<uint32_t>(header[k]) << (8 * k);
    if (length == 0 || length > max_frame_length) {
        error = "corrupt frame: length " + std::to_string(length) + " outside 1.." + std::to_string(max_frame_length);
        return ReceiveStatus::failed;
    }
    payload.resize(length);
    if (receive_exact(fd, payload.data(), length) != 0) {
        error = "connection lost inside a frame of " + std::to_string(length) + " bytes";
        return ReceiveStatus::failed;
    }
    return ReceiveStatus::ok;
}

}  // namespace tamlo::wire
