// Our libmx: the mxArray type and the matrix API functions over it, with MATLAB's semantics.
#include "matrix.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

// An array's dims, MATLAB-normalised: at least two, no trailing 1 beyond the second. The
// first few are held in place, so that making an array of the usual shape allocates nothing
// for them.
class Dims {
public:
    // False when the element count overflows.
    bool assign(mwSize ndim, const mwSize* dims, size_t& numel) {
        size_t n = ndim;
        while (n > 2 && dims[n - 1] == 1) --n;
        const size_t kept = n;
        if (n < 2) n = 2;
        if (n > local_capacity) {
            heap_ = std::make_unique<mwSize[]>(n);
            data_ = heap_.get();
        }
        for (size_t k = 0; k < n; ++k) data_[k] = k < kept ? dims[k] : 1;
        size_ = n;
        numel = 1;
        for (size_t k = 0; k < n; ++k) {
            if (data_[k] != 0 && numel > std::numeric_limits<size_t>::max() / data_[k]) return false;
            numel *= data_[k];
        }
        return true;
    }
    size_t size() const { return size_; }
    const mwSize* data() const { return data_; }
    mwSize operator[](size_t k) const { return data_[k]; }

private:
    static constexpr size_t local_capacity = 4;
    mwSize local_[local_capacity] = {};
    std::unique_ptr<mwSize[]> heap_;
    mwSize* data_ = local_;
    size_t size_ = 0;
};

// A struct's field names in order. Arrays made from one another share one list (a duplicate
// copies no names); a list is changed in place only by its sole holder, otherwise copied first.
class FieldNames {
public:
    static FieldNames* make() { return new FieldNames; }
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
        if (n == 0) return -1;
        const size_t length = std::strlen(name);
        size_t f = hint.load(std::memory_order_relaxed);
        if (f >= n) f = 0;
        for (size_t tried = 0; tried < n; ++tried, f = f + 1 == n ? 0 : f + 1) {
            const std::string& candidate = names_[f];
            if (candidate.size() == length && std::memcmp(candidate.data(), name, length) == 0) {
                hint.store(static_cast<uint32_t>(f), std::memory_order_relaxed);
                return static_cast<int>(f);
            }
        }
        return -1;
    }

private:
    FieldNames() = default;
    std::atomic<size_t> refs_{1};
    std::vector<std::string> names_;
};

// mxArray objects come and go by the thousand every time step; each thread keeps the freed
// ones for reuse rather than going through malloc for each. Under AddressSanitizer every
// object is its own allocation, so that a use after mxDestroyArray is still caught.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool pool_nodes = false;
#else
constexpr bool pool_nodes = true;
#endif

class NodePool {
public:
    explicit NodePool(size_t node_size) : node_size_(node_size) {}
    NodePool(const NodePool&) = delete;
    NodePool& operator=(const NodePool&) = delete;
    ~NodePool() {
        while (head_ != nullptr) ::operator delete(pop());
    }
    void* take() { return head_ != nullptr ? pop() : ::operator new(node_size_); }
    void give(void* node) {
        if (kept_ >= max_kept) {
            ::operator delete(node);
            return;
        }
        head_ = ::new (node) Free{head_};
        ++kept_;
    }

private:
    struct Free {
        Free* next;
    };
    // Enough for the largest state of a time step; more freed at once go back to malloc.
    static constexpr size_t max_kept = 16384;
    void* pop() {
        Free* node = head_;
        head_ = node->next;
        --kept_;
        return node;
    }
    size_t node_size_;
    Free* head_ = nullptr;
    size_t kept_ = 0;
};

}  // namespace

struct mxArray_tag {
    mxClassID class_id = mxUNKNOWN_CLASS;
    // Where the last field lookup by name ended.
    mutable std::atomic<uint32_t> field_hint{0};
    Dims dims;
    size_t numel = 0;
    // Numeric, logical and char data, column-major, zero-filled at creation; null when empty.
    // Up to local_data_size bytes (a scalar, a short text) live in local_data.
    void* data = nullptr;
    static constexpr size_t local_data_size = 16;
    alignas(std::max_align_t) unsigned char local_data[local_data_size] = {};
    // Structs: the field names (never null); elements[i * field count + f].
    FieldNames* fields = nullptr;
    // Struct field values or cell contents; null where nothing was set.
    std::vector<mxArray*> elements;

    mxArray_tag() = default;
    mxArray_tag(const mxArray_tag&) = delete;
    mxArray_tag& operator=(const mxArray_tag&) = delete;
    ~mxArray_tag() {
        if (data != local_data) std::free(data);
        FieldNames::release(fields);
        for (mxArray* e : elements) delete e;
    }

    static void* operator new(size_t size);
    static void operator delete(void* node);
};

namespace {

// The pool of this thread, and whether it is gone already (an array destroyed while the
// thread ends, after its pool, goes straight back to the heap).
thread_local bool pool_gone = false;
struct ThreadPool {
    NodePool pool{sizeof(mxArray_tag)};
    ~ThreadPool() { pool_gone = true; }
};
thread_local ThreadPool thread_pool;

}  // namespace

void* mxArray_tag::operator new(size_t size) {
    if (!pool_nodes || pool_gone) return ::operator new(size);
    return thread_pool.pool.take();
}

void mxArray_tag::operator delete(void* node) {
    if (!pool_nodes || pool_gone) {
        ::operator delete(node);
        return;
    }
    thread_pool.pool.give(node);
}

