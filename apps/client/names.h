// Names and ids of what movies are filtered by, from the server's lists.
#ifndef TAVISYS_CLIENT_NAMES_H
#define TAVISYS_CLIENT_NAMES_H

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "messages.h"
#include "tavisystype.h"

namespace client {

constexpr INT32_T ALL = 0; // the id that filters nothing

struct ATTRIBUTE_T {
    INT32_T type;     // a TP_FILTER_TYPE_E; 0 for the category, which has a list of its own
    const char *word; // how the command line calls it
    TEXT_T label;     // how people call it
};

constexpr INT32_T CATEGORY_TYPE = 0;
constexpr ATTRIBUTE_T CATEGORY{CATEGORY_TYPE, "category", messages::CATEGORY};
constexpr ATTRIBUTE_T KIND{TP_FILTER_TYPE_KIND, "kind", messages::KIND};
constexpr ATTRIBUTE_T AREA{TP_FILTER_TYPE_AREA, "area", messages::AREA};
constexpr ATTRIBUTE_T YEAR{TP_FILTER_TYPE_YEAR, "year", messages::YEAR};
constexpr ATTRIBUTE_T DIMENSION{TP_FILTER_TYPE_DIMENSION, "dimension", messages::DIMENSION};

// The filter attribute that the command line calls so, which has been checked.
const ATTRIBUTE_T &filter_attribute(const std::string &word);

struct NAMED_ID_T {
    INT32_T id;
    std::string name;
};

// The server's lists, each of them asked for once, when it is first needed. Without a server every id stays
// the number that it is.
enum class NAMES_FROM_T { SERVER, NOWHERE };

class NAME_BOOK_T {
public:
    explicit NAME_BOOK_T(NAMES_FROM_T from = NAMES_FROM_T::SERVER) : from_(from) {}

    // The id of what the user wrote: a name or an id, "全部" or 0 for all, an empty text for nothing said.
    // Throws a CLIENT_ERROR_T for a name that the server doesn't have.
    INT32_T find_id(const ATTRIBUTE_T &attribute, INT32_T cid, const std::string &text);

    // The name of an id, or the id as a number where the server doesn't tell.
    std::string name_of(const ATTRIBUTE_T &attribute, INT32_T cid, INT32_T id);

    using NAMED_IDS_T = std::vector<NAMED_ID_T>;

    // Throws a CLIENT_ERROR_T where the server doesn't tell.
    const NAMED_IDS_T &list_of(const ATTRIBUTE_T &attribute, INT32_T cid);

private:
    NAMES_FROM_T from_;
    std::map<std::pair<INT32_T, INT32_T>, NAMED_IDS_T> lists; // by type and category
};

} // namespace client

#endif
