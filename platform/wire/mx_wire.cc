// mxArray <-> frame bytes, through libmx's public API only.
#include "mx_wire.h"

#include <cstring>
#include <type_traits>
#include <vector>

namespace tamlo::wire {
namespace {

static_assert(sizeof(mxLogical) == 1, "logicals travel as one byte each");
static_assert(std::is_same_v<mwSize, uint64_t>, "dims go to and from frames without conversion");

bool put_at(Writer& w, const mxArray* a, int depth, std::string& error) {
    const unsigned c = mxGetClassID(a);
    if (!is_known_class(c)) {
        error = std::string("arrays of class ") + mxGetClassName(a) + " cannot be sent";
        return false;
    }
    if (needs_stand_in(c, depth)) {
        w.put_stand_in();
        return true;
    }
    const mwSize ndim = mxGetNumberOfDimensions(a);
    if (ndim > max_dims) {
        error = "array has " + std::to_string(ndim) + " dimensions, at most " + std::to_string(max_dims) + " can be sent";
        return false;
    }
    const std::span<const uint64_t> dims(mxGetDimensions(a), ndim);
    size_t numel = 0;
    if (!count_elements(dims, numel, error)) return false;
    w.put_array_header(c, dims);
    if (is_data_class(c)) {
        if (numel > 0) w.put_bytes(mxGetData(a), numel * data_element_size(c));
        return true;
    }
    if (c == cell_class) {
        for (size_t i = 0; i < numel && !w.too_long(); ++i) {
            const mxArray* e = mxGetCell(a, i);
            w.put_u8(e != nullptr ? 1 : 0);
            if (e != nullptr && !put_at(w, e, depth + 1, error)) return false;
        }
        return true;
    }
    const int nfields = mxGetNumberOfFields(a);
    w.put_u32(static_cast<uint32_t>(nfields));
    for (int f = 0; f < nfields; ++f) w.put_string(mxGetFieldNameByNumber(a, f));
    for (size_t i = 0; i < numel && !w.too_long(); ++i) {
        if (nfields == 0) w.put_u8(0);
        for (int f = 0; f < nfields; ++f) {
            const mxArray* e = mxGetFieldByNumber(a, i, f);
            w.put_u8(e != nullptr ? 1 : 0);
            if (e != nullptr && !put_at(w, e, depth + 1, error)) return false;
        }
    }
    return true;
}

struct MxBuilder {
    using Value = ArrayPtr;
    using Cell = ArrayPtr;
    using Struct = ArrayPtr;

    bool make_data(const ArrayHeader& h, const unsigned char* bytes, Value& out) {
        if (h.class_id == logical_class)
            out.reset(mxCreateLogicalArray(h.ndims, h.dims));
        else if (h.class_id == char_class)
            out.reset(mxCreateCharArray(h.ndims, h.dims));
        else
            out.reset(mxCreateNumericArray(h.ndims, h.dims, static_cast<mxClassID>(h.class_id), mxREAL));
        if (out == nullptr) return false;
        if (h.class_id == logical_class) {
            // Any non-zero byte is true: a bool must never hold another value.
            mxLogical* l = mxGetLogicals(out.get());
            for (size_t i = 0; i < h.numel; ++i) l[i] = bytes[i] != 0;
        } else if (h.numel > 0) {
            std::memcpy(mxGetData(out.get()), bytes, h.numel * data_element_size(h.class_id));
        }
        return true;
    }
    bool begin_cell(const ArrayHeader& h, Cell& c) {
        c.reset(mxCreateCellArray(h.ndims, h.dims));
        return c != nullptr;
    }
    void set_cell(Cell& c, size_t i, Value&& e) { mxSetCell(c.get(), i, e.release()); }
    void end_cell(Cell& c, Value& out) { out = std::move(c); }
    bool begin_struct(const ArrayHeader& h, const std::vector<std::string_view>& names, Struct& s) {
        // libmx takes C strings: the names, each ended by a NUL, in one reused buffer.
        name_text.clear();
        for (std::string_view name : names) name_text.append(name).push_back('\0');
        name_pointers.clear();
        const char* next = name_text.data();
        for (std::string_view name : names) {
            name_pointers.push_back(next);
            next += name.size() + 1;
        }
        s.reset(mxCreateStructArray(h.ndims, h.dims, static_cast<int>(name_pointers.size()), name_pointers.data()));
        return s != nullptr;
    }
    void set_field(Struct& s, size_t i, size_t f, Value&& e) {
        mxSetFieldByNumber(s.get(), i, static_cast<int>(f), e.release());
    }
    void end_struct(Struct& s, Value& out) { out = std::move(s); }

    std::string name_text;
    std::vector<const char*> name_pointers;
};

}  // namespace

bool put_mx_array(Writer& w, const mxArray* a, std::string& error) {
    if (a == nullptr) {
        error = "no array to send";
        return false;
    }
    if (!put_at(w, a, 0, error)) return false;
    if (w.too_long()) {
        error = "the value does not fit in one frame (" + std::to_string(max_frame_length) + " bytes)";
        return false;
    }
    return true;
}

ArrayPtr get_mx_array(Reader& r) {
    MxBuilder b;
    ArrayPtr out;
    if (!decode_top_array(r, b, out)) return nullptr;
    return out;
}

}  // namespace tamlo::wire
