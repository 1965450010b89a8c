#include "data_lines.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "core/numbers.h"
#include "report.h"

int data_lines_open(data_lines* file, const std::string& path)
{
    file->path = path;
    file->number = 0;
    file->continues = false;
    file->stopped = false;
    file->stopped_early = false;
    file->line[0] = 0;
    return reader_open_file(&file->reader, path.c_str(), TEXT_FILE_BUFFER);
}

void data_lines_close(data_lines* file)
{
    reader_close_file(&file->reader);
}

bool read_data_file(const std::string& path, bool (*read)(data_lines* file))
{
    data_lines file;
    if (!data_lines_open(&file, path)) {
        report_problem(path, 0, "cannot be opened");
        return false;
    }
    bool readable = read(&file);
    data_lines_close(&file);
    return readable;
}

// After an empty line: whether anything but line breaks and blanks is left to read.
static bool more_content_follows(file_reader* reader)
{
    char c;
    while (reader_read(reader, &c, 1, 1))
        if (c != '\n' && c != '\r' && c != ' ' && c != '\t')
            return true;
    return false;
}

int data_lines_next(data_lines* file)
{
    if (file->stopped)
        return 0;
    if (!file->continues)
        ++file->number;
    int32_t stored = reader_read_line(&file->reader, file->line, TEXT_FILE_LINE_CAPACITY);
    bool was_continued = file->continues;
    file->continues = stored == TEXT_FILE_LINE_CAPACITY - 1;
    if (file->continues && !was_continued)
        report_problem(file->path, file->number,
                       "line longer than %d characters: the game reads the rest as a line of its own",
                       TEXT_FILE_LINE_CAPACITY - 2);
    if (stored > 0)
        return 1;
    file->stopped = true;
    if (more_content_follows(&file->reader)) {
        file->stopped_early = true;
        report_problem(file->path, file->number,
                       "blank line ending in a bare line feed: the game stops reading the file here");
    }
    return 0;
}

int data_lines_next_content(data_lines* file)
{
    while (data_lines_next(file))
        if (file->line[0] != 0 && file->line[0] != '#')
            return 1;
    return 0;
}

void report_ended_before(const data_lines* file, const std::string& what)
{
    if (!file->stopped_early)
        report_problem(file->path, 0, "the file ends before %s", what.c_str());
}

int read_header(data_lines* file, const char* keyword, int32_t* count)
{
    std::string header = std::string("the header \"") + keyword + "<count>\"";
    if (!data_lines_next_content(file)) {
        report_ended_before(file, header);
        return 0;
    }
    size_t length = strlen(keyword);
    if (strncmp(file->line, keyword, length) != 0) {
        report_problem(file->path, file->number, "expected %s here, found \"%s\"", header.c_str(), file->line);
        return 0;
    }
    // As the game reads a count: from right after the keyword, within the rest of the line.
    if (!parse_int(file->line + length, static_cast<int32_t>(TEXT_FILE_LINE_CAPACITY - length), count)) {
        report_problem(file->path, file->number, "\"%s\" is not a count", file->line + length);
        return 0;
    }
    if (*count < 0) {
        report_problem(file->path, file->number, "negative count %d", static_cast<int>(*count));
        return 0;
    }
    return 1;
}

int scan_data_line(data_lines* file, bool strict, const std::string& what, int wanted, const char* format, ...)
{
    int have_line = strict ? data_lines_next(file) : data_lines_next_content(file);
    if (!have_line) {
        report_ended_before(file, what);
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    int converted = vsscanf(file->line, format, arguments);
    va_end(arguments);
    if (converted == wanted)
        return 1;
    report_problem(file->path, file->number, "expected %s, found \"%s\"", what.c_str(), file->line);
    return 0;
}
