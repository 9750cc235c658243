// MessagePack: an array for each record, its fields in order. Decoding refers to the body's texts and
// copies them once, into the records.
#include <msgpack.hpp>

#include "codecs.h"

namespace bench {

namespace {

using BUFFER_T = msgpack::sbuffer;

struct PACK_T {
    msgpack::packer<BUFFER_T> &to;

    template <class VALUE>
    void integer(VALUE value) {
        to.pack(value);
    }
    void text(const INT8_T *value) {
        if (value == nullptr) {
            to.pack_nil();
            return;
        }
        const auto length = static_cast<uint32_t>(strlen(value));
        to.pack_str(length);
        to.pack_str_body(value, length);
    }
    void ids(const BASIC_MOVIE_IDS_T *value) {
        if (value == nullptr) {
            to.pack_nil();
            return;
        }
        to.pack_array(static_cast<uint32_t>(value->num));
        for (INT32_T i = 0; i < value->num; i++)
            to.pack(value->ids[i]);
    }
    template <class NODE>
    void list(const NODE *value) {
        to.pack_array(static_cast<uint32_t>(length_of(value)));
        for (; value != nullptr; value = next_of(value))
            inner(content_of(*value));
    }
    template <class RECORD>
    void optional(const RECORD *value) {
        if (value == nullptr)
            to.pack_nil();
        else
            inner(*value);
    }
    template <class RECORD>
    void inner(const RECORD &value) {
        to.pack_array(static_cast<uint32_t>(count_fields<RECORD>()));
        each_field(value, [&](const char *, const auto &field) { dispatch(*this, field); });
    }
};

struct UNPACK_T {
    const msgpack::object &from;

    const msgpack::object &entry(uint32_t i) const {
        if (from.type != msgpack::type::ARRAY || i >= from.via.array.size)
            throw msgpack::type_error();
        return from.via.array.ptr[i];
    }
    uint32_t entries() const { return from.type == msgpack::type::ARRAY ? from.via.array.size : 0; }

    template <class VALUE>
    void integer(VALUE &value) {
        from.convert(value);
    }
    void text(INT8_T *&value) {
        if (from.type == msgpack::type::STR)
            value = make_text(from.via.str.ptr, from.via.str.size);
    }
    void ids(BASIC_MOVIE_IDS_T *&value) {
        if (from.is_nil())
            return;
        value = make_ids(entries());
        for (uint32_t i = 0; i < entries(); i++)
            entry(i).convert(value->ids[i]);
    }
    template <class NODE>
    void list(NODE *&value) {
        uint32_t i = 0;
        value = make_list<NODE>(entries(), [&](auto &record) { UNPACK_T{entry(i++)}.inner(record); });
    }
    template <class RECORD>
    void optional(RECORD *&value) {
        if (from.is_nil())
            return;
        value = make<RECORD>();
        inner(*value);
    }
    template <class RECORD>
    void inner(RECORD &value) {
        uint32_t i = 0;
        each_field(value, [&](const char *, auto &field) { dispatch(UNPACK_T{entry(i++)}, field); });
    }
};

template <class RECORD>
BODY_T encode(const RECORD &record, size_t) {
    BUFFER_T buffer;
    msgpack::packer<BUFFER_T> packer(buffer);
    PACK_T pack{packer};
    if constexpr (IS_NODE<RECORD>)
        pack.list(&record);
    else
        pack.inner(record);
    const size_t length = buffer.size();
    return {buffer.release(), length};
}
template <class RECORD>
RECORD *decode(const BODY_T &body) {
    const auto refer = [](msgpack::type::object_type, std::size_t, void *) { return true; };
    const msgpack::object_handle handle = msgpack::unpack(body.data(), body.length(), refer);
    RECORD *record = nullptr;
    if constexpr (IS_NODE<RECORD>)
        UNPACK_T{handle.get()}.list(record);
    else
        UNPACK_T{handle.get()}.optional(record);
    return record;
}

} // namespace

template <class RECORD>
CODEC_T<RECORD> msgpack_codec() {
    return {"msgpack", encode<RECORD>, decode<RECORD>, release};
}
template CODEC_T<PAGE_T> msgpack_codec();
template CODEC_T<MOVIES_T> msgpack_codec();
template CODEC_T<DETAIL_T> msgpack_codec();
template CODEC_T<DISKS_T> msgpack_codec();

} // namespace bench
