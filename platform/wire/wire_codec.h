// The binary frames that libeng and octave-engine exchange over their socket: primitives,
// and one checked array decoder shared by both ends (each end supplies a builder for its own
// value type; the engine cannot see matrix.h because Octave declares its own mxArray).
//
// A frame is a 4-byte little-endian length L (1..max_frame_length), then L bytes: one kind
// byte and the kind's payload. Integers are little-endian; numeric data is copied in the
// machine's own order (both ends always run on the same machine).
//
//   eval        u32 output limit (bytes the client keeps), string command
//   eval_done   u8 status (0 evaluated, 1 the engine is quitting), string printed output
//   put         string name, array
//   get         string name
//   value       array
//   ok, no_variable, close    no payload
//   error       string message
//
// string: u32 length, bytes. array: u8 class id (mxClassID's numbers), u8 number of dims
// (2..max_dims), u64 per dim, then by class: numeric/char/logical data (count x element size
// bytes; logicals one byte each); cell: per element u8 present (0/1) and, when 1, an array;
// struct: u32 field count, the field names as strings in order, then per element, per field,
// u8 present and, when 1, an array; a struct without fields has one u8 0 per element instead.
//
// Limits, the same for writers and readers, so that whatever is sent can be read:
// - Every element of every array takes at least one byte, so a frame's length bounds the
//   element count of everything in it.
// - The product of an array's non-zero dims is at most max_frame_length, so an empty
//   0 x 2^63 array, which Octave cannot index, is refused like a full one.
// - A frame holds at most max_frame_length bytes; a value that does not fit is refused by
//   the side that holds it, with an error, and the session goes on.
// - Arrays nest at most max_depth levels (the top-level value is level 1). Writers send a
//   cell or struct found at level max_depth as the stand-in value, an empty 0 x 0 double
//   ([]), since its elements would lie deeper; a reader refuses a deeper array.
#ifndef TAMLO_PLATFORM_WIRE_CODEC_H
#define TAMLO_PLATFORM_WIRE_CODEC_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tamlo::wire {

enum class Kind : uint8_t {
    eval = 1,
    put = 2,
    get = 3,
    close = 4,
    // An eval whose reply is followed by one get reply per name it lists, in that order.
    eval_then_get = 5,
    eval_done = 0x81,
    ok = 0x82,
    value = 0x83,
    no_variable = 0x84,
    error = 0x85,
};

constexpr uint32_t max_frame_length = 256u << 20;
constexpr int max_depth = 64;
constexpr unsigned max_dims = 32;
constexpr size_t header_length = 4;
constexpr size_t max_field_name_length = 63;
// Names one eval_then_get may list.
constexpr uint32_t max_names_after_eval = 8;

// Class ids as MATLAB numbers them (mxClassID).
enum ClassId : uint8_t {
    cell_class = 1,
    struct_class = 2,
    logical_class = 3,
    char_class = 4,
    double_class = 6,
    single_class = 7,
    int8_class = 8,
    uint8_class = 9,
    int16_class = 10,
    uint16_class = 11,
    int32_class = 12,
    uint32_class = 13,
    int64_class = 14,
    uint64_class = 15,
};

bool is_data_class(unsigned c);
bool is_known_class(unsigned c);
size_t data_element_size(unsigned c);
bool valid_field_name(std::string_view name);
// The element count of dims; false, with `problem` saying why, when the product of the
// non-zero dims passes what one frame can carry. Readers refuse such dims, so writers check
// them too: whatever is sent can be read.
bool count_elements(std::span<const uint64_t> dims, size_t& numel, std::string& problem);
// True for a cell or struct at the level where writers send the stand-in value instead
// (depth counts from 0 at the top-level value).
inline bool needs_stand_in(unsigned class_id, int depth) {
    return depth >= max_depth - 1 && !is_data_class(class_id);
}
// Dims as a reader sees them: "2 x 3".
std::string shape_text(std::span<const uint64_t> dims);

// Builds one frame. The length prefix is filled in by finish(). A writer kept across frames
// (begin() again) reuses its buffer, so a steady stream of requests allocates nothing.
// A put that would take the frame past max_frame_length writes nothing and marks the frame
// too long; later puts write nothing either, so a huge value costs at most one frame of memory.
class Writer {
public:
    Writer() = default;
    explicit Writer(Kind kind) { begin(kind); }
    // Drops what was written and starts a frame of this kind.
    void begin(Kind kind);
    void put_u8(uint8_t v) {
        if (room(1)) buf_.push_back(static_cast<char>(v));
    }
    void put_u32(uint32_t v);
    void put_u64(uint64_t v);
    void put_bytes(const void* p, size_t n) {
        if (room(n)) buf_.append(static_cast<const char*>(p), n);
    }
    void put_string(std::string_view s);
    // Appends n bytes for the caller to fill in; the pointer is good until the next put.
    // Null when they do not fit.
    unsigned char* put_space(size_t n) {
        if (!room(n)) return nullptr;
        buf_.resize(buf_.size() + n);
        return reinterpret_cast<unsigned char*>(buf_.data() + buf_.size() - n);
    }
    // class id, dims
    void put_array_header(unsigned class_id, std::span<const uint64_t> dims);
    // The stand-in value: an empty 0 x 0 double.
    void put_stand_in();
    // True when something did not fit: the frame must not be sent.
    bool too_long() const { return too_long_; }
    // The whole frame, length prefix included.
    const std::string& finish();

private:
    bool room(size_t n) {
        if (!too_long_ && n > max_frame_length - (buf_.size() - header_length)) too_long_ = true;
        return !too_long_;
    }
    static constexpr size_t kept_capacity = 1u << 20;
    std::string buf_;
    bool too_long_ = false;
};

