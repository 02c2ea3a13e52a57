// The frame format and frames over a socket: damaged frames are errors that say what is
// wrong, never out-of-bounds reads, and whole frames come out however the bytes arrive.
#include <gtest/gtest.h>

#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "frame_io.h"
#include "matrix.h"
#include "mx_wire.h"
#include "wire_codec.h"

namespace {

using namespace tamlo::wire;

// Decodes a value payload (kind byte onward) from a heap copy of exactly its size, so that
// ASan sees any overread; the error, or "" when it decoded.
std::string decode_error(const std::string& payload) {
    std::vector<unsigned char> exact(payload.begin(), payload.end());
    Reader r(exact.data(), exact.size());
    Kind kind{};
    if (read_kind(r, kind) && get_mx_array(r) != nullptr) r.expect_end();
    return r.error();
}

// Hand-built payloads: kind byte 0x83 (value) followed by one array.
struct Bytes {
    std::string s{static_cast<char>(Kind::value)};
    Bytes& u8(unsigned v) {
        s.push_back(static_cast<char>(v));
        return *this;
    }
    Bytes& u32(uint32_t v) { return u8(v & 0xff).u8((v >> 8) & 0xff).u8((v >> 16) & 0xff).u8(v >> 24); }
    Bytes& u64(uint64_t v) { return u32(static_cast<uint32_t>(v)).u32(static_cast<uint32_t>(v >> 32)); }
    Bytes& str(const std::string& t) {
        u32(static_cast<uint32_t>(t.size()));
        s += t;
        return *this;
    }
    Bytes& dims2(uint64_t m, uint64_t n) { return u8(2).u64(m).u64(n); }
};

std::string nested_cells(int levels) {
    Bytes b;
    for (int k = 0; k < levels; ++k) b.u8(mxCELL_CLASS).dims2(1, 1).u8(1);
    b.u8(mxDOUBLE_CLASS).dims2(0, 0);
    return b.s;
}

std::string repeated(const std::string& piece, int times) {
    std::string s;
    for (int k = 0; k < times; ++k) s += piece;
    return s;
}

TEST(WireFaults, CorruptPayloadsGiveMessagesNamingTheFault) {
    const std::string dims32 = Bytes().u8(mxINT8_CLASS).u8(32).s + repeated(Bytes().u64(1).s.substr(1), 32) + "\x05";
    struct Row {
        const char* what;
        std::string payload;
        std::string error;
    } rows[] = {
        {"empty payload", "", "truncated frame: frame kind needs 1 bytes, 0 left"},
        {"unknown kind", std::string(1, '\x42'), "corrupt frame: unknown frame kind 66"},
        {"function class", Bytes().u8(mxFUNCTION_CLASS).dims2(1, 1).s, "corrupt frame: unknown class id 16"},
        {"one dimension", Bytes().u8(mxDOUBLE_CLASS).u8(1).u64(1).s, "corrupt frame: 1 dimensions (2 to 32 allowed)"},
        {"too many dimensions", Bytes().u8(mxDOUBLE_CLASS).u8(33).s, "corrupt frame: 33 dimensions (2 to 32 allowed)"},
        {"32 dimensions", dims32, ""},
        {"truncated dims", Bytes().u8(mxDOUBLE_CLASS).u8(2).u64(1).u8(0).s,
         "truncated frame: dimension needs 8 bytes, 1 left"},
        {"data shorter than dims", Bytes().u8(mxDOUBLE_CLASS).dims2(2, 2).u64(0).s,
         "truncated frame: dims 2 x 2 need 32 bytes of data, 8 left"},
        {"char data counts two bytes each", Bytes().u8(mxCHAR_CLASS).dims2(1, 2).u8('a').u8(0).s,
         "truncated frame: dims 1 x 2 need 4 bytes of data, 2 left"},
        {"dims product overflows", Bytes().u8(mxDOUBLE_CLASS).dims2(1ull << 40, 1ull << 40).s,
         "corrupt frame: dims 1099511627776 x 1099511627776 hold more elements than a frame can carry"},
        {"empty with a dim Octave cannot index", Bytes().u8(mxDOUBLE_CLASS).dims2(0, 1ull << 63).s,
         "corrupt frame: dims 0 x 9223372036854775808 hold more elements than a frame can carry"},
        {"huge cell", Bytes().u8(mxCELL_CLASS).dims2(1000, 1000).u8(0).s,
         "truncated frame: cell of 1000 x 1000 needs at least 1000000 bytes, 1 left"},
        {"huge struct without fields", Bytes().u8(mxSTRUCT_CLASS).dims2(1ull << 28, 1).u32(0).s,
         "truncated frame: struct of 268435456 x 1 needs at least 268435456 bytes, 4 left"},
        {"struct element without fields marked present", Bytes().u8(mxSTRUCT_CLASS).dims2(1, 1).u32(0).u8(1).s,
         "corrupt frame: struct element without fields marked present"},
        {"cell marker not 0 or 1", Bytes().u8(mxCELL_CLASS).dims2(1, 1).u8(7).s,
         "corrupt frame: cell element marker 7 (0 or 1 expected)"},
        {"huge field count", Bytes().u8(mxSTRUCT_CLASS).dims2(1, 1).u32(0x7fffffff).s,
         "truncated frame: struct of 1 x 1 with 2147483647 fields needs more than the 0 bytes left"},
        {"field name longer than the frame",
         Bytes().u8(mxSTRUCT_CLASS).dims2(1, 1).u32(1).u32(1000).u8('a').u8(0).u8(0).u8(0).s,
         "truncated frame: field name of length 1000 exceeds the 4 bytes left"},
        {"field name longer than MATLAB allows", Bytes().u8(mxSTRUCT_CLASS).dims2(1, 1).u32(1).str(std::string(64, 'n')).u8(0).s,
         "corrupt frame: invalid field name '" + std::string(64, 'n') + "'"},
        {"invalid field name", Bytes().u8(mxSTRUCT_CLASS).dims2(1, 1).u32(1).str("1x").u8(0).s,
         "corrupt frame: invalid field name '1x'"},
        {"repeated field name", Bytes().u8(mxSTRUCT_CLASS).dims2(1, 1).u32(2).str("a").str("a").u8(0).u8(0).s,
         "corrupt frame: repeated field name 'a'"},
        {"missing field value", Bytes().u8(mxSTRUCT_CLASS).dims2(1, 1).u32(1).str("a").u8(1).s,
         "truncated frame: class id needs 1 bytes, 0 left (at value.a)"},
        {"fault deep inside",
         Bytes().u8(mxSTRUCT_CLASS).dims2(2, 1).u32(1).str("gens").u8(0).u8(1).u8(mxCELL_CLASS).dims2(1, 2).u8(0).u8(1)
             .u8(mxDOUBLE_CLASS).dims2(1, 1).s,
         "truncated frame: dims 1 x 1 need 8 bytes of data, 0 left (at value(2).gens{2})"},
        {"deepest nesting allowed", nested_cells(max_depth - 1), ""},
        {"nesting too deep", nested_cells(max_depth),
         "corrupt frame: array nested deeper than 64 levels (at value" + repeated("{1}", max_depth) + ")"},
        {"bytes after the array", Bytes().u8(mxDOUBLE_CLASS).dims2(0, 0).u8(5).s,
         "corrupt frame: 1 unexpected bytes after the payload"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(decode_error(row.payload), row.error);
    }
}

std::string error_frame_with(const std::string& message) {
    Writer w(Kind::error);
    w.put_string(message);
    return w.finish();
}

// The payloads a receiver takes, one by one, from these bytes of a peer that then closes its
// end, and how it stops: "[closed]" or "[failed: message]". "+" marks a payload after which
// more_waiting() saw another frame.
std::vector<std::string> receive_from_closing_peer(const std::string& bytes) {
    int fds[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds) != 0) return {"[no socket]"};
    const bool sent = ::send(fds[0], bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size());
    ::close(fds[0]);
    FrameReceiver frames;
    std::vector<std::string> got;
    std::string error;
    for (ReceiveStatus status; sent && (status = frames.receive(fds[1], error)) == ReceiveStatus::ok;) {
        got.emplace_back(frames.payload());
        if (frames.more_waiting(fds[1])) got.back() += "+";
    }
    got.push_back(!sent ? "[not sent]" : error.empty() ? "[closed]" : "[failed: " + error + "]");
    EXPECT_LT(frames.capacity(), 1u << 20) << "memory follows the bytes that arrive";
    ::close(fds[1]);
    return got;
}

TEST(FrameReceiver, TakesFramesOneByOneAndRefusesShortOrBadOnes) {
    const std::string first = error_frame_with("first"), second = error_frame_with("second");
    const std::string one = first.substr(header_length), two = second.substr(header_length);
    using Got = std::vector<std::string>;
    struct Row {
        const char* what;
        std::string bytes;
        Got expected;
    } rows[] = {
        {"frames sent together", first + second, Got{one + "+", two, "[closed]"}},
        {"nothing", "", Got{"[closed]"}},
        {"peer gone inside the header", std::string("\x05\x00", 2),
         Got{"[failed: connection lost while reading a frame header]"}},
        {"peer gone inside the payload", first + second.substr(0, 7),
         Got{one + "+", "[failed: connection lost inside a frame of 11 bytes]"}},
        {"announced length past what arrives", std::string("\x00\x00\x80\x0c", 4) + std::string(1000, 'z'),
         Got{"[failed: connection lost inside a frame of 209715200 bytes]"}},
        {"length zero", std::string("\x00\x00\x00\x00", 4), Got{"[failed: corrupt frame: length 0 outside 1..268435456]"}},
        {"length over the limit", std::string("\x01\x00\x00\x10", 4),
         Got{"[failed: corrupt frame: length 268435457 outside 1..268435456]"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(receive_from_closing_peer(row.bytes), row.expected);
    }
}

TEST(FrameReceiver, SeesAFrameThatArrivesLaterAndTakesOneLargerThanTheSocketBuffer) {
    int fds[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds), 0);
    // A receiver that misreads a length would wait for bytes that never come: fail instead.
    const timeval patience{30, 0};
    ASSERT_EQ(::setsockopt(fds[1], SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience), 0);
    const std::string first = error_frame_with("first"), second = error_frame_with("second");
    const std::string big = error_frame_with(std::string(3 << 20, 'y'));
    FrameReceiver frames;
    std::string error;
    ASSERT_TRUE(send_frame(fds[0], first));
    ASSERT_EQ(frames.receive(fds[1], error), ReceiveStatus::ok);
    EXPECT_FALSE(frames.more_waiting(fds[1]));
    ASSERT_TRUE(send_frame(fds[0], second));
    EXPECT_TRUE(frames.more_waiting(fds[1]));
    EXPECT_EQ(frames.payload(), first.substr(header_length));
    std::thread writer([&] { send_frame(fds[0], big); });
    EXPECT_EQ(frames.receive(fds[1], error), ReceiveStatus::ok);
    EXPECT_EQ(frames.payload(), second.substr(header_length));
    EXPECT_EQ(frames.receive(fds[1], error), ReceiveStatus::ok);
    EXPECT_EQ(frames.payload(), big.substr(header_length));
    // Closed first, so that a writer left with bytes to send fails instead of waiting.
    ::close(fds[1]);
    writer.join();
    ::close(fds[0]);
}

}  // namespace
