// One conversion per MATLAB class between frame bytes and octave_value, composed for cells
// and structs.
#include "octave_codec.h"

#include <octave/Cell.h>
#include <octave/oct-map.h>

#include <cstring>
#include <vector>

namespace tamlo::engine {
namespace {

using namespace tamlo::wire;

dim_vector octave_dims(const ArrayHeader& h) {
    dim_vector dv;
    dv.resize(static_cast<int>(h.dims.size()));
    for (size_t k = 0; k < h.dims.size(); ++k) dv(static_cast<int>(k)) = static_cast<octave_idx_type>(h.dims[k]);
    return dv;
}

// Octave's numeric arrays hold plain values in column-major order, as the frame does.
template <typename OctArray>
octave_value copy_block(const ArrayHeader& h, const unsigned char* bytes) {
    OctArray out(octave_dims(h));
    if (h.numel > 0) std::memcpy(out.fortran_vec(), bytes, h.numel * data_element_size(h.class_id));
    return octave_value(out);
}

struct OctaveBuilder {
    using Value = octave_value;
    using Cell = ::Cell;
    using Struct = octave_map;

    bool make_data(const ArrayHeader& h, const unsigned char* bytes, Value& out) {
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
                for (size_t i = 0; i < h.numel; ++i) {
                    uint16_t c;
                    std::memcpy(&c, bytes + 2 * i, 2);
                    p[i] = static_cast<char>(c);
                }
                out = octave_value(a, '\'');
                break;
            }
            default: return false;
        }
        return true;
    }
    bool begin_cell(const ArrayHeader& h, Cell& c) {
        c = Cell(octave_dims(h));
        return true;
    }
    void set_cell(Cell& c, size_t i, Value&& e) { c(static_cast<octave_idx_type>(i)) = std::move(e); }
    void end_cell(Cell& c, Value& out) { out = octave_value(c); }
    bool begin_struct(const ArrayHeader& h, const std::vector<std::string>& names, Struct& s) {
        string_vector keys(static_cast<octave_idx_type>(names.size()));
        for (size_t f = 0; f < names.size(); ++f) keys(static_cast<octave_idx_type>(f)) = names[f];
        s = octave_map(octave_dims(h), keys);
        return true;
    }
    void set_field(Struct& s, size_t i, size_t f, Value&& e) {
        s.contents(static_cast<octave_idx_type>(f))(static_cast<octave_idx_type>(i)) = std::move(e);
    }
    void end_struct(Struct& s, Value& out) { out = octave_value(s); }
};

std::vector<uint64_t> frame_dims(const dim_vector& dv) {
    std::vector<uint64_t> d(static_cast<size_t>(dv.ndims()));
    for (int k = 0; k < dv.ndims(); ++k) d[static_cast<size_t>(k)] = static_cast<uint64_t>(dv(k));
    return d;
}

void put_empty_double(Writer& w) { w.put_array_header(double_class, {0, 0}); }

template <typename OctArray>
void put_block(Writer& w, const OctArray& a, unsigned class_id) {
    w.put_array_header(class_id, frame_dims(a.dims()));
    w.put_bytes(a.data(), static_cast<size_t>(a.numel()) * data_element_size(class_id));
}

void put_logical(Writer& w, const boolNDArray& a) {
    w.put_array_header(logical_class, frame_dims(a.dims()));
    const bool* p = a.data();
    for (octave_idx_type i = 0; i < a.numel(); ++i) w.put_u8(p[i] ? 1 : 0);
}

void put_char(Writer& w, const charNDArray& a) {
    w.put_array_header(char_class, frame_dims(a.dims()));
    const char* p = a.data();
    for (octave_idx_type i = 0; i < a.numel(); ++i) {
        const uint16_t c = static_cast<unsigned char>(p[i]);
        w.put_bytes(&c, 2);
    }
}

void put_value(Writer& w, const octave_value& v, int depth);

void put_cell(Writer& w, const Cell& c, int depth) {
    w.put_array_header(cell_class, frame_dims(c.dims()));
    for (octave_idx_type i = 0; i < c.numel(); ++i) {
        w.put_u8(1);
        put_value(w, c(i), depth + 1);
    }
}

void put_struct(Writer& w, const octave_map& m, int depth) {
    w.put_array_header(struct_class, frame_dims(m.dims()));
    // keys() gives the fields in the order they were added; iterating the map would not.
    const string_vector keys = m.keys();
    w.put_u32(static_cast<uint32_t>(keys.numel()));
    for (octave_idx_type f = 0; f < keys.numel(); ++f) w.put_string(keys(f));
    std::vector<const Cell*> columns;
    for (octave_idx_type f = 0; f < keys.numel(); ++f) columns.push_back(&m.contents(f));
    for (octave_idx_type i = 0; i < m.numel(); ++i) {
        for (const Cell* column : columns) {
            w.put_u8(1);
            put_value(w, (*column)(i), depth + 1);
        }
    }
}

void put_value(Writer& w, const octave_value& value, int depth) {
    if (depth >= max_depth || !value.is_defined() || value.isobject() || value.is_classdef_object() ||
        value.is_function_handle()) {
        put_empty_double(w);
        return;
    }
    const octave_value v = value.issparse() ? value.full_value() : value;
    if (v.iscell())
        put_cell(w, v.cell_value(), depth);
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
        put_empty_double(w);
}

}  // namespace

bool get_octave_value(Reader& r, octave_value& out) {
    OctaveBuilder b;
    return decode_top_array(r, b, out);
}

void put_octave_value(Writer& w, const octave_value& v) { put_value(w, v, 0); }

}  // namespace tamlo::engine
