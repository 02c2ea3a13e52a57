// Encoding our mxArrays into frames and decoding them back, for libeng.
#ifndef TAMLO_PLATFORM_MX_WIRE_H
#define TAMLO_PLATFORM_MX_WIRE_H

#include <memory>
#include <string>

#include "matrix.h"
#include "wire_codec.h"

namespace tamlo::wire {

struct ArrayDeleter {
    void operator()(mxArray* a) const { mxDestroyArray(a); }
};
using ArrayPtr = std::unique_ptr<mxArray, ArrayDeleter>;

// Appends `a` to the frame. False, with `error` naming the reason, for a null array, one of a
// class the format does not carry, dims past the format's limits, or a frame that would pass
// max_frame_length (the frame must then not be sent). What lies deeper than max_depth goes as
// the stand-in value.
bool put_mx_array(Writer& w, const mxArray* a, std::string& error);

// Decodes one array (owned by the caller), or null with r.error() naming what was wrong.
ArrayPtr get_mx_array(Reader& r);

}  // namespace tamlo::wire

#endif
