#include "report.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "assets/registry.h"

static std::string data_root_shown = DATA_ROOT;
static int32_t problems;

void report_show_data_root_as(const std::string& shown_root)
{
    data_root_shown = shown_root;
}

std::string shown_path(const std::string& game_path)
{
    size_t root_length = strlen(DATA_ROOT);
    if (game_path.compare(0, root_length, DATA_ROOT) == 0)
        return data_root_shown + game_path.substr(root_length);
    return game_path;
}

#if defined(__GNUC__)
__attribute__((format(printf, 1, 0)))
#endif
static std::string vtext_of(const char* format, va_list arguments)
{
    char text[1024];
    vsnprintf(text, sizeof text, format, arguments);
    return text;
}

std::string text_of(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string text = vtext_of(format, arguments);
    va_end(arguments);
    return text;
}

void report_problem(const std::string& game_path, int32_t line, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string message = vtext_of(format, arguments);
    va_end(arguments);
    std::string where = shown_path(game_path);
    if (line > 0)
        printf("%s:%d: %s\n", where.c_str(), static_cast<int>(line), message.c_str());
    else
        printf("%s: %s\n", where.c_str(), message.c_str());
    ++problems;
}

void report_at_reference(const data_reference& from, const std::string& path, const std::string& message)
{
    if (from.path.empty())
        report_problem(path, 0, "%s", message.c_str());
    else
        report_problem(from.path, from.line, "%s", message.c_str());
}

int32_t problem_count()
{
    return problems;
}
