// Why a data file did not load, said by the loaders as they fail. The game installs no sink and
// stays silent; a tool (the data checker, the headless host) installs one to hear every reason as
// "file:line: what was expected and what was found".
#pragma once

#include <stdarg.h>
#include <stdint.h>

// One diagnostic: the file as the loader opened it, the line (from 1; 0 when the problem has no
// line) and the message, which holds no line break.
typedef void (*diagnostic_sink)(const char* file, int32_t line, const char* message);

// Null in the game. Tools set it before loading and clear it after.
extern diagnostic_sink diagnostics;
// Diagnostics formatted so far, whether or not a sink heard them: a caller compares it before and
// after a nested load to tell whether the nested loader said why it failed.
extern int32_t diagnostics_reported;

enum { DIAGNOSTIC_MESSAGE_CAPACITY = 512 };

// Formats the message and hands it to the sink; nothing is formatted without one. Returns 0, for
// a failing loader to return.
int report(const char* file, int32_t line, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 3, 4)))
#endif
    ;
// report with the arguments already gathered.
void report_v(const char* file, int32_t line, const char* format, va_list arguments)
#if defined(__GNUC__)
    __attribute__((format(printf, 3, 0)))
#endif
    ;
