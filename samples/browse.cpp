// The same for C++, from the CMakeLists.txt beside it: find_package(tavisys) and tavisys::tavisys.
#include <cstdio>
#include <memory>
#include <tavisys.h>

namespace {

using PAGE_T = TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T;

struct DELETE_T {
    void operator()(PAGE_T *page) const { delete_tavisys_basic_movie_ext_information(&page); }
};

std::unique_ptr<PAGE_T, DELETE_T> page_of(int number, int size) {
    TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T request{};
    request.pagenum = number;
    request.pagesize = size;
    PAGE_T *page = nullptr;
    tavisysapi_get_movie_basic_ext_information(&request, &page); // leaves it NULL when it fails
    return std::unique_ptr<PAGE_T, DELETE_T>(page);
}

} // namespace

int main() {
    const auto page = page_of(1, 10);
    if (page == nullptr) {
        fputs("the server gives no answer\n", stderr);
        return 1;
    }
    for (const auto *node = page->list; node != nullptr;
         node = static_cast<const TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *>(node->next))
        printf("%d %s\n", node->info->pubtime / 10000, node->info->movname);
}
