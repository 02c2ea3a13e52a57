// One conversion per MATLAB class between frame bytes and octave_value, composed for cells
// and structs.
//
// Values are built in the form Octave itself settles on (a one-element array is a scalar
// value, a one-element struct a scalar map), directly, so that no value is made twice.
#include "octave_codec.h"

#include <octave/Cell.h>
#include <octave/error.h>
#include <octave/oct-map.h>

#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tamlo::engine {
namespace {

using namespace tamlo::wire;

dim_vector octave_dims(const ArrayHeader& h) {
    if (h.ndims == 2)
        return dim_vector(static_cast<octave_idx_type>(h.dims[0]), static_cast<octave_idx_type>(h.dims[1]));
    dim_vector dv;
    dv.resize(static_cast<int>(h.ndims));
    for (unsigned k = 0; k < h.ndims; ++k) dv(static_cast<int>(k)) = static_cast<octave_idx_type>(h.dims[k]);
    return dv;
}

template <typename T>
T load(const unsigned char* bytes) {
    T v;
    std::memcpy(&v, bytes, sizeof v);
    return v;
}

// Octave's numeric arrays hold plain values in column-major order, as the frame does.
template <typename OctArray>
octave_value copy_block(const ArrayHeader& h, const unsigned char* bytes) {
    OctArray out(octave_dims(h));
    if (h.numel > 0) std::memcpy(out.fortran_vec(), bytes, h.numel * data_element_size(h.class_id));
    return octave_value(out);
}

// A single number or logical: the scalar value Octave would narrow a 1 x 1 array to.
bool make_scalar(unsigned class_id, const unsigned char* bytes, octave_value& out) {
    switch (class_id) {
        case double_class: out = octave_value(load<double>(bytes)); return true;
        case single_class: out = octave_value(load<float>(bytes)); return true;
        case int8_class: out = octave_value(octave_int8(load<int8_t>(bytes))); return true;
        case uint8_class: out = octave_value(octave_uint8(load<uint8_t>(bytes))); return true;
        case int16_class: out = octave_value(octave_int16(load<int16_t>(bytes))); return true;
        case uint16_class: out = octave_value(octave_uint16(load<uint16_t>(bytes))); return true;
        case int32_class: out = octave_value(octave_int32(load<int32_t>(bytes))); return true;
        case uint32_class: out = octave_value(octave_uint32(load<uint32_t>(bytes))); return true;
        case int64_class: out = octave_value(octave_int64(load<int64_t>(bytes))); return true;
        case uint64_class: out = octave_value(octave_uint64(load<uint64_t>(bytes))); return true;
        case logical_class: out = octave_value(bytes[0] != 0); return true;
        default: return false;
    }
}

// Structs of one shape arrive step after step: each list of field names is made once, and the
// structs built from it share it (Octave copies a list before changing it).
class FieldLists {
public:
    const octave_fields& get(const std::vector<std::string_view>& names) {
        key_.clear();
        for (std::string_view n : names) {
            key_.append(n);
            key_.push_back('\0');
        }
        if (auto found = lists_.find(key_); found != lists_.end()) return found->second;
        // Values of ever new shapes must not grow the engine without end.
        if (lists_.size() >= max_lists) lists_.clear();
        string_vector keys(static_cast<octave_idx_type>(names.size()));
        for (size_t f = 0; f < names.size(); ++f) keys(static_cast<octave_idx_type>(f)) = std::string(names[f]);
        return lists_.emplace(key_, octave_fields(keys)).first->second;
    }

private:
    static constexpr size_t max_lists = 4096;
    std::string key_;
    std::unordered_map<std::string, octave_fields> lists_;
};

FieldLists& field_lists() {
    static FieldLists lists;
    return lists;
}

// A struct being decoded: a one-element struct fills a scalar map, any other shape one cell
// per field (Octave's own layout: a field's values side by side).
struct StructParts {
    octave_fields keys;
    dim_vector dims;
    bool scalar = false;
    std::vector<octave_value> values;  // scalar: one per field
    std::vector<Cell> columns;         // otherwise: one per field
};

struct OctaveBuilder {
    using Value = octave_value;
    using Cell = ::Cell;
    using Struct = StructParts;

    // What an element or field holding no array shows: [] (one value, shared by every slot).
    const octave_value empty = Matrix();

