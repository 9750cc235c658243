// What the category, kind and filter lists share: a record with an id and a name.
#ifndef TAVISYS_CODEC_NAMED_VALUE_H
#define TAVISYS_CODEC_NAMED_VALUE_H

#include "codec/wire.h"
#include "support_memory.h"

namespace tavisys {

// Categories and kinds also say how many movies are filed under the value.
template <class VALUE>
struct COUNTED_VALUE_WIRE {
    using RECORD = VALUE;
    static constexpr auto FIELDS = std::make_tuple(wire::integer(&RECORD::id), wire::string(&RECORD::name),
                                                   wire::integer(&RECORD::movies));
};

template <class WIRE>
typename WIRE::RECORD *create_named_value(INT32_T id, const INT8_T *name) {
    auto *info = allocate<typename WIRE::RECORD>();
    if (info == nullptr)
        return nullptr;
    info->id = id;
    info->name = safe_strdup(name);
    if (info->name == nullptr) // a value without a name can't be shown: NULL is refused, too
        wire::delete_record<WIRE>(&info);
    return info;
}

template <class WIRE>
typename WIRE::RECORD *create_counted_value(INT32_T id, const INT8_T *name, INT32_T movies) {
    auto *info = create_named_value<WIRE>(id, name);
    if (info != nullptr)
        info->movies = movies;
    return info;
}

} // namespace tavisys

#endif
