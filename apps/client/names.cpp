#include "names.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>

#include "error.h"
#include "server.h"
#include "text.h"

namespace client {

namespace {

constexpr std::size_t SHOWN_NAMES = 12;

bool is_number(const std::string &text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

INT32_T read_id(const std::string &text) {
    constexpr INT32_T LARGEST = std::numeric_limits<INT32_T>::max();
    INT32_T id = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), id).ec != std::errc{})
        throw CLIENT_ERROR_T(EXIT_BAD_USAGE, fill(messages::ID_TOO_LARGE, {std::to_string(LARGEST), text}));
    return id;
}

// A name as it is written, else one that differs only in the case of ASCII letters: "3d" finds "3D".
const NAMED_ID_T *find_name(const std::vector<NAMED_ID_T> &list, const std::string &name) {
    const auto is_equal = [&](const NAMED_ID_T &item) { return item.name == name; };
    const auto is_alike = [&](const NAMED_ID_T &item) {
        return strcasecmp(item.name.c_str(), name.c_str()) == 0;
    };
    auto found = std::find_if(list.begin(), list.end(), is_equal);
    if (found == list.end())
        found = std::find_if(list.begin(), list.end(), is_alike);
    return found == list.end() ? nullptr : &*found;
}

const NAMED_ID_T *find_id_in(const std::vector<NAMED_ID_T> &list, INT32_T id) {
    const auto found =
        std::find_if(list.begin(), list.end(), [id](const NAMED_ID_T &item) { return item.id == id; });
    return found == list.end() ? nullptr : &*found;
}

std::string join(const std::vector<NAMED_ID_T> &list) {
    std::string names;
    for (std::size_t i = 0; i < std::min(list.size(), SHOWN_NAMES); i++)
        names += (i > 0 ? messages::NAME_SEPARATOR.get() : "") + list[i].name;
    return names;
}

[[noreturn]] void fail_without_name(const ATTRIBUTE_T &attribute, INT32_T cid, const std::string &name,
                                    const std::vector<NAMED_ID_T> &list) {
    std::string message = fill(messages::NO_SUCH_NAME, {attribute.label, name});
    message += list.empty() ? fill(messages::NO_NAMES, {attribute.label})
                            : fill(messages::KNOWN_NAMES, {join(list)});
    if (list.size() > SHOWN_NAMES) {
        const std::string command = attribute.type == CATEGORY_TYPE
                                        ? messages::LIST_CATEGORIES
                                        : fill(messages::LIST_FILTERS, {std::to_string(cid), attribute.word});
        message += fill(messages::MORE_NAMES, {std::to_string(list.size()), command});
    }
    throw CLIENT_ERROR_T(EXIT_FAILED, message);
}

std::vector<NAMED_ID_T> fetch_names(const ATTRIBUTE_T &attribute, INT32_T cid) {
    std::vector<NAMED_ID_T> list;
    const auto add = [&list](const auto &record) {
        if (record.name != nullptr)
            list.push_back({record.id, record.name});
    };
    if (attribute.type == CATEGORY_TYPE) {
        for_each_record(fetch_categories().get(), add);
    } else {
        for_each_record(fetch_filters(cid, attribute.type).get(), add);
    }
    return list;
}

} // namespace

const ATTRIBUTE_T &filter_attribute(const std::string &word) {
    const ATTRIBUTE_T *const attributes[] = {&KIND, &AREA, &YEAR};
    const auto *found =
        std::find_if(std::begin(attributes), std::end(attributes),
                     [&word](const ATTRIBUTE_T *attribute) { return attribute->word == word; });
    return found == std::end(attributes) ? DIMENSION : **found;
}

const NAME_BOOK_T::NAMED_IDS_T &NAME_BOOK_T::list_of(const ATTRIBUTE_T &attribute, INT32_T cid) {
    const std::pair<INT32_T, INT32_T> key{attribute.type, cid};
    const auto known = lists.find(key);
    if (known != lists.end())
        return known->second;
    return lists[key] = from_ == NAMES_FROM_T::SERVER ? fetch_names(attribute, cid) : NAMED_IDS_T{};
}

INT32_T NAME_BOOK_T::find_id(const ATTRIBUTE_T &attribute, INT32_T cid, const std::string &text) {
    if (text.empty() || text == TAVISYS_NAME_OF_ALL)
        return ALL;
    const bool number = is_number(text);
    const INT32_T id = number ? read_id(text) : ALL;
    // Years have numbers for names, so that theirs has to be looked up.
    if (number && (id == ALL || attribute.type != TP_FILTER_TYPE_YEAR))
        return id;
    const std::vector<NAMED_ID_T> &list = list_of(attribute, cid);
    const NAMED_ID_T *found = find_name(list, text);
    if (found == nullptr && number)
        found = find_id_in(list, id);
    if (found == nullptr)
        fail_without_name(attribute, cid, text, list);
    return found->id;
}

std::string NAME_BOOK_T::name_of(const ATTRIBUTE_T &attribute, INT32_T cid, INT32_T id) {
    try {
        const NAMED_ID_T *found = find_id_in(list_of(attribute, cid), id);
        return found == nullptr ? std::to_string(id) : found->name;
    } catch (const CLIENT_ERROR_T &) {
        lists[{attribute.type, cid}].clear(); // a list that isn't to be had is not asked for again
        return std::to_string(id);
    }
}

} // namespace client
