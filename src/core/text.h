// Splitting and bounded formatted printing.
#pragma once

#include <stdarg.h>
#include <stddef.h>

// The result codes of string_printf besides 0 (the text fitted).
enum : unsigned {
    PRINTF_TRUNCATED = 0x8007007Au,         // the text was cut to capacity - 1 characters
    PRINTF_INVALID_CAPACITY = 0x80070057u,  // capacity 0 or above 0x7FFFFFFF
};

// Splits at the first `separator` within the first `text_capacity` bytes. Both parts must fit
// their buffers with their NUL (shorter than the capacity), else 0 and nothing written.
int split_at(const char* text, size_t text_capacity, char separator, char* left, size_t left_capacity,
             char* right, size_t right_capacity);

// 1 when the two texts are equal when ASCII letters are compared without regard to case.
int text_equal_ignoring_case(const char* a, const char* b);

// vsnprintf into at most capacity - 1 characters, always NUL-terminated. 0 when the text fitted,
// PRINTF_TRUNCATED when it was cut, PRINTF_INVALID_CAPACITY for a capacity of 0 (nothing written)
// or above 0x7FFFFFFF (an empty string written).
unsigned string_printf(char* buffer, size_t capacity, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 3, 4)))
#endif
    ;

// string_printf with the arguments already gathered.
unsigned string_vprintf(char* buffer, size_t capacity, const char* format, va_list arguments);
