/* The library as a C program sees it: every header through one, the shared library linked. */
#include <string.h>

#include "tavisys.h"

int main(void) {
    TP_TAVISYS_SYSTEM_INFORMATION_T *info = create_tavisys_system_information(2, 30);
    PVOID body = NULL;
    INT32_T length = 0;
    int failed = encode_tavisys_system_information_to_message(info, &body, &length) != 0 || length != 8;
    delete_tavisys_system_information(&info);
    failed = failed || info != NULL;
    failed = failed || decode_tavisys_system_information_from_message(body, length, &info) != 8;
    failed = failed || info->hdnum != 2 || info->movnum != 30;
    show_tavisys_system_information(info);
    delete_tavisys_system_information(&info);
    safe_free(body);

    INT8_T text[] = "  TV-1\n";
    failed = failed || strcmp("TV-1", strip_char_space_and_return_from_string(text)) != 0;
    failed = failed || sizeof(TP_FILTER_TYPE_E) != 4 || sizeof(TRLV_MESSAGE_HEAD) != 12;
    return failed;
}
