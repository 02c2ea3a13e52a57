// Octave values <-> frame bytes, keeping class, dims and field order. Octave declares its
// own mxArray, so this side works on octave_value directly, with the shared checked decoder.
#ifndef TAMLO_PLATFORM_OCTAVE_CODEC_H
#define TAMLO_PLATFORM_OCTAVE_CODEC_H

#include <octave/oct.h>

#include "wire_codec.h"

namespace tamlo::engine {

// Decodes one array into a new Octave value; false with r.error() naming what was wrong.
// An element or field that holds no array becomes [] (as MATLAB shows it).
bool get_octave_value(tamlo::wire::Reader& r, octave_value& out);

// Appends `v` to the frame. What MATLAB's arrays cannot hold becomes the nearest thing they
// can: sparse -> full of the same class; complex -> its real part; ranges -> double;
// function handles, class objects and every other kind -> the stand-in value, an empty 0 x 0
// double, so that a reader sees "no value" (mxGetScalar 0, mxIsEmpty true) rather than a
// misleading number; so does a cell or struct at the deepest level (max_depth).
// May throw octave::execution_exception from Octave's own conversions or for dims the frame
// cannot carry, and std::bad_alloc. A value that does not fit in one frame leaves
// w.too_long() set.
void put_octave_value(tamlo::wire::Writer& w, const octave_value& v);

}  // namespace tamlo::engine

#endif
