#include "core/diagnostics.h"

#include "core/text.h"

diagnostic_sink diagnostics;
int32_t diagnostics_reported;

void report_v(const char* file, int32_t line, const char* format, va_list arguments)
{
    ++diagnostics_reported;
    if (!diagnostics)
        return;
    char message[DIAGNOSTIC_MESSAGE_CAPACITY];
    string_vprintf(message, sizeof message, format, arguments);
    diagnostics(file, line, message);
}

int report(const char* file, int32_t line, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    report_v(file, line, format, arguments);
    va_end(arguments);
    return 0;
}
