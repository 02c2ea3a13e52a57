// Frames over a socket: whole frames out of one buffer however the bytes arrive, frames sent
// together taken one by one, and a clear error for a peer that goes away or a bad length.
#include <gtest/gtest.h>

#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "frame_io.h"
#include "wire_codec.h"

namespace {

using namespace tamlo::wire;

class SocketPair : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds_), 0); }
    void TearDown() override {
        for (int& fd : fds_)
            if (fd >= 0) ::close(fd);
    }
    void close_sender() {
        ::close(fds_[0]);
        fds_[0] = -1;
    }
    int sender() const { return fds_[0]; }
    int receiver() const { return fds_[1]; }

    // The payload of the next frame, or the receiver's status and error in brackets.
    std::string next_payload() {
        std::string error;
        switch (frames_.receive(receiver(), error)) {
            case ReceiveStatus::ok: return std::string(frames_.payload());
            case ReceiveStatus::closed: return "[closed]";
            case ReceiveStatus::failed: return "[failed: " + error + "]";
        }
        return "[?]";
    }

    int fds_[2] = {-1, -1};
    FrameReceiver frames_;
};

std::string error_frame_with(const std::string& message) {
    Writer w(Kind::error);
    w.put_string(message);
    return w.finish();
}

std::string payload_of(const std::string& frame) { return frame.substr(header_length); }

TEST_F(SocketPair, FramesSentTogetherAreTakenOneByOne) {
    const std::string first = error_frame_with("first"), second = error_frame_with("second");
    ASSERT_TRUE(send_frames(sender(), first, second));
    EXPECT_EQ(next_payload(), payload_of(first));
    EXPECT_TRUE(frames_.more_waiting(receiver()));
    EXPECT_EQ(next_payload(), payload_of(second));
    EXPECT_FALSE(frames_.more_waiting(receiver()));
}

TEST_F(SocketPair, MoreWaitingSeesAFrameThatArrivesLaterAndKeepsThePayload) {
    const std::string first = error_frame_with("first"), second = error_frame_with("second");
    ASSERT_TRUE(send_frame(sender(), first));
    ASSERT_EQ(next_payload(), payload_of(first));
    EXPECT_FALSE(frames_.more_waiting(receiver()));
    ASSERT_TRUE(send_frame(sender(), second));
    EXPECT_TRUE(frames_.more_waiting(receiver()));
    EXPECT_EQ(std::string(frames_.payload()), payload_of(first));
    EXPECT_EQ(next_payload(), payload_of(second));
}

TEST_F(SocketPair, FrameArrivingInPiecesIsReassembled) {
    const std::string frame = error_frame_with(std::string(3000, 'x'));
    std::thread writer([&] {
        for (size_t at = 0; at < frame.size(); at += 700) {
            const std::string piece = frame.substr(at, 700);
            ::send(sender(), piece.data(), piece.size(), MSG_NOSIGNAL);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    EXPECT_EQ(next_payload(), payload_of(frame));
    writer.join();
}

TEST_F(SocketPair, FrameLargerThanTheUsualBufferArrivesWhole) {
    const std::string frame = error_frame_with(std::string(3 << 20, 'y'));
    std::thread writer([&] { send_frame(sender(), frame); });
    EXPECT_EQ(next_payload(), payload_of(frame));
    writer.join();
    const std::string small = error_frame_with("after");
    ASSERT_TRUE(send_frame(sender(), small));
    EXPECT_EQ(next_payload(), payload_of(small));
}

TEST_F(SocketPair, MemoryFollowsTheBytesThatArriveNotTheAnnouncedLength) {
    std::string bytes("\x00\x00\x80\x0c", 4);  // announces 209715200 bytes
    bytes += std::string(1000, 'z');
    ASSERT_EQ(::send(sender(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    close_sender();
    EXPECT_EQ(next_payload(), "[failed: connection lost inside a frame of 209715200 bytes]");
    EXPECT_LT(frames_.capacity(), 1u << 20);
}

TEST_F(SocketPair, PeerClosingBetweenFramesIsClosed) {
    ASSERT_TRUE(send_frame(sender(), error_frame_with("last")));
    close_sender();
    EXPECT_EQ(next_payload(), payload_of(error_frame_with("last")));
    EXPECT_EQ(next_payload(), "[closed]");
}

// What a receiver makes of these bytes from a peer that then closes its end.
std::string receive_from_closing_peer(const std::string& bytes) {
    int fds[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds) != 0) return "[no socket]";
    const bool sent = ::send(fds[0], bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size());
    ::close(fds[0]);
    FrameReceiver frames;
    std::string error, outcome = sent ? "" : "[not sent]";
    if (sent) {
        switch (frames.receive(fds[1], error)) {
            case ReceiveStatus::ok: outcome = std::string(frames.payload()); break;
            case ReceiveStatus::closed: outcome = "[closed]"; break;
            case ReceiveStatus::failed: outcome = "[failed: " + error + "]"; break;
        }
    }
    ::close(fds[1]);
    return outcome;
}

TEST(FrameReceiver, ShortOrBadFramesAreErrors) {
    struct Row {
        const char* what;
        std::string bytes;
        const char* expected;
    } rows[] = {
        {"peer gone inside the header", std::string("\x05\x00", 2),
         "[failed: connection lost while reading a frame header]"},
        {"peer gone inside the payload", std::string("\x05\x00\x00\x00\x85\x01", 6),
         "[failed: connection lost inside a frame of 5 bytes]"},
        {"length zero", std::string("\x00\x00\x00\x00", 4), "[failed: corrupt frame: length 0 outside 1..268435456]"},
        {"length over the limit", std::string("\x01\x00\x00\x10", 4),
         "[failed: corrupt frame: length 268435457 outside 1..268435456]"},
        {"length that the 32 bits barely hold", std::string("\xff\xff\xff\xff", 4),
         "[failed: corrupt frame: length 4294967295 outside 1..268435456]"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(receive_from_closing_peer(row.bytes), row.expected);
    }
}

}  // namespace
