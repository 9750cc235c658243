// The questions to the server, each with an owner for its answer. A question that gets none throws a
// CLIENT_ERROR_T that says who is to blame: nobody there, a broken exchange, or a server that said no.
#ifndef TAVISYS_CLIENT_SERVER_H
#define TAVISYS_CLIENT_SERVER_H

#include <memory>
#include <string>

#include "tavisys_agent_api.h"

namespace client {

// Calls a family's delete function, which takes the address of the pointer.
template <auto DELETE>
struct DELETE_WITH_T {
    template <class RECORD>
    void operator()(RECORD *record) const {
        DELETE(&record);
    }
};
template <class RECORD, auto DELETE>
using OWNED_T = std::unique_ptr<RECORD, DELETE_WITH_T<DELETE>>;

using VERSION_T = OWNED_T<TP_TAVISYS_VERSION_INFORMATION_T, delete_tavisys_version_information>;
using INFO_T = OWNED_T<TP_TAVISYS_SYSTEM_INFORMATION_T, delete_tavisys_system_information>;
using STATUS_T = OWNED_T<TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T, delete_tavisys_sysrun_status_information>;
using CATEGORIES_T =
    OWNED_T<TP_TAVISYS_CATEGORY_INFORMATION_LIST_T, delete_tavisys_category_information_list>;
using FILTERS_T = OWNED_T<TP_TAVISYS_FILTER_INFORMATION_LIST_T, delete_tavisys_filter_information_list>;
using PAGE_T = OWNED_T<TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T, delete_tavisys_basic_movie_ext_information>;
using MOVIE_T = OWNED_T<TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T, release_tavisys_detail_movie_information>;

using DISKS_T = OWNED_T<TP_TAVISYS_HARDDISK_INFORMATION_LIST_T, release_tavisys_harddisk_information_list>;
using MOVIE_RECORDS_T =
    OWNED_T<TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T, delete_tp_tavisys_dbdata_movie_information_list>;

// A touch screen's page tells of each movie how many videos it has and how long it runs, too.
enum class PAGE_FORM_T { PLAIN, TOUCH };

// Lists may be empty, that is NULL; records never are.
VERSION_T fetch_version();
INFO_T fetch_info();
STATUS_T fetch_status();
std::string fetch_uuid();
CATEGORIES_T fetch_categories();
FILTERS_T fetch_filters(INT32_T cid, INT32_T type);
PAGE_T fetch_page(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request, PAGE_FORM_T form);
MOVIE_T fetch_movie(INT32_T cid, INT32_T mid);
std::string fetch_poster(); // the path of one that the server picks

// The address of a server: of the name, of this machine for an empty one.
std::string find_address(const std::string &server);

// A partition of a disk of the server at an address.
struct POSITION_T {
    std::string host; // dotted IPv4
    std::string disk;
    std::string partition;
};

// These ask the server at that address.
DISKS_T fetch_disks(const std::string &host);
INT32_T fetch_movie_count(const POSITION_T &position);
MOVIE_RECORDS_T fetch_movie_records(const POSITION_T &position);

// A single message to a server or another peer, and what it answers, whatever that is.
enum class HEAD_FORM_T { BINARY, TEXT };

struct RAW_QUESTION_T {
    std::string host; // dotted IPv4
    INT32_T port;
    INT32_T type;
    std::string body;
};

struct RAW_REPLY_T {
    INT32_T type;
    RTSTATUS result;
    INT32_T length;   // of the body, as the head has it
    std::string body; // behind a head of text it may be shorter
};

constexpr std::size_t LONGEST_BODY = 2'147'483'647 - 12; // bytes: behind a head they still have to be counted

RAW_REPLY_T exchange(const RAW_QUESTION_T &question, HEAD_FORM_T form);

// What a result that isn't 0 says.
std::string refusal(RTSTATUS result);

// Calls visit(node) for each node of a list, those without a record left out.
template <class NODE, class VISIT>
void for_each_node(const NODE *list, VISIT visit) {
    for (const NODE *node = list; node != nullptr; node = static_cast<const NODE *>(node->next)) {
        if (node->info != nullptr)
            visit(*node);
    }
}

// Calls visit(record) for each record of a list.
template <class NODE, class VISIT>
void for_each_record(const NODE *list, VISIT visit) {
    for_each_node(list, [&visit](const NODE &node) { visit(*node.info); });
}

} // namespace client

#endif
