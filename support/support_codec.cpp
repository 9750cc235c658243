#include "support_codec.h"

#include "support/codec_primitive.h"

using namespace tavisys;

INT32_T calc_codec_int_data_length(void) {
    return INTEGER_LENGTH;
}

INT32_T calc_codec_ptr_data_length(const INT8_T *string) {
    const int64_t length = string_length(string);
    return length > LONGEST_BODY ? -1 : static_cast<INT32_T>(length);
}

INT32_T encode_int_data_to_buffer(INT32_T value, PVOID buffer, INT32_T left) {
    if (buffer == nullptr)
        return -1;
    return encode_integer(value, static_cast<INT8_T *>(buffer), left);
}

INT32_T encode_ptr_data_to_buffer(const INT8_T *string, PVOID buffer, INT32_T left) {
    if (buffer == nullptr)
        return -1;
    return encode_string(string, static_cast<INT8_T *>(buffer), left);
}

INT32_T decode_int_data_from_buffer(const void *buffer, INT32_T left, INT32_T *value) {
    if (buffer == nullptr || value == nullptr)
        return -1;
    return decode_integer(static_cast<const INT8_T *>(buffer), left, value);
}

INT32_T decode_ptr_data_from_buffer(const void *buffer, INT32_T left, INT8_T **string, INT32_T longest) {
    if (buffer == nullptr || string == nullptr)
        return -1;
    return decode_string(static_cast<const INT8_T *>(buffer), left, string, longest);
}
