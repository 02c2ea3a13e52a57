// Whole-frame socket reads and writes shared by libeng and octave-engine.
#include "frame_io.h"

#include <sys/socket.h>
#include <sys/types.h>
#include <sys/uio.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include "wire_codec.h"

namespace tamlo::wire {
namespace {

// Room for every ordinary frame. A larger one grows the buffer; beyond kept_capacity it is
// given back once that frame has been used.
constexpr size_t usual_capacity = 64 * 1024;
constexpr size_t kept_capacity = 1024 * 1024;

}  // namespace

bool send_frame(int fd, std::string_view frame) { return send_frames(fd, frame, {}); }

bool send_frames(int fd, std::string_view first, std::string_view second) {
    iovec parts[2] = {{const_cast<char*>(first.data()), first.size()}, {const_cast<char*>(second.data()), second.size()}};
    iovec* next = parts;
    size_t count = 2;
    while (count > 0) {
        msghdr message{};
        message.msg_iov = next;
        message.msg_iovlen = count;
        // MSG_NOSIGNAL: a dead peer must give EPIPE here, never a SIGPIPE in the host.
        ssize_t r = ::sendmsg(fd, &message, MSG_NOSIGNAL);
        if (r < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        // Step past what went out.
        size_t sent = static_cast<size_t>(r);
        while (count > 0 && sent >= next->iov_len) {
            sent -= next->iov_len;
            ++next;
            --count;
        }
        if (count > 0) {
            next->iov_base = static_cast<char*>(next->iov_base) + sent;
            next->iov_len -= sent;
        }
    }
    return true;
}

int FrameReceiver::fill(int fd, size_t want) {
    if (next_ + want > buf_.size()) {
        // Move the unread bytes to the front before growing.
        std::memmove(buf_.data(), buf_.data() + next_, end_ - next_);
        end_ -= next_;
        next_ = 0;
    }
    while (end_ - next_ < want) {
        if (end_ == buf_.size()) {
            // Room grows with the bytes that arrive, doubling, never past the frame: a header
            // that announces a huge frame costs nothing until its bytes are here.
            try {
                buf_.resize(std::min(next_ + want, std::max(2 * buf_.size(), usual_capacity)));
            } catch (const std::bad_alloc&) {
                return -2;
            }
        }
        ssize_t r = ::recv(fd, buf_.data() + end_, buf_.size() - end_, 0);
        if (r > 0)
            end_ += static_cast<size_t>(r);
        else if (r == 0)
            return 0;
        else if (errno != EINTR)
            return -1;
    }
    return 1;
}

bool FrameReceiver::more_waiting(int fd) {
    if (end_ > next_) return true;
    // Bytes go after the frame last handed out, which stays where it is; with no room there,
    // this simply says no.
    if (end_ == buf_.size()) return false;
    ssize_t r;
    while ((r = ::recv(fd, buf_.data() + end_, buf_.size() - end_, MSG_DONTWAIT)) < 0 && errno == EINTR) {
    }
    // A closed socket or an error shows again, and is reported, at the next receive().
    if (r <= 0) return false;
    end_ += static_cast<size_t>(r);
    return true;
}

ReceiveStatus FrameReceiver::receive(int fd, std::string& error) {
    payload_begin_ = payload_length_ = 0;
    if (next_ == end_) {
        next_ = end_ = 0;
        if (buf_.size() > kept_capacity) std::vector<char>().swap(buf_);
        if (buf_.empty()) buf_.resize(usual_capacity);
    }
    const int header = fill(fd, header_length);
    if (header == 0 && next_ == end_) return ReceiveStatus::closed;
    if (header != 1) {
        error = "connection lost while reading a frame header";
        return ReceiveStatus::failed;
    }
    uint32_t length = 0;
    for (size_t k = 0; k < header_length; ++k)
        length |= static_cast<uint32_t>(static_cast<unsigned char>(buf_[next_ + k])) << (8 * k);
    if (length == 0 || length > max_frame_length) {
        error = "corrupt frame: length " + std::to_string(length) + " outside 1.." + std::to_string(max_frame_length);
        return ReceiveStatus::failed;
    }
    const int body = fill(fd, header_length + length);
    if (body != 1) {
        error = body == -2 ? "no memory for a frame of " + std::to_string(length) + " bytes"
                           : "connection lost inside a frame of " + std::to_string(length) + " bytes";
        return ReceiveStatus::failed;
    }
    payload_begin_ = next_ + header_length;
    payload_length_ = length;
    next_ += header_length + length;
    return ReceiveStatus::ok;
}

namespace {

// One request byte with room for one attached socket.
struct SocketMessage {
    char byte = 'f';
    iovec io{&byte, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr header{};

    SocketMessage() {
        header.msg_iov = &io;
        header.msg_iovlen = 1;
        header.msg_control = control;
        header.msg_controllen = sizeof control;
    }
    SocketMessage(const SocketMessage&) = delete;
    SocketMessage& operator=(const SocketMessage&) = delete;
};

}  // namespace

bool send_socket(int channel, int fd) {
    SocketMessage m;
    cmsghdr* c = CMSG_FIRSTHDR(&m.header);
    c->cmsg_level = SOL_SOCKET;
    c->cmsg_type = SCM_RIGHTS;
    c->cmsg_len = CMSG_LEN(sizeof(int));
    std::memcpy(CMSG_DATA(c), &fd, sizeof(int));
    ssize_t sent;
    while ((sent = ::sendmsg(channel, &m.header, MSG_NOSIGNAL)) < 0 && errno == EINTR) {
    }
    return sent == 1;
}

int receive_socket(int channel) {
    SocketMessage m;
    ssize_t n;
    while ((n = ::recvmsg(channel, &m.header, MSG_CMSG_CLOEXEC)) < 0 && errno == EINTR) {
    }
    if (n <= 0) return -1;
    const cmsghdr* c = CMSG_FIRSTHDR(&m.header);
    if (c == nullptr || c->cmsg_level != SOL_SOCKET || c->cmsg_type != SCM_RIGHTS || c->cmsg_len != CMSG_LEN(sizeof(int)))
        return -2;
    int fd = -1;
    std::memcpy(&fd, CMSG_DATA(c), sizeof(int));
    return fd;
}

}  // namespace tamlo::wire
