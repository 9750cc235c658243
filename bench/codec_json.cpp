// nlohmann JSON: an object for each record, with the names of its fields.
#include <nlohmann/json.hpp>

#include "codecs.h"

namespace bench {

namespace {

using JSON_T = nlohmann::json;

template <class RECORD>
JSON_T to_json(const RECORD &record);

struct TO_JSON_T {
    template <class VALUE>
    JSON_T integer(VALUE value) {
        return value;
    }
    JSON_T text(const INT8_T *value) { return value == nullptr ? JSON_T() : JSON_T(value); }
    JSON_T ids(const BASIC_MOVIE_IDS_T *value) {
        if (value == nullptr)
            return {};
        JSON_T array = JSON_T::array();
        for (INT32_T i = 0; i < value->num; i++)
            array.push_back(value->ids[i]);
        return array;
    }
    template <class NODE>
    JSON_T list(const NODE *value) {
        JSON_T array = JSON_T::array();
        for (; value != nullptr; value = next_of(value))
            array.push_back(to_json(content_of(*value)));
        return array;
    }
    template <class RECORD>
    JSON_T optional(const RECORD *value) {
        return value == nullptr ? JSON_T() : to_json(*value);
    }
    template <class RECORD>
    JSON_T inner(const RECORD &value) {
        return to_json(value);
    }
};

template <class RECORD>
JSON_T to_json(const RECORD &record) {
    JSON_T object = JSON_T::object();
    each_field(record,
               [&](const char *name, const auto &field) { object[name] = dispatch(TO_JSON_T{}, field); });
    return object;
}

template <class RECORD>
void from_json(const JSON_T &object, RECORD &record);

struct FROM_JSON_T {
    const JSON_T &json;
    template <class VALUE>
    void integer(VALUE &value) {
        value = json.get<VALUE>();
    }
    void text(INT8_T *&value) {
        if (json.is_null())
            return;
        const auto &text = json.get_ref<const std::string &>();
        value = make_text(text.data(), text.size());
    }
    void ids(BASIC_MOVIE_IDS_T *&value) {
        if (json.is_null())
            return;
        value = make_ids(json.size());
        for (size_t i = 0; i < json.size(); i++)
            value->ids[i] = json[i].get<INT32_T>();
    }
    template <class NODE>
    void list(NODE *&value) {
        size_t i = 0;
        value = make_list<NODE>(json.size(), [&](auto &record) { from_json(json[i++], record); });
    }
    template <class RECORD>
    void optional(RECORD *&value) {
        if (json.is_null())
            return;
        value = make<RECORD>();
        from_json(json, *value);
    }
    template <class RECORD>
    void inner(RECORD &value) {
        from_json(json, value);
    }
};

template <class RECORD>
void from_json(const JSON_T &object, RECORD &record) {
    each_field(record, [&](const char *name, auto &field) { dispatch(FROM_JSON_T{object.at(name)}, field); });
}

template <class RECORD>
BODY_T encode(const RECORD &record, size_t) {
    std::string text;
    if constexpr (IS_NODE<RECORD>)
        text = TO_JSON_T{}.list(&record).dump();
    else
        text = to_json(record).dump();
    BODY_T body(text.size());
    memcpy(body.data(), text.data(), text.size());
    return body;
}
template <class RECORD>
RECORD *decode(const BODY_T &body) {
    const JSON_T json = JSON_T::parse(body.data(), body.data() + body.length());
    RECORD *record = nullptr;
    if constexpr (IS_NODE<RECORD>)
        FROM_JSON_T{json}.list(record);
    else
        FROM_JSON_T{json}.optional(record);
    return record;
}

} // namespace

template <class RECORD>
CODEC_T<RECORD> json_codec() {
    return {"json", encode<RECORD>, decode<RECORD>, release};
}
template CODEC_T<PAGE_T> json_codec();
template CODEC_T<MOVIES_T> json_codec();
template CODEC_T<DETAIL_T> json_codec();
template CODEC_T<DISKS_T> json_codec();
template CODEC_T<TP_TAVISYS_VERSION_INFORMATION_T> json_codec();

} // namespace bench
