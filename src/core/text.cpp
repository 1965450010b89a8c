#include "core/text.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

int split_at(const char* text, size_t text_capacity, char separator, char* left, size_t left_capacity,
             char* right, size_t right_capacity)
{
    // The search deliberately covers the whole buffer, not only the string: a separator left
    // behind a NUL by an earlier, longer text counts.
    const char* found = static_cast<const char*>(memchr(text, separator, text_capacity));
    if (!found)
        return 0;
    size_t left_length = static_cast<size_t>(found - text);
    size_t right_length = strnlen(found + 1, text_capacity - left_length - 1);
    if (left_length >= left_capacity || right_length >= right_capacity)
        return 0;
    memcpy(left, text, left_length);
    left[left_length] = 0;
    memcpy(right, found + 1, right_length);
    right[right_length] = 0;
    return 1;
}

static char lower_case(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

int text_equal_ignoring_case(const char* a, const char* b)
{
    for (;; ++a, ++b) {
        if (lower_case(*a) != lower_case(*b))
            return 0;
        if (*a == 0)
            return 1;
    }
}

unsigned string_vprintf(char* buffer, size_t capacity, const char* format, va_list arguments)
{
    if (capacity == 0)
        return PRINTF_INVALID_CAPACITY;
    if (capacity > 0x7FFFFFFFu) {
        buffer[0] = 0;
        return PRINTF_INVALID_CAPACITY;
    }
    int written = vsnprintf(buffer, capacity, format, arguments);
    if (written < 0 || static_cast<size_t>(written) >= capacity) {
        // Cut (or an encoding error): whatever was formatted stays, terminated in the last byte
        // even by runtimes whose vsnprintf leaves a full buffer unterminated.
        buffer[capacity - 1] = 0;
        return PRINTF_TRUNCATED;
    }
    return 0;
}

unsigned string_printf(char* buffer, size_t capacity, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    unsigned result = string_vprintf(buffer, capacity, format, arguments);
    va_end(arguments);
    return result;
}
