// Our libmx: the mxArray type and the matrix API functions over it, with MATLAB's semantics.
#include "matrix.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

bool is_numeric_class(mxClassID c) { return c >= mxDOUBLE_CLASS && c <= mxUINT64_CLASS; }

bool has_data_class(mxClassID c) { return is_numeric_class(c) || c == mxLOGICAL_CLASS || c == mxCHAR_CLASS; }

bool has_slots_class(mxClassID c) { return c == mxSTRUCT_CLASS || c == mxCELL_CLASS; }

// An array's dims, MATLAB-normalised: at least two, no trailing 1 beyond the second. Two are
// held in place, so that making a matrix allocates nothing for them.
class Dims {
public:
    Dims() : local_{0, 0} {}
    Dims(const Dims&) = delete;
    Dims& operator=(const Dims&) = delete;
    ~Dims() {
        if (size_ > 2) delete[] heap_;
    }
    // Once per array. False when the element count overflows; throws std::bad_alloc.
    bool assign(mwSize ndim, const mwSize* dims, size_t& numel) {
        size_t n = ndim;
        while (n > 2 && dims[n - 1] == 1) --n;
        const size_t kept = n;
        if (n < 2) n = 2;
        mwSize* out = local_;
        if (n > 2) {
            heap_ = new mwSize[n];
            out = heap_;
        }
        size_ = n;
        for (size_t k = 0; k < n; ++k) out[k] = k < kept ? dims[k] : 1;
        numel = 1;
        for (size_t k = 0; k < n; ++k) {
            if (out[k] != 0 && numel > std::numeric_limits<size_t>::max() / out[k]) return false;
            numel *= out[k];
        }
        return true;
    }
    size_t size() const { return size_; }
    const mwSize* data() const { return size_ > 2 ? heap_ : local_; }
    mwSize operator[](size_t k) const { return data()[k]; }

private:
    union {
        mwSize local_[2];
        mwSize* heap_;
    };
    size_t size_ = 0;
};