    bool make_data(const ArrayHeader& h, const unsigned char* bytes, Value& out) {
        if (h.numel == 1 && make_scalar(h.class_id, bytes, out)) return true;
        switch (h.class_id) {
            case double_class: out = copy_block<NDArray>(h, bytes); break;
            case single_class: out = copy_block<FloatNDArray>(h, bytes); break;
            case int8_class: out = copy_block<int8NDArray>(h, bytes); break;
            case uint8_class: out = copy_block<uint8NDArray>(h, bytes); break;
            case int16_class: out = copy_block<int16NDArray>(h, bytes); break;
            case uint16_class: out = copy_block<uint16NDArray>(h, bytes); break;
            case int32_class: out = copy_block<int32NDArray>(h, bytes); break;
            case uint32_class: out = copy_block<uint32NDArray>(h, bytes); break;
            case int64_class: out = copy_block<int64NDArray>(h, bytes); break;
            case uint64_class: out = copy_block<uint64NDArray>(h, bytes); break;
            case logical_class: {
                boolNDArray a(octave_dims(h));
                bool* p = a.fortran_vec();
                for (size_t i = 0; i < h.numel; ++i) p[i] = bytes[i] != 0;
                out = octave_value(a);
                break;
            }
            case char_class: {
                charNDArray a(octave_dims(h));
                char* p = a.fortran_vec();
                // Octave's text is 8-bit: each 16-bit character carries one byte of it.
                for (size_t i = 0; i < h.numel; ++i) p[i] = static_cast<char>(load<uint16_t>(bytes + 2 * i));
                out = octave_value(a, '\'');
                break;
            }
            default: return false;
        }
        return true;
    }
    bool begin_cell(const ArrayHeader& h, Cell& c) {
        c = Cell(octave_dims(h), empty);
        return true;
    }
    void set_cell(Cell& c, size_t i, Value&& e) { c.xelem(static_cast<octave_idx_type>(i)) = std::move(e); }
    void end_cell(Cell& c, Value& out) { out = octave_value(c); }
    bool begin_struct(const ArrayHeader& h, const std::vector<std::string_view>& names, Struct& s) {
        s.keys = field_lists().get(names);
        s.dims = octave_dims(h);
        s.scalar = h.numel == 1;
        if (s.scalar) {
            s.values.assign(names.size(), empty);
        } else {
            s.columns.reserve(names.size());
            for (size_t f = 0; f < names.size(); ++f) s.columns.emplace_back(s.dims, empty);
        }
        return true;
    }
    void set_field(Struct& s, size_t i, size_t f, Value&& e) {
        if (s.scalar)
            s.values[f] = std::move(e);
        else
            s.columns[f].xelem(static_cast<octave_idx_type>(i)) = std::move(e);
    }
    void end_struct(Struct& s, Value& out) {
        const octave_idx_type nfields = s.keys.nfields();
        if (s.scalar) {
            octave_scalar_map m(s.keys);
            for (octave_idx_type f = 0; f < nfields; ++f) m.contents(f) = std::move(s.values[static_cast<size_t>(f)]);
            out = octave_value(m);
            return;
        }
        octave_map m(s.dims, s.keys);
        for (octave_idx_type f = 0; f < nfields; ++f) m.contents(f) = s.columns[static_cast<size_t>(f)];
        out = octave_value(m);
    }
};

// A value's dims as the frame carries them, held in place; dims past the format's limits are
// an error, as the reader would refuse them.
struct FrameDims {
    uint64_t d[max_dims];
    size_t n = 0;
    explicit FrameDims(const dim_vector& dv) {
        if (dv.ndims() > static_cast<int>(max_dims))
            error("arrays of %ld dimensions cannot be sent (at most %u)", static_cast<long>(dv.ndims()), max_dims);
        n = static_cast<size_t>(dv.ndims());
        for (size_t k = 0; k < n; ++k) d[k] = static_cast<uint64_t>(dv(static_cast<int>(k)));
        size_t numel = 0;
        std::string problem;
        if (!count_elements(span(), numel, problem)) error("%s", problem.c_str());
    }
    std::span<const uint64_t> span() const { return {d, n}; }
};

constexpr uint64_t one_by_one[2] = {1, 1};

template <typename T>
void put_scalar_bytes(Writer& w, unsigned class_id, T v) {
    w.put_array_header(class_id, one_by_one);
    w.put_bytes(&v, sizeof v);
}

// A real scalar value (never complex); false for a class that is not a number or logical.
bool put_scalar(Writer& w, const octave_value& v) {
    if (v.is_double_type())
        put_scalar_bytes(w, double_class, v.double_value());
    else if (v.is_single_type())
        put_scalar_bytes(w, single_class, v.float_value());
    else if (v.islogical())
        put_scalar_bytes(w, logical_class, static_cast<uint8_t>(v.bool_value() ? 1 : 0));
    else if (v.is_int8_type())
        put_scalar_bytes(w, int8_class, v.int8_scalar_value().value());
    else if (v.is_uint8_type())
        put_scalar_bytes(w, uint8_class, v.uint8_scalar_value().value());
    else if (v.is_int16_type())
        put_scalar_bytes(w, int16_class, v.int16_scalar_value().value());
    else if (v.is_uint16_type())
        put_scalar_bytes(w, uint16_class, v.uint16_scalar_value().value());
    else if (v.is_int32_type())
        put_scalar_bytes(w, int32_class, v.int32_scalar_value().value());
    else if (v.is_uint32_type())
        put_scalar_bytes(w, uint32_class, v.uint32_scalar_value().value());
    else if (v.is_int64_type())
        put_scalar_bytes(w, int64_class, v.int64_scalar_value().value());
    else if (v.is_uint64_type())
        put_scalar_bytes(w, uint64_class, v.uint64_scalar_value().value());
    else
        return false;
    return true;
}

template <typename OctArray>
void put_block(Writer& w, const OctArray& a, unsigned class_id) {
    w.put_array_header(class_id, FrameDims(a.dims()).span());
    w.put_bytes(a.data(), static_cast<size_t>(a.numel()) * data_element_size(class_id));
}

void put_logical(Writer& w, const boolNDArray& a) {
    w.put_array_header(logical_class, FrameDims(a.dims()).span());
    const bool* p = a.data();
    unsigned char* out = w.put_space(static_cast<size_t>(a.numel()));
    if (out == nullptr) return;
    for (octave_idx_type i = 0; i < a.numel(); ++i) out[i] = p[i] ? 1 : 0;
}

void put_char(Writer& w, const charNDArray& a) {
    w.put_array_header(char_class, FrameDims(a.dims()).span());
    const char* p = a.data();
    unsigned char* out = w.put_space(2 * static_cast<size_t>(a.numel()));
    if (out == nullptr) return;
    for (octave_idx_type i = 0; i < a.numel(); ++i) {
        const uint16_t c = static_cast<unsigned char>(p[i]);
        std::memcpy(out + 2 * i, &c, 2);
    }
}

void put_value(Writer& w, const octave_value& v, int depth);

void put_cell(Writer& w, const Cell& c, int depth) {
    w.put_array_header(cell_class, FrameDims(c.dims()).span());
    for (octave_idx_type i = 0; i < c.numel() && !w.too_long(); ++i) {
        w.put_u8(1);
        put_value(w, c(i), depth + 1);
    }
}

// keys() gives the fields in the order they were added; iterating a map would not.
void put_field_names(Writer& w, const string_vector& keys) {
    w.put_u32(static_cast<uint32_t>(keys.numel()));
    for (octave_idx_type f = 0; f < keys.numel(); ++f) w.put_string(keys(f));
}

void put_scalar_struct(Writer& w, const octave_scalar_map& m, int depth) {
    w.put_array_header(struct_class, one_by_one);
    put_field_names(w, m.keys());
    if (m.nfields() == 0) w.put_u8(0);
    for (octave_idx_type f = 0; f < m.nfields(); ++f) {
        w.put_u8(1);
        put_value(w, m.contents(f), depth + 1);
    }
}

void put_struct(Writer& w, const octave_map& m, int depth) {
    w.put_array_header(struct_class, FrameDims(m.dims()).span());
    put_field_names(w, m.keys());
    std::vector<const Cell*> columns;
    columns.reserve(static_cast<size_t>(m.nfields()));
    for (octave_idx_type f = 0; f < m.nfields(); ++f) columns.push_back(&m.contents(f));
    for (octave_idx_type i = 0; i < m.numel() && !w.too_long(); ++i) {
        if (columns.empty()) w.put_u8(0);
        for (const Cell* column : columns) {
            w.put_u8(1);
            put_value(w, (*column)(i), depth + 1);
        }
    }
}

void put_value(Writer& w, const octave_value& value, int depth) {
    // Past the frame's end nothing more is written: stop converting.
    if (w.too_long()) return;
    if (!value.is_defined() || value.isobject() || value.is_classdef_object() || value.is_function_handle() ||
        ((value.iscell() || value.isstruct()) && needs_stand_in(struct_class, depth))) {
        w.put_stand_in();
        return;
    }
    if (value.is_real_scalar() && put_scalar(w, value)) return;
    const octave_value v = value.issparse() ? value.full_value() : value;
    if (v.iscell())
        put_cell(w, v.cell_value(), depth);
    else if (v.isstruct() && v.numel() == 1)
        put_scalar_struct(w, v.scalar_map_value(), depth);
    else if (v.isstruct())
        put_struct(w, v.map_value(), depth);
    else if (v.islogical())
        put_logical(w, v.bool_array_value());
    else if (v.is_string())
        put_char(w, v.char_array_value());
    else if (v.is_double_type())
        put_block(w, v.iscomplex() ? real(v.complex_array_value()) : v.array_value(), double_class);
    else if (v.is_single_type())
        put_block(w, v.iscomplex() ? real(v.float_complex_array_value()) : v.float_array_value(), single_class);
    else if (v.is_int8_type())
        put_block(w, v.int8_array_value(), int8_class);
    else if (v.is_uint8_type())
        put_block(w, v.uint8_array_value(), uint8_class);
    else if (v.is_int16_type())
        put_block(w, v.int16_array_value(), int16_class);
    else if (v.is_uint16_type())
        put_block(w, v.uint16_array_value(), uint16_class);
    else if (v.is_int32_type())
        put_block(w, v.int32_array_value(), int32_class);
    else if (v.is_uint32_type())
        put_block(w, v.uint32_array_value(), uint32_class);
    else if (v.is_int64_type())
        put_block(w, v.int64_array_value(), int64_class);
    else if (v.is_uint64_type())
        put_block(w, v.uint64_array_value(), uint64_class);
    else
        w.put_stand_in();
}

}  // namespace

bool get_octave_value(Reader& r, octave_value& out) {
    OctaveBuilder b;
    return decode_top_array(r, b, out);
}

void put_octave_value(Writer& w, const octave_value& v) { put_value(w, v, 0); }

}  // namespace tamlo::engine