namespace {

constexpr int max_field_name_length = 63;

bool is_numeric_class(mxClassID c) { return c >= mxDOUBLE_CLASS && c <= mxUINT64_CLASS; }

bool has_data_class(mxClassID c) { return is_numeric_class(c) || c == mxLOGICAL_CLASS || c == mxCHAR_CLASS; }

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
    try {
        auto a = std::make_unique<mxArray_tag>();
        a->class_id = class_id;
        if (class_id == mxSTRUCT_CLASS) a->fields = names != nullptr ? names : FieldNames::make();
        if (!a->dims.assign(ndim, dims, a->numel)) return nullptr;
        if (has_data_class(class_id)) {
            size_t size = element_size(class_id);
            if (a->numel > std::numeric_limits<size_t>::max() / size) return nullptr;
            if (a->numel > 0 && a->numel * size <= mxArray_tag::local_data_size) {
                a->data = a->local_data;
            } else if (a->numel > 0) {
                a->data = std::calloc(a->numel, size);
                if (a->data == nullptr) return nullptr;
            }
        } else if (class_id == mxCELL_CLASS) {
            a->elements.assign(a->numel, nullptr);
        } else if (class_id == mxSTRUCT_CLASS) {
            const size_t nfields = a->fields->size();
            if (nfields != 0 && a->numel > std::numeric_limits<size_t>::max() / nfields) return nullptr;
            a->elements.assign(a->numel * nfields, nullptr);
        }
        return a.release();
    } catch (const std::bad_alloc&) {
        if (class_id == mxSTRUCT_CLASS) FieldNames::release(names);
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
        names = FieldNames::make();
        for (int f = 0; f < nfields; ++f) names->add(fieldnames[f]);
    } catch (const std::bad_alloc&) {
        FieldNames::release(names);
        return nullptr;
    }
    return create(mxSTRUCT_CLASS, ndim, dims, names);
}

int field_number(const mxArray* pa, const char* name) {
    if (pa == nullptr || pa->class_id != mxSTRUCT_CLASS || name == nullptr) return -1;
    return pa->fields->find(name, pa->field_hint);
}

// The slot of element i's field f, or null when either is out of range.
mxArray** field_slot(const mxArray* pa, mwIndex i, int f) {
    if (pa == nullptr || pa->class_id != mxSTRUCT_CLASS || f < 0) return nullptr;
    size_t nfields = pa->fields->size();
    if (static_cast<size_t>(f) >= nfields || i >= pa->numel) return nullptr;
    return const_cast<mxArray**>(&pa->elements[i * nfields + static_cast<size_t>(f)]);
}

template <typename T>
double first_as_double(const void* data) {
    T v;
    std::memcpy(&v, data, sizeof v);
    return static_cast<double>(v);
}

mxArray* duplicate(const mxArray* in) {
    FieldNames* names = in->class_id == mxSTRUCT_CLASS ? in->fields->share() : nullptr;
    mxArray* out = create(in->class_id, in->dims.size(), in->dims.data(), names);
    if (out == nullptr) return nullptr;
    if (in->data != nullptr) std::memcpy(out->data, in->data, in->numel * element_size(in->class_id));
    for (size_t k = 0; k < in->elements.size(); ++k) {
        if (in->elements[k] == nullptr) continue;
        out->elements[k] = duplicate(in->elements[k]);
        if (out->elements[k] == nullptr) {
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
    try {
        size_t old_n = pa->fields->size();
        std::vector<mxArray*> grown(pa->numel * (old_n + 1), nullptr);
        for (size_t i = 0; i < pa->numel; ++i)
            for (size_t f = 0; f < old_n; ++f) grown[i * (old_n + 1) + f] = pa->elements[i * old_n + f];
        pa->fields = FieldNames::own(pa->fields);
        pa->fields->add(fieldname);
        pa->elements.swap(grown);
        return static_cast<int>(old_n);
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

void mxRemoveField(mxArray* pa, int fieldnum) {
    if (pa == nullptr || pa->class_id != mxSTRUCT_CLASS || fieldnum < 0 ||
        static_cast<size_t>(fieldnum) >= pa->fields->size())
        return;
    // As in MATLAB, the removed values are not freed: the caller may still hold them.
    size_t old_n = pa->fields->size();
    try {
        std::vector<mxArray*> shrunk;
        shrunk.reserve(pa->numel * (old_n - 1));
        for (size_t i = 0; i < pa->numel; ++i)
            for (size_t f = 0; f < old_n; ++f)
                if (f != static_cast<size_t>(fieldnum)) shrunk.push_back(pa->elements[i * old_n + f]);
        pa->fields = FieldNames::own(pa->fields);
        pa->elements.swap(shrunk);
        pa->fields->remove(static_cast<size_t>(fieldnum));
    } catch (const std::bad_alloc&) {
        // The struct stays as it was.
    }
}

int mxGetFieldNumber(const mxArray* pa, const char* fieldname) { return field_number(pa, fieldname); }

int mxGetNumberOfFields(const mxArray* pa) {
    if (pa == nullptr || pa->class_id != mxSTRUCT_CLASS) return 0;
    return static_cast<int>(pa->fields->size());
}

const char* mxGetFieldNameByNumber(const mxArray* pa, int n) {
    if (pa == nullptr || pa->class_id != mxSTRUCT_CLASS || n < 0 || static_cast<size_t>(n) >= pa->fields->size())
        return nullptr;
    return pa->fields->name(static_cast<size_t>(n));
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
    return pa->elements[i];
}

void mxSetCell(mxArray* pa, mwIndex i, mxArray* value) {
    if (pa == nullptr || pa->class_id != mxCELL_CLASS || i >= pa->numel) return;
    pa->elements[i] = value;
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
