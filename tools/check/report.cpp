#include "report.h"

#include <stdio.h>
#include <string.h>

#include <set>
#include <tuple>

#include "assets/registry.h"
#include "core/diagnostics.h"

static std::string data_root_shown = DATA_ROOT;
static std::set<std::tuple<std::string, int32_t, std::string>> printed;

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

// Messages name files too ("no file gloamhold_data/..."): shown the same way.
static std::string shown_message(std::string message)
{
    std::string root = std::string(DATA_ROOT) + "/";
    for (size_t at = message.find(root); at != std::string::npos; at = message.find(root, at + 1)) {
        message.replace(at, root.size(), data_root_shown + "/");
        at += data_root_shown.size();
    }
    return message;
}

// A file that fails to load is loaded again wherever it is named, and reports the same each time.
static void print_problem(const char* file, int32_t line, const char* message)
{
    if (!printed.insert({file, line, message}).second)
        return;
    std::string where = shown_path(file);
    if (line > 0)
        printf("%s:%d: %s\n", where.c_str(), static_cast<int>(line), shown_message(message).c_str());
    else
        printf("%s: %s\n", where.c_str(), shown_message(message).c_str());
}

void report_to_standard_output()
{
    diagnostics = print_problem;
}

int32_t problem_count()
{
    return static_cast<int32_t>(printed.size());
}