// Dims are held in place: decoding an array header allocates nothing.
struct ArrayHeader {
    unsigned class_id = 0;
    unsigned ndims = 0;
    uint64_t dims[max_dims];
    size_t numel = 0;
    std::span<const uint64_t> dim_span() const { return {dims, ndims}; }
    std::string shape() const;
};

// Reads the payload of one frame (after the length prefix). Every read is checked against
// the bytes left; the first failure stops reading and error() names what was wrong.
class Reader {
public:
    Reader(const void* data, size_t length) : p_(static_cast<const unsigned char*>(data)), left_(length) {}
    bool get_u8(uint8_t& v, const char* what);
    bool get_u32(uint32_t& v, const char* what);
    bool get_u64(uint64_t& v, const char* what);
    bool get_string(std::string& s, const char* what);
    // The same, handed out in place.
    bool get_string(std::string_view& s, const char* what);
    // Hands out n bytes in place.
    bool get_bytes(const unsigned char*& p, size_t n, const char* what);
    // Class id and dims, checked: known class, 2..max_dims dims, an element count that the rest
    // of the frame can hold.
    bool get_array_header(ArrayHeader& h);
    // Struct field names, checked: valid identifiers, no repeats, lengths within the frame.
    // The names are views into the frame.
    bool get_field_names(const ArrayHeader& h, std::vector<std::string_view>& names);
    // A present marker of an element (0 or 1).
    bool get_present(bool& present, const char* what);
    // A marker that must be 0.
    bool get_absent(const char* what);
    // True when every byte has been consumed; otherwise fails.
    bool expect_end();
    // Records the first failure; always false.
    bool fail(std::string message);
    bool failed() const { return !error_.empty(); }
    const std::string& error() const { return error_; }
    size_t left() const { return left_; }
    // Where in the array being decoded a failure lies, built while unwinding.
    void prefix_location(const std::string& step) { where_ = step + where_; }
    void finish_location() {
        if (!where_.empty()) error_ += " (at value" + where_ + ")";
        where_.clear();
    }

private:
    bool need(size_t n, const char* what);
    const unsigned char* p_;
    size_t left_;
    std::string error_;
    std::string where_;
};

// Reads a payload's kind byte; fails for an empty payload or an unknown kind.
bool read_kind(Reader& r, Kind& kind);

std::string element_step(size_t index, size_t numel);

// Decodes one array with a builder B that provides:
//   using Value, Cell, Struct;
//   bool make_data(const ArrayHeader&, const unsigned char* bytes, Value& out);
//   bool begin_cell(const ArrayHeader&, Cell&);  void set_cell(Cell&, size_t i, Value&&);
//   void end_cell(Cell&, Value& out);
//   bool begin_struct(const ArrayHeader&, const std::vector<std::string_view>& names, Struct&);
//   void set_field(Struct&, size_t i, size_t f, Value&&);  void end_struct(Struct&, Value& out);
// Elements marked absent are left as the builder made them.
template <class B>
bool decode_array(Reader& r, B& b, typename B::Value& out, int depth = 0) {
    if (depth >= max_depth)
        return r.fail("corrupt frame: array nested deeper than " + std::to_string(max_depth) + " levels");
    ArrayHeader h;
    if (!r.get_array_header(h)) return false;
    if (is_data_class(h.class_id)) {
        const unsigned char* bytes = nullptr;
        if (!r.get_bytes(bytes, h.numel * data_element_size(h.class_id), "array data")) return false;
        return b.make_data(h, bytes, out) || r.fail("cannot allocate an array of " + h.shape());
    }
    if (h.class_id == cell_class) {
        typename B::Cell c;
        if (!b.begin_cell(h, c)) return r.fail("cannot allocate a cell of " + h.shape());
        for (size_t i = 0; i < h.numel; ++i) {
            bool present = false;
            if (!r.get_present(present, "cell element marker")) return false;
            if (!present) continue;
            typename B::Value e{};
            if (!decode_array(r, b, e, depth + 1)) {
                r.prefix_location(std::string(1, '{').append(std::to_string(i + 1)).append(1, '}'));
                return false;
            }
            b.set_cell(c, i, std::move(e));
        }
        b.end_cell(c, out);
        return true;
    }
    std::vector<std::string_view> names;
    if (!r.get_field_names(h, names)) return false;
    typename B::Struct s;
    if (!b.begin_struct(h, names, s)) return r.fail("cannot allocate a struct of " + h.shape());
    for (size_t i = 0; i < h.numel; ++i) {
        if (names.empty() && !r.get_absent("struct element without fields")) return false;
        for (size_t f = 0; f < names.size(); ++f) {
            bool present = false;
            if (!r.get_present(present, "field value marker")) return false;
            if (!present) continue;
            typename B::Value e{};
            if (!decode_array(r, b, e, depth + 1)) {
                r.prefix_location(element_step(i, h.numel) + "." + std::string(names[f]));
                return false;
            }
            b.set_field(s, i, f, std::move(e));
        }
    }
    b.end_struct(s, out);
    return true;
}

// decode_array at the top of a frame, with the failure's location appended to the message.
template <class B>
bool decode_top_array(Reader& r, B& b, typename B::Value& out) {
    bool ok = decode_array(r, b, out);
    if (!ok) r.finish_location();
    return ok;
}

}  // namespace tamlo::wire

#endif
