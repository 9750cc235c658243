// Every decoder on any body. The first byte picks the family, the rest is the body.
//
// Held for each: a decoder reads nothing outside the body, allocates in proportion to it, and leaves nothing
// behind when it fails; what it made can be encoded unless a list in it is empty, and from then on decoding
// and encoding give the same bytes for ever.
#include <cstdlib>
#include <memory>

#include "families.h"
#include "fuzz.h"
#include "support_codec.h"
#include "support_memory.h"

using namespace fuzz;

namespace {

// The most that is allocated for the bytes of a body: an attribute value of four bytes, an empty name,
// becomes a node (16), its record (8) and a name (1). Any other node, string and array takes less for each
// byte, repeats looked for included (16 for each node of at least 12).
constexpr size_t VALUE_LENGTH = 4;
constexpr size_t VALUE_MEMORY = 25;
// A record is made once its smallest encoding is there. If lists in it use these bytes up, so that the rest
// fails, it came on top of them; records lie two deep at most and the largest takes 168.
constexpr size_t UNFINISHED_RECORDS = 256;

struct FREE_T {
    void operator()(void *pointer) const { free(pointer); }
};

class RECORD_T {
public:
    explicit RECORD_T(const FAMILY_T &family) : family_(family) {}
    RECORD_T(const RECORD_T &) = delete;
    RECORD_T &operator=(const RECORD_T &) = delete;
    ~RECORD_T() { family_.release(&record_); }

    // False, with the out-argument left alone, when the body isn't one.
    bool decode(std::string_view body, INT32_T *used) {
        INT8_T mark = 0;
        void *decoded = &mark;
        forget_allocations();
        *used = family_.decode(body.data(), static_cast<INT32_T>(body.size()), &decoded);
        const size_t allocated = bytes_allocated();
        require(allocated <= body.size() * VALUE_MEMORY / VALUE_LENGTH + UNFINISHED_RECORDS,
                "memory out of proportion to the body", family_.name);
        require(*used >= -1 && *used <= static_cast<INT32_T>(body.size()), "consumed more than there is",
                family_.name);
        require((*used < 0) == (decoded == &mark), "out-argument of a failure, or none of a success",
                family_.name);
        if (*used >= 0)
            record_ = decoded;
        return *used >= 0;
    }

    // To /dev/null: that every missing text is printed as something.
    void show() const {
        if (family_.show != nullptr)
            family_.show(record_);
    }

    std::string encode() const {
        INT8_T mark = 0;
        PVOID body = &mark;
        INT32_T length = 0;
        const RTSTATUS result = family_.encode(record_, &body, &length);
        const bool can = family_.can_be_sent == nullptr ? record_ != nullptr : family_.can_be_sent(record_);
        require((result == 0) == can, can ? "can't be encoded again" : "is encoded in spite of an empty list",
                family_.name);
        require((result == 0) == (body != &mark), "out-argument of a failed encode", family_.name);
        if (result != 0)
            return {};
        const std::unique_ptr<void, FREE_T> owner(body);
        return {static_cast<const char *>(body), static_cast<size_t>(length)};
    }

private:
    const FAMILY_T &family_;
    void *record_ = nullptr;
};

void try_record(const FAMILY_T &family, std::string_view body) {
    INT32_T used = 0;
    RECORD_T first(family);
    if (!first.decode(body, &used))
        return;
    first.show();
    const std::string once = first.encode();
    if (once.empty())
        return;
    const auto length = static_cast<INT32_T>(once.size());
    RECORD_T second(family);
    require(second.decode(once, &used), "what was encoded can't be decoded", family.name);
    require(used == (family.tells_bytes ? length - family.unread : 0), "decoded another length than encoded",
            family.name);
    require(second.encode() == once, "encoded another way the second time", family.name);
}

// The exported primitives, which tell a value from nothing by their result alone.
void try_primitives(std::string_view body) {
    INPUT_T input(reinterpret_cast<const uint8_t *>(body.data()), body.size());
    const INT32_T longest = input.integer();
    const std::string_view rest = input.rest();
    const auto left = static_cast<INT32_T>(rest.size());
    INT32_T value = 7;
    const INT32_T taken = decode_int_data_from_buffer(rest.data(), left, &value);
    require(taken == (left < 4 ? -1 : 4) && (taken == 4 || value == 7), "an integer is four bytes");
    INT8_T mark = 0;
    INT8_T *text = &mark;
    const INT32_T used = decode_ptr_data_from_buffer(rest.data(), left, &text, longest);
    require((used < 0) == (text == &mark) && used <= left, "a string of a failure, or none of a success");
    if (used < 0)
        return;
    require(used == calc_codec_ptr_data_length(text), "a string takes the room that was calculated");
    require(text == nullptr || longest <= 0 || strlen(text) <= static_cast<size_t>(longest),
            "a string above the limit");
    safe_free(text);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    start();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return -1;
    // The block begins with the body: a read before it is seen, too.
    const std::unique_ptr<char[]> body(new char[size - 1]);
    memcpy(body.get(), data + 1, size - 1);
    const std::string_view rest(body.get(), size - 1);
    const size_t pick = data[0];
    if (pick < families().size())
        try_record(families()[pick], rest);
    else if (pick == families().size())
        try_primitives(rest);
    else
        return -1;
    return 0;
}