// A struct's field names in order. Arrays made from one another share one list (a duplicate
// copies no names); a list is changed in place only by its sole holder, otherwise copied first.
class FieldNames {
public:
    // A struct made without fields gets room for a few: most are built by adding one at a time.
    static FieldNames* make(size_t expected = 0) {
        auto names = std::unique_ptr<FieldNames>(new FieldNames);
        names->names_.reserve(expected > 0 ? expected : 8);
        return names.release();
    }
    // Another holder; never null.
    FieldNames* share() {
        refs_.fetch_add(1, std::memory_order_relaxed);
        return this;
    }
    static void release(FieldNames* names) {
        if (names != nullptr && names->refs_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete names;
    }
    // A list its holder may change: this one when not shared, else a copy (the holder's share
    // of this one is then given up). Throws std::bad_alloc.
    static FieldNames* own(FieldNames* names) {
        if (names->refs_.load(std::memory_order_acquire) == 1) return names;
        auto copy = std::unique_ptr<FieldNames>(new FieldNames);
        copy->names_ = names->names_;
        release(names);
        return copy.release();
    }

    size_t size() const { return names_.size(); }
    const char* name(size_t f) const { return names_[f].c_str(); }
    void add(const char* name) { names_.emplace_back(name); }
    void remove(size_t f) { names_.erase(names_.begin() + static_cast<std::ptrdiff_t>(f)); }

    // The number of the field with this name, or -1. Lookups come field after field while a
    // struct is written element by element, so the search starts where the last one ended.
    int find(const char* name, std::atomic<uint32_t>& hint) const {
        const size_t n = names_.size();
        size_t f = hint.load(std::memory_order_relaxed);
        if (f >= n) f = 0;
        for (size_t tried = 0; tried < n; ++tried, f = f + 1 == n ? 0 : f + 1) {
            if (same(names_[f].c_str(), name)) {
                hint.store(static_cast<uint32_t>(f), std::memory_order_relaxed);
                return static_cast<int>(f);
            }
        }
        return -1;
    }

private:
    FieldNames() = default;
    // Reads the caller's text no further than its terminator or the first difference.
    static bool same(const char* ours, const char* theirs) {
        for (size_t k = 0; ours[k] == theirs[k]; ++k)
            if (ours[k] == '\0') return true;
        return false;
    }
    std::atomic<size_t> refs_{1};
    std::vector<std::string> names_;
};

// A struct's slots are allocated for a power of two of them, so that adding fields one at a
// time (the usual way to build a struct) reallocates only when that size is passed.
size_t struct_slot_capacity(size_t count) { return count == 0 ? 0 : std::bit_ceil(count); }
constexpr size_t max_struct_slots = std::numeric_limits<size_t>::max() / 2 / sizeof(mxArray*);

// mxArray objects come and go by the thousand every time step; each thread keeps the freed
// ones for reuse rather than going through malloc for each. Under AddressSanitizer every
// object is its own allocation, so that a use after mxDestroyArray is still caught.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool pool_nodes = false;
#else
constexpr bool pool_nodes = true;
#endif

enum class PoolState : unsigned char { unused, open, gone };
// Plain data, so that reaching it costs one thread-local lookup and no initialisation check.
// The free nodes are kept in an array rather than linked through themselves: taking one then
// reads no memory of the node, which is likely out of cache by then.
struct NodePool {
    void** free;
    size_t kept;
    size_t capacity;
    PoolState state;
};
constinit thread_local NodePool node_pool{nullptr, 0, 0, PoolState::unused};
// The array grows as needed up to enough for the largest state of a time step; more nodes
// freed at once go back to the heap.
constexpr size_t first_pool_capacity = 256;
constexpr size_t max_kept_nodes = 16384;

// Room for one more free node; false when the pool is full or cannot grow.
bool grow_node_pool(NodePool& pool) {
    if (pool.capacity >= max_kept_nodes) return false;
    const size_t capacity = pool.capacity * 2;
    auto* grown = static_cast<void**>(std::realloc(pool.free, capacity * sizeof(void*)));
    if (grown == nullptr) return false;
    pool.free = grown;
    pool.capacity = capacity;
    return true;
}

// Gives the kept nodes back to the heap when the thread ends; from then on nodes of this
// thread come from and go to the heap directly.
struct NodePoolCloser {
    ~NodePoolCloser() {
        NodePool& pool = node_pool;
        for (size_t k = 0; k < pool.kept; ++k) ::operator delete(pool.free[k]);
        std::free(pool.free);
        pool.free = nullptr;
        pool.kept = 0;
        pool.capacity = 0;
        pool.state = PoolState::gone;
    }
};

void open_node_pool(NodePool& pool) {
    pool.free = static_cast<void**>(std::malloc(first_pool_capacity * sizeof(void*)));
    if (pool.free == nullptr) {
        pool.state = PoolState::gone;  // no pool then, only the heap
        return;
    }
    pool.capacity = first_pool_capacity;
    thread_local NodePoolCloser closer;
    (void)closer;
    pool.state = PoolState::open;
}

}  // namespace

struct mxArray_tag {
    mxClassID class_id = mxUNKNOWN_CLASS;
    // Where the last field lookup by name ended.
    mutable std::atomic<uint32_t> field_hint{0};
    size_t numel = 0;
    Dims dims;
    // Numeric, logical and char data, column-major, zero-filled at creation; null when empty and
    // for structs and cells. Up to local_data_size bytes (a scalar, a short text) live in local_data.
    void* data = nullptr;
    static constexpr size_t local_data_size = 16;
    struct Slots {
        // Structs only: the field names, never null.
        FieldNames* fields;
        // Struct field values, field by field (elements[f * numel + i]), so that adding a field
        // appends its slots; or cell contents. Null where nothing was set, and when there are
        // no slots.
        mxArray** elements;
    };
    union {
        alignas(std::max_align_t) unsigned char local_data[local_data_size];
        Slots slots;  // structs and cells
    };

    mxArray_tag() : slots{nullptr, nullptr} {}
    mxArray_tag(const mxArray_tag&) = delete;
    mxArray_tag& operator=(const mxArray_tag&) = delete;
    ~mxArray_tag() {
        if (has_data_class(class_id)) {
            if (data != local_data) std::free(data);
        } else if (has_slots_class(class_id)) {
            if (slots.elements != nullptr) {
                const size_t n = slot_count();
                for (size_t k = 0; k < n; ++k) delete slots.elements[k];
                std::free(slots.elements);
            }
            if (class_id == mxSTRUCT_CLASS) FieldNames::release(slots.fields);
        }
    }

