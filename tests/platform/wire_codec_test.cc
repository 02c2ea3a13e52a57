// The frame format: arrays survive encoding, and damaged frames are errors that say what is
// wrong, never out-of-bounds reads.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "matrix.h"
#include "mx_wire.h"
#include "wire_codec.h"

namespace {

using namespace tamlo::wire;

// The payload (kind byte onward) of a value frame holding `a`.
std::string value_payload(const mxArray* a) {
    Writer w(Kind::value);
    std::string error;
    EXPECT_TRUE(put_mx_array(w, a, error)) << error;
    return w.finish().substr(header_length);
}

struct Decoded {
    ArrayPtr array;
    std::string error;
};

// Decodes a payload into a heap copy of exactly its size, so ASan sees any overread.
Decoded decode(const std::string& payload) {
    std::vector<unsigned char> exact(payload.begin(), payload.end());
    Reader r(exact.data(), exact.size());
    Kind kind{};
    Decoded d;
    if (read_kind(r, kind)) d.array = get_mx_array(r);
    if (d.array != nullptr && !r.expect_end()) d.array.reset();
    d.error = r.error();
    return d;
}

mxArray* sample_struct() {
    mxArray* s = mxCreateStructMatrix(2, 1, 0, nullptr);
    mxAddField(s, "zeta");
    mxAddField(s, "alpha");
    mxSetField(s, 0, "zeta", mxCreateDoubleScalar(1.5));
    mxArray* cell = mxCreateCellMatrix(1, 2);
    mxSetCell(cell, 0, mxCreateString("text"));
    mxSetField(s, 1, "alpha", cell);
    mxArray* l = mxCreateLogicalMatrix(2, 1);
    mxGetLogicals(l)[1] = true;
    mxSetField(s, 1, "zeta", l);
    return s;
}

TEST(WireArrays, StructSurvivesEncodingWithOrderAndUnsetElements) {
    ArrayPtr s(sample_struct());
    Decoded d = decode(value_payload(s.get()));
    ASSERT_NE(d.array, nullptr) << d.error;
    const mxArray* a = d.array.get();
    ASSERT_TRUE(mxIsStruct(a));
    EXPECT_EQ(mxGetM(a), 2u);
    EXPECT_EQ(mxGetN(a), 1u);
    EXPECT_STREQ(mxGetFieldNameByNumber(a, 0), "zeta");
    EXPECT_STREQ(mxGetFieldNameByNumber(a, 1), "alpha");
    EXPECT_EQ(mxGetScalar(mxGetField(a, 0, "zeta")), 1.5);
    EXPECT_EQ(mxGetField(a, 0, "alpha"), nullptr);
    const mxArray* l = mxGetField(a, 1, "zeta");
    ASSERT_TRUE(mxIsLogical(l));
    EXPECT_FALSE(mxGetLogicals(l)[0]);
    EXPECT_TRUE(mxGetLogicals(l)[1]);
    const mxArray* c = mxGetField(a, 1, "alpha");
    char buf[8];
    EXPECT_EQ(mxGetString(mxGetCell(c, 0), buf, sizeof buf), 0);
    EXPECT_STREQ(buf, "text");
    EXPECT_EQ(mxGetCell(c, 1), nullptr);
}

TEST(WireArrays, EveryNumericClassKeepsClassDimsAndBytes) {
    const mxClassID classes[] = {mxDOUBLE_CLASS, mxSINGLE_CLASS, mxINT8_CLASS,  mxUINT8_CLASS,
                                 mxINT16_CLASS,  mxUINT16_CLASS, mxINT32_CLASS, mxUINT32_CLASS,
                                 mxINT64_CLASS,  mxUINT64_CLASS};
    const mwSize dims[3] = {2, 3, 2};
    for (mxClassID c : classes) {
        ArrayPtr a(mxCreateNumericArray(3, dims, c, mxREAL));
        auto* bytes = static_cast<unsigned char*>(mxGetData(a.get()));
        const size_t n = mxGetNumberOfElements(a.get()) * mxGetElementSize(a.get());
        for (size_t k = 0; k < n; ++k) bytes[k] = static_cast<unsigned char>(k * 7 + 1);
        Decoded d = decode(value_payload(a.get()));
        SCOPED_TRACE(mxGetClassName(a.get()));
        ASSERT_NE(d.array, nullptr) << d.error;
        EXPECT_EQ(mxGetClassID(d.array.get()), c);
        ASSERT_EQ(mxGetNumberOfDimensions(d.array.get()), 3u);
        EXPECT_EQ(mxGetDimensions(d.array.get())[2], 2u);
        EXPECT_EQ(std::memcmp(mxGetData(d.array.get()), bytes, n), 0);
    }
}

TEST(WireArrays, WriterRefusesWhatNoFrameCanCarry) {
    struct Row {
        const char* what;
        std::function<mxArray*()> make;
        std::string error;
    } rows[] = {
        {"no array", [] { return nullptr; }, "no array to send"},
        {"data past the largest frame",
         [] { return mxCreateNumericMatrix(1, max_frame_length / 8 + 1, mxDOUBLE_CLASS, mxREAL); },
         "the value does not fit in one frame (268435456 bytes)"},
        {"empty array with a dim Octave cannot index",
         [] { return mxCreateDoubleMatrix(0, mwSize{1} << 63, mxREAL); },
         "dims 0 x 9223372036854775808 hold more elements than a frame can carry"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ArrayPtr a(row.make());
        Writer w(Kind::value);
        std::string error;
        EXPECT_FALSE(put_mx_array(w, a.get(), error));
        EXPECT_EQ(error, row.error);
    }
}

// `levels` cells, one inside the other, around the scalar 5.
ArrayPtr cells_around_five(int levels) {
    ArrayPtr top(mxCreateDoubleScalar(5));
    for (int k = 0; k < levels; ++k) {
        mxArray* c = mxCreateCellMatrix(1, 1);
        mxSetCell(c, 0, top.release());
        top.reset(c);
    }
    return top;
}

TEST(WireArrays, NestingPastTheLimitArrivesAsTheStandIn) {
    struct Row {
        const char* what;
        int cells;
        int cells_arriving;
        bool leaf_is_five;  // otherwise the stand-in []
    } rows[] = {
        {"scalar at the deepest level", max_depth - 1, max_depth - 1, true},
        {"cell at the deepest level", max_depth, max_depth - 1, false},
        {"1,000 levels", 1000, max_depth - 1, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ArrayPtr sent = cells_around_five(row.cells);
        Decoded d = decode(value_payload(sent.get()));
        ASSERT_NE(d.array, nullptr) << d.error;
        const mxArray* a = d.array.get();
        int cells = 0;
        for (; mxIsCell(a); ++cells) a = mxGetCell(a, 0);
        EXPECT_EQ(cells, row.cells_arriving);
        ASSERT_NE(a, nullptr);
        ASSERT_TRUE(mxIsDouble(a));
        if (row.leaf_is_five)
            EXPECT_EQ(mxGetScalar(a), 5.0);
        else
            EXPECT_TRUE(mxGetM(a) == 0 && mxGetN(a) == 0);
    }
}

TEST(WireArrays, StructWithoutFieldsKeepsItsShape) {
    ArrayPtr s(mxCreateStructMatrix(3, 2, 0, nullptr));
    Decoded d = decode(value_payload(s.get()));
    ASSERT_NE(d.array, nullptr) << d.error;
    EXPECT_TRUE(mxIsStruct(d.array.get()));
    EXPECT_EQ(mxGetNumberOfFields(d.array.get()), 0);
    EXPECT_EQ(mxGetM(d.array.get()), 3u);
    EXPECT_EQ(mxGetN(d.array.get()), 2u);
}

// Hand-built payloads: kind byte 0x83 (value) followed by one array.
struct Bytes {
    std::string s{static_cast<char>(Kind::value)};
    Bytes& u8(unsigned v) {
        s.push_back(static_cast<char>(v));
        return *this;
    }
    Bytes& u32(uint32_t v) {
        for (int k = 0; k < 4; ++k) u8((v >> (8 * k)) & 0xff);
        return *this;
    }
    Bytes& u64(uint64_t v) {
        for (int k = 0; k < 8; ++k) u8(static_cast<unsigned>((v >> (8 * k)) & 0xff));
        return *this;
    }
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

TEST(WireFaults, CorruptPayloadsGiveMessagesNamingTheFault) {
    struct Row {
        const char* what;
        std::string payload;
        std::string error;
    } rows[] = {
        {"empty payload", "", "truncated frame: frame kind needs 1 bytes, 0 left"},
        {"unknown kind", std::string(1, '\x42'), "corrupt frame: unknown frame kind 66"},
        {"no array", Bytes().s, "truncated frame: class id needs 1 bytes, 0 left"},
        {"unknown class", Bytes().u8(99).dims2(1, 1).s, "corrupt frame: unknown class id 99"},
        {"function class", Bytes().u8(mxFUNCTION_CLASS).dims2(1, 1).s, "corrupt frame: unknown class id 16"},
        {"one dimension", Bytes().u8(mxDOUBLE_CLASS).u8(1).u64(1).s, "corrupt frame: 1 dimensions (2 to 32 allowed)"},
        {"too many dimensions", Bytes().u8(mxDOUBLE_CLASS).u8(33).s, "corrupt frame: 33 dimensions (2 to 32 allowed)"},
        {"truncated dims", Bytes().u8(mxDOUBLE_CLASS).u8(2).u64(1).u8(0).s,
         "truncated frame: dimension needs 8 bytes, 1 left"},
        {"data shorter than dims", Bytes().u8(mxDOUBLE_CLASS).dims2(2, 2).u64(0).s,
         "truncated frame: dims 2 x 2 need 32 bytes of data, 8 left"},
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
        {"nesting too deep", nested_cells(max_depth), "corrupt frame: array nested deeper than 64 levels (at value" +
                                                          [] {
                                                              std::string p;
                                                              for (int k = 0; k < max_depth; ++k) p += "{1}";
                                                              return p;
                                                          }() + ")"},
        {"bytes after the array", Bytes().u8(mxDOUBLE_CLASS).dims2(0, 0).u8(5).s,
         "corrupt frame: 1 unexpected bytes after the payload"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Decoded d = decode(row.payload);
        EXPECT_EQ(d.array, nullptr);
        EXPECT_EQ(d.error, row.error);
    }
}

TEST(WireFaults, DeepButAllowedNestingDecodes) {
    Decoded d = decode(nested_cells(max_depth - 1));
    EXPECT_NE(d.array, nullptr) << d.error;
}

TEST(WireFaults, EveryTruncationOfAValidFrameIsAnError) {
    ArrayPtr s(sample_struct());
    const std::string payload = value_payload(s.get());
    for (size_t cut = 0; cut < payload.size(); ++cut) {
        SCOPED_TRACE("cut at " + std::to_string(cut));
        Decoded d = decode(payload.substr(0, cut));
        EXPECT_EQ(d.array, nullptr);
        EXPECT_EQ(d.error.rfind("truncated frame: ", 0), 0u) << d.error;
    }
}

TEST(WireFaults, RandomBytesNeverCrashTheDecoder) {
    std::mt19937 rng(20240611);
    std::uniform_int_distribution<int> byte(0, 255);
    std::uniform_int_distribution<int> length(0, 200);
    int decoded = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string payload(1, static_cast<char>(Kind::value));
        const int n = length(rng);
        for (int k = 0; k < n; ++k) payload.push_back(static_cast<char>(byte(rng)));
        Decoded d = decode(payload);
        if (d.array != nullptr)
            ++decoded;
        else
            EXPECT_FALSE(d.error.empty());
    }
    // Almost no random string is a valid array; what matters is that none crashed.
    EXPECT_LT(decoded, 2000);
}

TEST(WireFaults, RandomMutationsOfAValidFrameNeverCrashTheDecoder) {
    ArrayPtr s(sample_struct());
    const std::string payload = value_payload(s.get());
    std::mt19937 rng(7);
    std::uniform_int_distribution<size_t> pos(1, payload.size() - 1);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int round = 0; round < 20000; ++round) {
        std::string m = payload;
        for (int k = 0; k < 3; ++k) m[pos(rng)] = static_cast<char>(byte(rng));
        Decoded d = decode(m);
        EXPECT_TRUE(d.array != nullptr || !d.error.empty());
    }
}

TEST(WireFrames, ReaderPrimitivesCheckLengths) {
    const unsigned char bytes[] = {5, 0, 0, 0, 'a', 'b'};
    Reader r(bytes, sizeof bytes);
    std::string s;
    EXPECT_FALSE(r.get_string(s, "command"));
    EXPECT_EQ(r.error(), "truncated frame: command of length 5 exceeds the 2 bytes left");
}

}  // namespace
