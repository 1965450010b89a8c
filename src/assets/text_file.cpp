#include "assets/text_file.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "core/diagnostics.h"
#include "core/text.h"

int text_file_open(text_file* file, const char* path)
{
    if (!reader_open_file(&file->reader, path, TEXT_FILE_BUFFER))
        return 0;
    file->path = path;
    file->line[0] = 0;
    file->have_line = 0;
    // A size that cannot be told bounds nothing: the reads then stop where the file does.
    if (!platform_file_size(file->reader.handle, &file->size))
        file->size = UINT32_MAX;
    return 1;
}

void text_file_close(text_file* file)
{
    reader_close_file(&file->reader);
}

// Where the reader stopped without a line: a blank line ending in a bare line feed (it consumed
// one) stops the game's reading as surely as the end of the file does.
static void report_stopped_before(const text_file* file, const char* what)
{
    if (file->reader.lines_ended >= file->reader.line && file->reader.line > 0)
        report(file->path, file->reader.line,
               "blank line ending in a bare line feed: the game stops reading the file here, before %s", what);
    else
        report(file->path, 0, "the file ends before %s", what);
}

int text_file_holds(text_file* file, int64_t things, const char* what)
{
    int64_t most = (static_cast<int64_t>(file->size) + 1) / 2;
    if (things <= most)
        return 1;
    return text_file_report(file, "expected at most %lld %s (a line each in a file of %u bytes), found \"%s\"",
                            static_cast<long long>(most), what, file->size, file->line);
}

int text_file_count(text_file* file, const char* keyword, int32_t* count)
{
    *count = 0;
    // A negative count would size nothing sensible: it fails like a malformed one.
    if (read_count_line(&file->reader, file->line, TEXT_FILE_LINE_CAPACITY, keyword, count) && *count >= 0) {
        if (text_file_holds(file, *count, "entries"))
            return 1;
        *count = 0;
        return 0;
    }
    file->have_line = file->line[0] != 0; // a content line is never empty
    size_t length = strlen(keyword);
    if (!file->have_line)
        text_file_expected(file, "the header \"%s<count>\"", keyword);
    else if (strncmp(file->line, keyword, length) != 0)
        text_file_report(file, "expected the header \"%s<count>\" here, found \"%s\"", keyword, file->line);
    else if (*count < 0)
        text_file_report(file, "negative count %d", static_cast<int>(*count));
    else
        text_file_report(file, "\"%s\" is not a count", file->line + length);
    return 0;
}

// Converts the line just read (when there was one) with the caller's arguments.
#if defined(__GNUC__)
__attribute__((format(scanf, 4, 0)))
#endif
static int scan_line(int have_line, const char* line, int wanted, const char* format, va_list arguments)
{
    return have_line && vsscanf(line, format, arguments) == wanted;
}

int text_file_scan(text_file* file, int wanted, const char* format, ...)
{
    file->have_line = read_content_line(&file->reader, file->line, TEXT_FILE_LINE_CAPACITY);
    va_list arguments;
    va_start(arguments, format);
    int ok = scan_line(file->have_line, file->line, wanted, format, arguments);
    va_end(arguments);
    return ok;
}

int text_file_scan_next(text_file* file, int wanted, const char* format, ...)
{
    file->have_line = reader_read_line(&file->reader, file->line, TEXT_FILE_LINE_CAPACITY) != 0;
    va_list arguments;
    va_start(arguments, format);
    int ok = scan_line(file->have_line, file->line, wanted, format, arguments);
    va_end(arguments);
    return ok;
}

int text_file_expected(text_file* file, const char* what_format, ...)
{
    if (!diagnostics) {
        ++diagnostics_reported;
        return 0;
    }
    char what[DIAGNOSTIC_MESSAGE_CAPACITY];
    va_list arguments;
    va_start(arguments, what_format);
    string_vprintf(what, sizeof what, what_format, arguments);
    va_end(arguments);
    if (file->have_line)
        text_file_report(file, "expected %s, found \"%s\"", what, file->line);
    else
        report_stopped_before(file, what);
    return 0;
}

int text_file_report(text_file* file, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    report_v(file->path, file->reader.line, format, arguments);
    va_end(arguments);
    return 0;
}
