#include "dbdata_sharedir.h"

#include <cstdint>
#include <cstdio>
#include <tuple>

#include "dbdata_position/position.h"
#include "support/show.h"

using namespace tavisys;

namespace {

struct SHAREDIR_T {
    using RECORD_T = DBDATA_SHAREDIR_INFORMATION_T;
    using NODE_T = DBDATA_SHAREDIR_INFORMATION_LIST_T;
    static constexpr auto KEY = &RECORD_T::sharedir;
    static constexpr auto STRINGS = std::tuple{&RECORD_T::sharedir};
    static constexpr auto LEFT = std::tuple{};
    static constexpr auto DELETE_BELOW = delete_dbdata_movie_information_list;
    static constexpr auto RELEASE_BELOW = release_dbdata_movie_information_list;
    static constexpr auto SHOW_BELOW = show_dbdata_movie_information_list;

    static void show(const RECORD_T &directory, INT32_T indent) {
        show_indent(indent);
        printf("共享目录: %s\n", shown(directory.sharedir));
    }
};
constexpr auto PATH = SHAREDIR_T::KEY;

// Callers rely on two things: directories of the same first byte, as all absolute paths are, stay in the
// order in which they were added, and a byte of UTF-8 text counts as negative, so that a Chinese name
// stands before every path in ASCII. char is not signed everywhere.
INT32_T compare_paths(const INT8_T *left, const INT8_T *right) {
    if (safe_strcmp(left, right) == 0)
        return 0;
    const bool is_greater = left != nullptr && static_cast<int8_t>(*left) > static_cast<int8_t>(*right);
    return is_greater ? 1 : -1;
}

} // namespace

DBDATA_SHAREDIR_INFORMATION_T *create_dbdata_sharedir_information(const INT8_T *sharedir) {
    return create_record<SHAREDIR_T>(sharedir).release();
}

void delete_dbdata_sharedir_information(DBDATA_SHAREDIR_INFORMATION_T **info) {
    release_record<SHAREDIR_T>(info);
}

DBDATA_SHAREDIR_INFORMATION_LIST_T *
create_dbdata_sharedir_information_list_node(DBDATA_SHAREDIR_INFORMATION_T *info,
                                             DBDATA_MOVIE_INFORMATION_LIST_T *list, INT32_T movies) {
    return create_position<SHAREDIR_T>(info, list, movies);
}

RTSTATUS add_node_to_dbdata_sharedir_information_list(DBDATA_SHAREDIR_INFORMATION_LIST_T **list,
                                                      DBDATA_SHAREDIR_INFORMATION_LIST_T *node) {
    return head_or_join<PATH>(list, node, [=] {
        return insert_in_order(list, node, [path = text_of<PATH>(node)](const auto *other) {
            return compare_paths(text_of<PATH>(other), path);
        });
    });
}

DBDATA_SHAREDIR_INFORMATION_LIST_T *
found_node_from_dbdata_sharedir_information_list_by_sharedir(const DBDATA_SHAREDIR_INFORMATION_LIST_T *list,
                                                             const INT8_T *sharedir) {
    return find_by<PATH>(list, sharedir);
}

DBDATA_SHAREDIR_INFORMATION_LIST_T *
take_node_from_dbdata_sharedir_information_list_by_sharedir(DBDATA_SHAREDIR_INFORMATION_LIST_T **list,
                                                            const INT8_T *sharedir) {
    return take_by<PATH>(list, sharedir);
}

void delete_dbdata_sharedir_information_list_node(DBDATA_SHAREDIR_INFORMATION_LIST_T **node) {
    delete_position<SHAREDIR_T>(node);
}

void delete_dbdata_sharedir_information_list(DBDATA_SHAREDIR_INFORMATION_LIST_T **list) {
    delete_position_list<SHAREDIR_T>(list);
}

void release_dbdata_sharedir_information_list(DBDATA_SHAREDIR_INFORMATION_LIST_T **list) {
    release_position_list<SHAREDIR_T>(list);
}

INT32_T
dbdata_get_number_from_dbdata_sharedir_information_list(const DBDATA_SHAREDIR_INFORMATION_LIST_T *list) {
    return count_with<PATH>(list);
}

void show_dbdata_sharedir_information_list(const DBDATA_SHAREDIR_INFORMATION_LIST_T *list, INT32_T indent) {
    show_position_list<SHAREDIR_T>(list, indent);
}
