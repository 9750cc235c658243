// Places in a body: where decoders read and where encoders write.
//
// A body's length is known when its last field has been looked at. An encoder that measures first walks over
// all records twice, and the second walk costs as much as the first where they don't fit the caches. Room
// that grows lets one walk do.
#ifndef TAVISYS_CODEC_CURSOR_H
#define TAVISYS_CODEC_CURSOR_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "support/codec_primitive.h"
#include "support/owner.h"

namespace tavisys::wire {

// A place in a body: what lies behind it is passed, and so much is left. A negative length is none.
template <class BYTE>
class CURSOR_T {
public:
    CURSOR_T(BYTE *start, INT32_T length) : start_(start), at_(start), end_(start + std::max(length, 0)) {}
    BYTE *at() const { return at_; }
    INT32_T left() const { return static_cast<INT32_T>(end_ - at_); }
    INT32_T passed() const { return static_cast<INT32_T>(at_ - start_); }

protected:
    BYTE *start_;
    BYTE *at_;
    BYTE *end_;
};

class READER_T : public CURSOR_T<const INT8_T> {
public:
    READER_T(const void *from, INT32_T length) : CURSOR_T(static_cast<const INT8_T *>(from), length) {}
    bool integer(INT32_T *value) { return advance(decode_integer(at_, left(), value)); }
    bool integers(INT32_T *values, INT32_T count) {
        if (count > left() / INTEGER_LENGTH)
            return false;
        for (int64_t i = 0; i < count; i++)
            values[i] = load_integer(at_ + INTEGER_LENGTH * i);
        return advance(INTEGER_LENGTH * count);
    }
    bool string(INT8_T **value) { return advance(decode_string(at_, left(), value)); }

private:
    // Negative counts are failures.
    bool advance(INT32_T count) {
        if (count < 0)
            return false;
        at_ += count;
        return true;
    }
};

// Why a body wasn't encoded.
enum class FAULT_T { LENGTH, MEMORY, CONTENT };

class GROWING_ROOM_T;

// Writes into room of a given length, or into room that grows when it is full.
class WRITER_T : public CURSOR_T<INT8_T> {
public:
    WRITER_T(void *to, INT32_T length) : CURSOR_T(static_cast<INT8_T *>(to), length) {}
    explicit WRITER_T(GROWING_ROOM_T &room);
    bool integer(INT32_T value) {
        if (!has_room(INTEGER_LENGTH))
            return false;
        store_integer(at_, value);
        at_ += INTEGER_LENGTH;
        return true;
    }
    bool integers(const INT32_T *values, INT32_T count) {
        const int64_t length = int64_t{INTEGER_LENGTH} * count;
        if (!has_room(length))
            return false;
        for (int64_t i = 0; i < count; i++)
            store_integer(at_ + INTEGER_LENGTH * i, values[i]);
        at_ += length;
        return true;
    }
    bool string(const INT8_T *value) {
        if (value == nullptr)
            return integer(NULL_STRING_COUNT);
        const size_t count = strlen(value);
        if (count > LONGEST_BODY || !has_room(INTEGER_LENGTH + static_cast<int64_t>(count)))
            return false;
        store_integer(at_, static_cast<INT32_T>(count));
        // NOLINTNEXTLINE(bugprone-not-null-terminated-result): strings travel without their terminator
        memcpy(at_ + INTEGER_LENGTH, value, count);
        at_ += INTEGER_LENGTH + count;
        return true;
    }
    bool skip(INT32_T count) {
        if (!has_room(count))
            return false;
        at_ += count;
        return true;
    }
    // Writes again what stands behind so many bytes.
    void rewrite_integer(INT32_T behind, INT32_T value) { store_integer(start_ + behind, value); }
    // Whether it was room that didn't grow, and not the record, that kept something from being written.
    bool is_stuck() const;

private:
    friend class GROWING_ROOM_T;
    bool has_room(int64_t count) {
        if (count <= end_ - at_) [[likely]]
            return true;
        if (room_ == nullptr)
            return false;
        *this = grown(*this, count);
        return count <= end_ - at_;
    }
    // By value: a writer whose address nobody takes stays in registers.
    static WRITER_T grown(WRITER_T from, int64_t count);
    GROWING_ROOM_T *room_ = nullptr;
};

// Room for a body whose length isn't known: most bodies fit the room that stands ready, and memory is taken
// once, when they are complete.
class GROWING_ROOM_T {
public:
    // What was written, in a block of its own; NULL when memory is short.
    OWNED_BODY_T take(const WRITER_T &writer) {
        const auto length = static_cast<size_t>(writer.passed());
        if (taken_ != nullptr) {
            if (void *trimmed = realloc(taken_.get(), length); trimmed != nullptr) {
                static_cast<void>(taken_.release());
                taken_.reset(static_cast<INT8_T *>(trimmed));
            }
            return std::move(taken_);
        }
        OWNED_BODY_T body(static_cast<INT8_T *>(malloc(length)));
        if (body != nullptr)
            memcpy(body.get(), ready_, length);
        return body;
    }
    // What kept the room from growing, or CONTENT when nothing did.
    FAULT_T fault() const { return fault_; }

private:
    friend class WRITER_T;
    static constexpr INT32_T READY = 16 * 1024;

    INT8_T ready_[READY];
    OWNED_BODY_T taken_;
    FAULT_T fault_ = FAULT_T::CONTENT;
};

inline WRITER_T::WRITER_T(GROWING_ROOM_T &room) : WRITER_T(room.ready_, GROWING_ROOM_T::READY) {
    room_ = &room;
}
inline bool WRITER_T::is_stuck() const {
    return room_ != nullptr && room_->fault() != FAULT_T::CONTENT;
}
[[gnu::noinline, gnu::cold]] inline WRITER_T WRITER_T::grown(WRITER_T from, int64_t count) {
    GROWING_ROOM_T &room = *from.room_;
    const int64_t passed = from.passed();
    const int64_t needed = passed + count;
    // In few and large steps: what is never written to costs nothing and is given back in the end.
    constexpr int64_t LARGE = 1024 * 1024;
    const int64_t before = passed + from.left();
    const int64_t size = std::min(std::max(needed, before * (before < LARGE ? 16 : 4)), LONGEST_BODY);
    auto *taken = needed > size
                      ? nullptr
                      : static_cast<INT8_T *>(realloc(room.taken_.get(), static_cast<size_t>(size)));
    if (taken == nullptr) {
        room.fault_ = needed > size ? FAULT_T::LENGTH : FAULT_T::MEMORY;
        return from;
    }
    if (room.taken_ == nullptr)
        memcpy(taken, room.ready_, static_cast<size_t>(passed));
    static_cast<void>(room.taken_.release()); // realloc has freed or kept it
    room.taken_.reset(taken);
    from.start_ = taken;
    from.at_ = taken + passed;
    from.end_ = taken + size;
    return from;
}

} // namespace tavisys::wire

#endif
