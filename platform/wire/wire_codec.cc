// Frame primitives and the checks every decoded array header passes.
#include "wire_codec.h"

#include <array>
#include <cstring>

namespace tamlo::wire {

bool is_data_class(unsigned c) {
    return c == logical_class || c == char_class || (c >= double_class && c <= uint64_class);
}

bool is_known_class(unsigned c) { return c == cell_class || c == struct_class || is_data_class(c); }

size_t data_element_size(unsigned c) {
    switch (c) {
        case double_class:
        case int64_class:
        case uint64_class: return 8;
        case single_class:
        case int32_class:
        case uint32_class: return 4;
        case int16_class:
        case uint16_class:
        case char_class: return 2;
        default: return 1;
    }
}

namespace {

uint64_t load_u64(const unsigned char* p) {
    uint64_t v = 0;
    for (int k = 0; k < 8; ++k) v |= static_cast<uint64_t>(p[k]) << (8 * k);
    return v;
}

// ASCII only, whatever the process's locale says about other bytes: field names are
// identifiers. A table, as names are checked for every struct that crosses.
enum : unsigned char { letter = 1, digit_or_underscore = 2 };
constexpr auto identifier_classes = [] {
    std::array<unsigned char, 256> t{};
    for (int c = 'a'; c <= 'z'; ++c) t[c] = t[c - 'a' + 'A'] = letter;
    for (int c = '0'; c <= '9'; ++c) t[c] = digit_or_underscore;
    t['_'] = digit_or_underscore;
    return t;
}();
bool is_ascii_letter(char c) { return identifier_classes[static_cast<unsigned char>(c)] == letter; }
bool is_identifier_char(char c) { return identifier_classes[static_cast<unsigned char>(c)] != 0; }

}  // namespace

bool valid_field_name(std::string_view name) {
    if (name.empty() || name.size() > max_field_name_length || !is_ascii_letter(name[0])) return false;
    for (char c : name)
        if (!is_identifier_char(c)) return false;
    return true;
}

std::string element_step(size_t index, size_t numel) {
    if (numel == 1) return {};
    std::string step = "(";
    step += std::to_string(index + 1);
    step += ')';
    return step;
}

bool count_elements(std::span<const uint64_t> dims, size_t& numel, std::string& problem) {
    // Every element takes at least one byte of a frame, so no honest array has more elements
    // than the largest frame has bytes. Zeros aside: Octave refuses an empty array whose other
    // dims pass its index type, so they are held to the same bound.
    uint64_t extent = 1;
    for (uint64_t d : dims) {
        if (d == 0) continue;
        if (extent > max_frame_length / d) {
            problem = "dims " + shape_text(dims) + " hold more elements than a frame can carry";
            return false;
        }
        extent *= d;
    }
    numel = 1;
    for (uint64_t d : dims) numel *= static_cast<size_t>(d);
    return true;
}

std::string shape_text(std::span<const uint64_t> dims) {
    std::string s;
    for (size_t k = 0; k < dims.size(); ++k) s += (k > 0 ? " x " : "") + std::to_string(dims[k]);
    return s;
}

std::string ArrayHeader::shape() const { return shape_text(dim_span()); }

void Writer::begin(Kind kind) {
    // The buffer of a huge frame is not kept for the small ones that follow.
    if (buf_.capacity() > kept_capacity) std::string().swap(buf_);
    buf_.assign(header_length, '\0');
    too_long_ = false;
    put_u8(static_cast<uint8_t>(kind));
}

void Writer::put_u32(uint32_t v) {
    char b[4];
    for (int k = 0; k < 4; ++k) b[k] = static_cast<char>((v >> (8 * k)) & 0xff);
    put_bytes(b, 4);
}

void Writer::put_u64(uint64_t v) {
    char b[8];
    for (int k = 0; k < 8; ++k) b[k] = static_cast<char>((v >> (8 * k)) & 0xff);
    put_bytes(b, 8);
}

void Writer::put_string(std::string_view s) {
    // Checked as a whole first: a length that wrapped its 32 bits must never go out.
    if (!room(4 + s.size())) return;
    put_u32(static_cast<uint32_t>(s.size()));
    put_bytes(s.data(), s.size());
}

void Writer::put_array_header(unsigned class_id, std::span<const uint64_t> dims) {
    put_u8(static_cast<uint8_t>(class_id));
    put_u8(static_cast<uint8_t>(dims.size()));
    for (uint64_t d : dims) put_u64(d);
}

void Writer::put_stand_in() {
    constexpr uint64_t zero_by_zero[2] = {0, 0};
    put_array_header(double_class, zero_by_zero);
}

const std::string& Writer::finish() {
    const size_t length = buf_.size() - header_length;
    for (size_t k = 0; k < header_length; ++k) buf_[k] = static_cast<char>((length >> (8 * k)) & 0xff);
    return buf_;
}

bool Reader::fail(std::string message) {
    if (error_.empty()) error_ = std::move(message);
    return false;
}

bool Reader::need(size_t n, const char* what) {
    if (!error_.empty()) return false;
    if (n <= left_) return true;
    return fail(std::string("truncated frame: ") + what + " needs " + std::to_string(n) + " bytes, " +
                std::to_string(left_) + " left");
}

bool Reader::get_u8(uint8_t& v, const char* what) {
    if (!need(1, what)) return false;
    v = *p_++;
    --left_;
    return true;
}

bool Reader::get_u32(uint32_t& v, const char* what) {
    if (!need(4, what)) return false;
    v = 0;
    for (int k = 0; k < 4; ++k) v |= static_cast<uint32_t>(p_[k]) << (8 * k);
    p_ += 4;
    left_ -= 4;
    return true;
}

bool Reader::get_u64(uint64_t& v, const char* what) {
    if (!need(8, what)) return false;
    v = load_u64(p_);
    p_ += 8;
    left_ -= 8;
    return true;
}

bool Reader::get_bytes(const unsigned char*& p, size_t n, const char* what) {
    if (!need(n, what)) return false;
    p = p_;
    p_ += n;
    left_ -= n;
    return true;
}

bool Reader::get_string(std::string_view& s, const char* what) {
    uint32_t n = 0;
    if (!get_u32(n, what)) return false;
    if (n > left_)
        return fail(std::string("truncated frame: ") + what + " of length " + std::to_string(n) + " exceeds the " +
                    std::to_string(left_) + " bytes left");
    s = std::string_view(reinterpret_cast<const char*>(p_), n);
    p_ += n;
    left_ -= n;
    return true;
}

bool Reader::get_string(std::string& s, const char* what) {
    std::string_view v;
    if (!get_string(v, what)) return false;
    s.assign(v);
    return true;
}

bool Reader::get_present(bool& present, const char* what) {
    uint8_t v = 0;
    if (!get_u8(v, what)) return false;
    if (v > 1) return fail(std::string("corrupt frame: ") + what + " " + std::to_string(v) + " (0 or 1 expected)");
    present = v == 1;
    return true;
}

bool Reader::get_absent(const char* what) {
    bool present = false;
    if (!get_present(present, what)) return false;
    return !present || fail(std::string("corrupt frame: ") + what + " marked present");
}

bool Reader::get_array_header(ArrayHeader& h) {
    uint8_t c = 0, ndim = 0;
    if (!get_u8(c, "class id") || !get_u8(ndim, "number of dimensions")) return false;
    if (!is_known_class(c)) return fail("corrupt frame: unknown class id " + std::to_string(c));
    if (ndim < 2 || ndim > max_dims)
        return fail("corrupt frame: " + std::to_string(ndim) + " dimensions (2 to " + std::to_string(max_dims) +
                    " allowed)");
    h.class_id = c;
    h.ndims = ndim;
    for (unsigned k = 0; k < ndim; ++k)
        if (!get_u64(h.dims[k], "dimension")) return false;
    std::string problem;
    if (!count_elements(h.dim_span(), h.numel, problem)) return fail("corrupt frame: " + problem);
    if (is_data_class(c)) {
        const size_t bytes = h.numel * data_element_size(c);
        if (bytes > left_)
            return fail("truncated frame: dims " + h.shape() + " need " + std::to_string(bytes) + " bytes of data, " +
                        std::to_string(left_) + " left");
    } else if (h.numel > left_) {
        return fail("truncated frame: " + std::string(c == cell_class ? "cell" : "struct") + " of " + h.shape() +
                    " needs at least " + std::to_string(h.numel) + " bytes, " + std::to_string(left_) + " left");
    }
    return true;
}

bool Reader::get_field_names(const ArrayHeader& h, std::vector<std::string_view>& names) {
    uint32_t nfields = 0;
    if (!get_u32(nfields, "field count")) return false;
    // Each field name takes at least 4 bytes, each value slot at least 1.
    if (nfields > left_ / 4 || (nfields > 0 && h.numel > left_ / nfields))
        return fail("truncated frame: struct of " + h.shape() + " with " + std::to_string(nfields) +
                    " fields needs more than the " + std::to_string(left_) + " bytes left");
    names.resize(nfields);
    for (uint32_t f = 0; f < nfields; ++f) {
        if (!get_string(names[f], "field name")) return false;
        if (!valid_field_name(names[f])) return fail("corrupt frame: invalid field name '" + std::string(names[f]) + "'");
        for (uint32_t g = 0; g < f; ++g)
            if (names[g] == names[f]) return fail("corrupt frame: repeated field name '" + std::string(names[f]) + "'");
    }
    return true;
}

bool Reader::expect_end() {
    if (failed()) return false;
    if (left_ == 0) return true;
    return fail("corrupt frame: " + std::to_string(left_) + " unexpected bytes after the payload");
}

bool read_kind(Reader& r, Kind& kind) {
    uint8_t k = 0;
    if (!r.get_u8(k, "frame kind")) return false;
    const bool request = k >= static_cast<uint8_t>(Kind::eval) && k <= static_cast<uint8_t>(Kind::eval_then_get);
    const bool reply = k >= static_cast<uint8_t>(Kind::eval_done) && k <= static_cast<uint8_t>(Kind::error);
    if (!request && !reply) return r.fail("corrupt frame: unknown frame kind " + std::to_string(k));
    kind = static_cast<Kind>(k);
    return true;
}

}  // namespace tamlo::wire