    size_t slot_count() const {
        if (class_id == mxCELL_CLASS) return numel;
        return class_id == mxSTRUCT_CLASS ? numel * slots.fields->size() : 0;
    }

    static void* operator new(size_t size) {
        if (!pool_nodes) return ::operator new(size);
        NodePool& pool = node_pool;
        if (pool.kept > 0) return pool.free[--pool.kept];
        if (pool.state == PoolState::unused) open_node_pool(pool);
        return ::operator new(size);
    }
    static void operator delete(void* node) {
        if (!pool_nodes) {
            ::operator delete(node);
            return;
        }
        NodePool& pool = node_pool;
        if (pool.state != PoolState::open || (pool.kept == pool.capacity && !grow_node_pool(pool))) {
            ::operator delete(node);
            return;
        }
        pool.free[pool.kept++] = node;
    }
};
static_assert(sizeof(mxArray_tag) <= 64, "an array's header fits one cache line");

namespace {

constexpr int max_field_name_length = 63;

size_t element_size(mxClassID c) {
    switch (c) {
        case mxDOUBLE_CLASS: return sizeof(double);
        case mxSINGLE_CLASS: return sizeof(float);
        case mxINT8_CLASS:
        case mxUINT8_CLASS: return 1;
        case mxINT16_CLASS:
        case mxUINT16_CLASS: return 2;
        case mxINT32_CLASS:
        case mxUINT32_CLASS: return 4;
        case mxINT64_CLASS:
        case mxUINT64_CLASS: return 8;
        case mxLOGICAL_CLASS: return sizeof(mxLogical);
        case mxCHAR_CLASS: return sizeof(mxChar);
        case mxSTRUCT_CLASS:
        case mxCELL_CLASS: return sizeof(mxArray*);
        default: return 0;
    }
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

bool valid_field_name(const char* name) {
    if (name == nullptr || !is_ascii_letter(name[0])) return false;
    size_t n = 0;
    for (; name[n] != '\0'; ++n)
        if (!is_identifier_char(name[n])) return false;
    return n <= max_field_name_length;
}

// Creates an array of the given class and shape with zeroed data or empty slots; null when the
// shape or class cannot be made. A struct takes over the holder's share of names (an empty
// list when null), also when it cannot be made.
mxArray* create(mxClassID class_id, mwSize ndim, const mwSize* dims, FieldNames* names = nullptr) {
    std::unique_ptr<mxArray_tag> a;
    try {
        if (class_id == mxSTRUCT_CLASS && names == nullptr) names = FieldNames::make();
        a.reset(new mxArray_tag);
    } catch (const std::bad_alloc&) {
        FieldNames::release(names);
        return nullptr;
    }
    // From here on the array holds the names.
    a->class_id = class_id;
    if (class_id == mxSTRUCT_CLASS) a->slots.fields = names;
    try {
        if (!a->dims.assign(ndim, dims, a->numel)) return nullptr;
        if (has_data_class(class_id)) {
            size_t size = element_size(class_id);
            if (a->numel > std::numeric_limits<size_t>::max() / size) return nullptr;
            if (a->numel > 0 && a->numel * size <= mxArray_tag::local_data_size) {
                std::memset(a->local_data, 0, mxArray_tag::local_data_size);
                a->data = a->local_data;
            } else if (a->numel > 0) {
                a->data = std::calloc(a->numel, size);
                if (a->data == nullptr) return nullptr;
            }
        } else if (class_id == mxCELL_CLASS) {
            if (a->numel > 0) {
                a->slots.elements = static_cast<mxArray**>(std::calloc(a->numel, sizeof(mxArray*)));
                if (a->slots.elements == nullptr) return nullptr;
            }
        } else if (class_id == mxSTRUCT_CLASS) {
            const size_t nfields = a->slots.fields->size();
            if (nfields != 0 && a->numel > max_struct_slots / nfields) return nullptr;
            const size_t capacity = struct_slot_capacity(a->numel * nfields);
            if (capacity > 0) {
                a->slots.elements = static_cast<mxArray**>(std::calloc(capacity, sizeof(mxArray*)));
                if (a->slots.elements == nullptr) return nullptr;
            }
        }
        return a.release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

mxArray* create_2d(mxClassID class_id, mwSize m, mwSize n) {
    const mwSize dims[2] = {m, n};
    return create(class_id, 2, dims);
}

mxArray* create_struct(mwSize ndim, const mwSize* dims, int nfields, const char** fieldnames) {
    if (nfields < 0 || (nfields > 0 && fieldnames == nullptr)) return nullptr;
    for (int f = 0; f < nfields; ++f) {
        if (!valid_field_name(fieldnames[f])) return nullptr;
        for (int g = 0; g < f; ++g)
            if (std::strcmp(fieldnames[f], fieldnames[g]) == 0) return nullptr;
    }
    FieldNames* names = nullptr;
    try {
        names = FieldNames::make(static_cast<size_t>(nfields));
        for (int f = 0; f < nfields; ++f) names->add(fieldnames[f]);
    } catch (const std::bad_alloc&) {
        FieldNames::release(names);
        return nullptr;
    }
    return create(mxSTRUCT_CLASS, ndim, dims, names);
}

int field_number(const mxArray* pa, const char* name) {
    if (pa == nullptr || pa->class_id != mxSTRUCT_CLASS || name == nullptr) return -1;
    return pa->slots.fields->find(name, pa->field_hint);
}

// The slot of element i's field f, or null when either is out of range.
mxArray** field_slot(const mxArray* pa, mwIndex i, int f) {
    if (pa == nullptr || pa->class_id != mxSTRUCT_CLASS || f < 0) return nullptr;
    size_t nfields = pa->slots.fields->size();
    if (static_cast<size_t>(f) >= nfields || i >= pa->numel) return nullptr;
    return &pa->slots.elements[static_cast<size_t>(f) * pa->numel + i];
}

template <typename T>
double first_as_double(const void* data) {
    T v;
    std::memcpy(&v, data, sizeof v);
    return static_cast<double>(v);
}

mxArray* duplicate(const mxArray* in) {
    FieldNames* names = in->class_id == mxSTRUCT_CLASS ? in->slots.fields->share() : nullptr;
    mxArray* out = create(in->class_id, in->dims.size(), in->dims.data(), names);
    if (out == nullptr) return nullptr;
    if (in->data != nullptr) std::memcpy(out->data, in->data, in->numel * element_size(in->class_id));
    const size_t slots = in->slots.elements != nullptr ? in->slot_count() : 0;
    for (size_t k = 0; k < slots; ++k) {
        if (in->slots.elements[k] == nullptr) continue;
        out->slots.elements[k] = duplicate(in->slots.elements[k]);
        if (out->slots.elements[k] == nullptr) {
            delete out;
            return nullptr;
        }
    }
    return out;
}

}  // namespace

extern "C" {

mxArray* mxCreateStructMatrix_730(mwSize m, mwSize n, int nfields, const char** fieldnames) {
    const mwSize dims[2] = {m, n};
    return create_struct(2, dims, nfields, fieldnames);
}

mxArray* mxCreateStructArray(mwSize ndim, const mwSize* dims, int nfields, const char** fieldnames) {
    if (dims == nullptr && ndim > 0) return nullptr;
    return create_struct(ndim, dims, nfields, fieldnames);
}

mxArray* mxGetField_730(const mxArray* pa, mwIndex i, const char* fieldname) {
    mxArray** slot = field_slot(pa, i, field_number(pa, fieldname));
    return slot != nullptr ? *slot : nullptr;
}

void mxSetField_730(mxArray* pa, mwIndex i, const char* fieldname, mxArray* value) {
    mxArray** slot = field_slot(pa, i, field_number(pa, fieldname));
    if (slot != nullptr) *slot = value;
}

mxArray* mxGetFieldByNumber(const mxArray* pa, mwIndex i, int fieldnum) {
    mxArray** slot = field_slot(pa, i, fieldnum);
    return slot != nullptr ? *slot : nullptr;
}

void mxSetFieldByNumber(mxArray* pa, mwIndex i, int fieldnum, mxArray* value) {
    mxArray** slot = field_slot(pa, i, fieldnum);
    if (slot != nullptr) *slot = value;
}

int mxAddField(mxArray* pa, const char* fieldname) {
    if (pa == nullptr || pa->class_id != mxSTRUCT_CLASS || !valid_field_name(fieldname)) return -1;
    int existing = field_number(pa, fieldname);
    if (existing >= 0) return existing;
    const size_t old_n = pa->slots.fields->size();
    if (pa->numel > max_struct_slots / (old_n + 1)) return -1;
    const size_t old_count = pa->numel * old_n;
    const size_t new_count = pa->numel * (old_n + 1);
    mxArray** elements = pa->slots.elements;
    if (new_count > struct_slot_capacity(old_count)) {
        auto* grown = static_cast<mxArray**>(std::malloc(struct_slot_capacity(new_count) * sizeof(mxArray*)));
        if (grown == nullptr) return -1;
        if (old_count > 0) std::memcpy(grown, elements, old_count * sizeof(mxArray*));
        elements = grown;
    }
    try {
        pa->slots.fields = FieldNames::own(pa->slots.fields);
        pa->slots.fields->add(fieldname);
    } catch (const std::bad_alloc&) {
        if (elements != pa->slots.elements) std::free(elements);
        return -1;
    }
    if (new_count > 0) std::fill(elements + old_count, elements + new_count, nullptr);
    if (elements != pa->slots.elements) {
        std::free(pa->slots.elements);
        pa->slots.elements = elements;
    }
    return static_cast<int>(old_n);
}

void mxRemoveField(mxArray* pa, int fieldnum) {
    if (pa == nullptr || pa->class_id != mxSTRUCT_CLASS || fieldnum < 0 ||
        static_cast<size_t>(fieldnum) >= pa->slots.fields->size())
        return;
    try {
        pa->slots.fields = FieldNames::own(pa->slots.fields);
    } catch (const std::bad_alloc&) {
        return;  // the struct stays as it was
    }
    // As in MATLAB, the removed values are not freed: the caller may still hold them. The
    // later fields' values move forward, in place.
    const size_t old_n = pa->slots.fields->size();
    if (pa->numel > 0) {
        const size_t f = static_cast<size_t>(fieldnum);
        mxArray** removed = pa->slots.elements + f * pa->numel;
        std::memmove(removed, removed + pa->numel, (old_n - 1 - f) * pa->numel * sizeof(mxArray*));
    }
    pa->slots.fields->remove(static_cast<size_t>(fieldnum));
}

int mxGetFieldNumber(const mxArray* pa, const char* fieldname) { return field_number(pa, fieldname); }

int mxGetNumberOfFields(const mxArray* pa) {
    if (pa == nullptr || pa->class_id != mxSTRUCT_CLASS) return 0;
    return static_cast<int>(pa->slots.fields->size());
}

const char* mxGetFieldNameByNumber(const mxArray* pa, int n) {
    if (pa == nullptr || pa->class_id != mxSTRUCT_CLASS || n < 0 || static_cast<size_t>(n) >= pa->slots.fields->size())
        return nullptr;
    return pa->slots.fields->name(static_cast<size_t>(n));
}

mxArray* mxCreateDoubleMatrix_730(mwSize m, mwSize n, mxComplexity flag) {
    // Only real data is held; complex arrays cannot be made.
    if (flag != mxREAL) return nullptr;
    return create_2d(mxDOUBLE_CLASS, m, n);
}

mxArray* mxCreateNumericMatrix(mwSize m, mwSize n, mxClassID classid, mxComplexity flag) {
    if (flag != mxREAL || !is_numeric_class(classid)) return nullptr;
    return create_2d(classid, m, n);
}

mxArray* mxCreateNumericArray(mwSize ndim, const mwSize* dims, mxClassID classid, mxComplexity flag) {
    if (flag != mxREAL || !is_numeric_class(classid) || (dims == nullptr && ndim > 0)) return nullptr;
    return create(classid, ndim, dims);
}

mxArray* mxCreateDoubleScalar(double value) {
    mxArray* a = create_2d(mxDOUBLE_CLASS, 1, 1);
    if (a != nullptr) *static_cast<double*>(a->data) = value;
    return a;
}

mxArray* mxCreateLogicalMatrix(mwSize m, mwSize n) { return create_2d(mxLOGICAL_CLASS, m, n); }

mxArray* mxCreateLogicalArray(mwSize ndim, const mwSize* dims) {
    if (dims == nullptr && ndim > 0) return nullptr;
    return create(mxLOGICAL_CLASS, ndim, dims);
}

mxArray* mxCreateLogicalScalar(mxLogical value) {
    mxArray* a = create_2d(mxLOGICAL_CLASS, 1, 1);
    if (a != nullptr) *static_cast<mxLogical*>(a->data) = value;
    return a;
}

mxArray* mxCreateString(const char* str) {
    if (str == nullptr) return nullptr;
    size_t n = std::strlen(str);
    // MATLAB gives an empty text the shape 0 x 0.
    mxArray* a = n == 0 ? create_2d(mxCHAR_CLASS, 0, 0) : create_2d(mxCHAR_CLASS, 1, n);
    if (a == nullptr) return nullptr;
    auto* chars = static_cast<mxChar*>(a->data);
    // Texts are 8-bit: one byte becomes one character, so a round trip keeps every byte.
    for (size_t k = 0; k < n; ++k) chars[k] = static_cast<unsigned char>(str[k]);
    return a;
}

mxArray* mxCreateCharArray(mwSize ndim, const mwSize* dims) {
    if (dims == nullptr && ndim > 0) return nullptr;
    return create(mxCHAR_CLASS, ndim, dims);
}

mxArray* mxCreateCellMatrix(mwSize m, mwSize n) { return create_2d(mxCELL_CLASS, m, n); }

mxArray* mxCreateCellArray(mwSize ndim, const mwSize* dims) {
    if (dims == nullptr && ndim > 0) return nullptr;
    return create(mxCELL_CLASS, ndim, dims);
}

mxArray* mxGetCell_730(const mxArray* pa, mwIndex i) {
    if (pa == nullptr || pa->class_id != mxCELL_CLASS || i >= pa->numel) return nullptr;
    return pa->slots.elements[i];
}

void mxSetCell(mxArray* pa, mwIndex i, mxArray* value) {
    if (pa == nullptr || pa->class_id != mxCELL_CLASS || i >= pa->numel) return;
    pa->slots.elements[i] = value;
}

int mxGetString_730(const mxArray* pa, char* buf, mwSize buflen) {
    if (buf == nullptr || buflen == 0) return 1;
    if (pa == nullptr || pa->class_id != mxCHAR_CLASS) {
        // The caller gets an empty text rather than whatever its buffer held before.
        buf[0] = '\0';
        return 1;
    }
    size_t n = pa->numel < buflen - 1 ? pa->numel : buflen - 1;
    const auto* chars = static_cast<const mxChar*>(pa->data);
    for (size_t k = 0; k < n; ++k) buf[k] = static_cast<char>(chars[k]);
    buf[n] = '\0';
    return n < pa->numel ? 1 : 0;
}

char* mxArrayToString(const mxArray* pa) {
    if (pa == nullptr || pa->class_id != mxCHAR_CLASS) return nullptr;
    auto* s = static_cast<char*>(std::malloc(pa->numel + 1));
    if (s == nullptr) return nullptr;
    mxGetString_730(pa, s, pa->numel + 1);
    return s;
}

void mxFree(void* ptr) { std::free(ptr); }

mxArray* mxDuplicateArray(const mxArray* in) { return in != nullptr ? duplicate(in) : nullptr; }

void mxDestroyArray(mxArray* pa) { delete pa; }

double* mxGetPr(const mxArray* pa) {
    if (pa == nullptr || pa->class_id != mxDOUBLE_CLASS) return nullptr;
    return static_cast<double*>(pa->data);
}

void* mxGetData(const mxArray* pa) { return pa != nullptr ? pa->data : nullptr; }

mxLogical* mxGetLogicals(const mxArray* pa) {
    if (pa == nullptr || pa->class_id != mxLOGICAL_CLASS) return nullptr;
    return static_cast<mxLogical*>(pa->data);
}

mxChar* mxGetChars(const mxArray* pa) {
    if (pa == nullptr || pa->class_id != mxCHAR_CLASS) return nullptr;
    return static_cast<mxChar*>(pa->data);
}

double mxGetScalar(const mxArray* pa) {
    if (pa == nullptr || pa->data == nullptr || pa->numel == 0) return 0.0;
    switch (pa->class_id) {
        case mxDOUBLE_CLASS: return first_as_double<double>(pa->data);
        case mxSINGLE_CLASS: return first_as_double<float>(pa->data);
        case mxINT8_CLASS: return first_as_double<int8_t>(pa->data);
        case mxUINT8_CLASS: return first_as_double<uint8_t>(pa->data);
        case mxINT16_CLASS: return first_as_double<int16_t>(pa->data);
        case mxUINT16_CLASS: return first_as_double<uint16_t>(pa->data);
        case mxINT32_CLASS: return first_as_double<int32_t>(pa->data);
        case mxUINT32_CLASS: return first_as_double<uint32_t>(pa->data);
        case mxINT64_CLASS: return first_as_double<int64_t>(pa->data);
        case mxUINT64_CLASS: return first_as_double<uint64_t>(pa->data);
        case mxLOGICAL_CLASS: return *static_cast<const mxLogical*>(pa->data) ? 1.0 : 0.0;
        case mxCHAR_CLASS: return first_as_double<mxChar>(pa->data);
        default: return 0.0;
    }
}

size_t mxGetNumberOfElements(const mxArray* pa) { return pa != nullptr ? pa->numel : 0; }

mxClassID mxGetClassID(const mxArray* pa) { return pa != nullptr ? pa->class_id : mxUNKNOWN_CLASS; }

const char* mxGetClassName(const mxArray* pa) {
    switch (mxGetClassID(pa)) {
        case mxCELL_CLASS: return "cell";
        case mxSTRUCT_CLASS: return "struct";
        case mxLOGICAL_CLASS: return "logical";
        case mxCHAR_CLASS: return "char";
        case mxDOUBLE_CLASS: return "double";
        case mxSINGLE_CLASS: return "single";
        case mxINT8_CLASS: return "int8";
        case mxUINT8_CLASS: return "uint8";
        case mxINT16_CLASS: return "int16";
        case mxUINT16_CLASS: return "uint16";
        case mxINT32_CLASS: return "int32";
        case mxUINT32_CLASS: return "uint32";
        case mxINT64_CLASS: return "int64";
        case mxUINT64_CLASS: return "uint64";
        default: return "unknown";
    }
}

mwSize mxGetM(const mxArray* pa) { return pa != nullptr ? pa->dims[0] : 0; }

mwSize mxGetN(const mxArray* pa) {
    if (pa == nullptr) return 0;
    mwSize n = 1;
    for (size_t k = 1; k < pa->dims.size(); ++k) n *= pa->dims[k];
    return n;
}

mwSize mxGetNumberOfDimensions(const mxArray* pa) { return pa != nullptr ? pa->dims.size() : 0; }

const mwSize* mxGetDimensions(const mxArray* pa) { return pa != nullptr ? pa->dims.data() : nullptr; }

size_t mxGetElementSize(const mxArray* pa) { return pa != nullptr ? element_size(pa->class_id) : 0; }

bool mxIsEmpty(const mxArray* pa) { return pa != nullptr && pa->numel == 0; }
bool mxIsStruct(const mxArray* pa) { return pa != nullptr && pa->class_id == mxSTRUCT_CLASS; }
bool mxIsCell(const mxArray* pa) { return pa != nullptr && pa->class_id == mxCELL_CLASS; }
bool mxIsDouble(const mxArray* pa) { return pa != nullptr && pa->class_id == mxDOUBLE_CLASS; }
bool mxIsLogical(const mxArray* pa) { return pa != nullptr && pa->class_id == mxLOGICAL_CLASS; }
bool mxIsChar(const mxArray* pa) { return pa != nullptr && pa->class_id == mxCHAR_CLASS; }
bool mxIsNumeric(const mxArray* pa) { return pa != nullptr && is_numeric_class(pa->class_id); }

bool mxIsLogicalScalarTrue(const mxArray* pa) {
    return pa != nullptr && pa->class_id == mxLOGICAL_CLASS && pa->numel == 1 &&
           *static_cast<const mxLogical*>(pa->data);
}

}  // extern "C"
