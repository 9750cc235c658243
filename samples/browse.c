/* Prints the first page of the cabinet's movies, latest on the shelf first.
 * cc browse.c -o browse $(pkg-config --cflags --libs tavisys) */
#include <stdio.h>
#include <tavisys.h>

int main(void) {
    TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T request = {.pagenum = 1, .pagesize = 10};
    TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *page = NULL;
    if (tavisysapi_get_movie_basic_ext_information(&request, &page) != 0) {
        fputs("the server gives no answer\n", stderr);
        return 1;
    }
    for (TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *node = page->list; node != NULL; node = node->next)
        printf("%d %s\n", node->info->pubtime / 10000, node->info->movname);
    delete_tavisys_basic_movie_ext_information(&page);
    return 0;
}
