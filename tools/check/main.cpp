// gloamhold-check [DIR]: checks a data directory with the game's own loaders and prints one line
// per problem. Exit status: 0 clean, 1 problems found, 2 bad arguments.
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "assets/registry.h"
#include "checks.h"
#include "report.h"
#include "startup_check.h"

namespace fs = std::filesystem;

namespace {

const char* const USAGE =
    "usage: gloamhold-check [DIR]\n"
    "Loads the data directory DIR (default: gloamhold_data) with the game's own loaders, in the game's\n"
    "start-up order, and prints one line per problem: \"<file>[:<line>]: <message>\".\n"
    "Exit status: 0 no problems, 1 problems found, 2 bad arguments.\n";

int bad_arguments(const char* message, const std::string& detail)
{
    fprintf(stderr, "gloamhold-check: %s%s\n%s", message, detail.c_str(), USAGE);
    return 2;
}

// The game opens its data as "gloamhold_data/..." from the working directory: work beside DIR,
// or, when DIR has another name, beside a link of that name in a folder of the checker's own.
bool work_beside(const fs::path& directory, fs::path* link_folder)
{
    std::error_code error;
    if (directory.filename() == DATA_ROOT) {
        if (directory.has_parent_path())
            fs::current_path(directory.parent_path(), error);
        return !error;
    }
    fs::path target = fs::absolute(directory, error);
    *link_folder = fs::temp_directory_path(error) / ("gloamhold-check-" + std::to_string(getpid()));
    fs::create_directories(*link_folder, error);
    if (!error)
        fs::create_directory_symlink(target, *link_folder / DATA_ROOT, error);
    if (!error)
        fs::current_path(*link_folder, error);
    return !error;
}

} // namespace

int main(int argc, char** argv)
{
    std::string directory = DATA_ROOT;
    if (argc > 2)
        return bad_arguments("too many arguments", "");
    if (argc == 2) {
        if (strcmp(argv[1], "-h") == 0 || strcmp(argv[1], "--help") == 0) {
            fputs(USAGE, stdout);
            return 0;
        }
        if (argv[1][0] == '-')
            return bad_arguments("unknown option ", argv[1]);
        directory = argv[1];
    }
    while (directory.size() > 1 && directory.back() == '/')
        directory.pop_back();
    std::error_code error;
    if (!fs::is_directory(directory, error))
        return bad_arguments("not a directory: ", directory);

    report_show_data_root_as(directory);
    fs::path link_folder;
    if (!work_beside(directory, &link_folder)) {
        fprintf(stderr, "gloamhold-check: cannot reach %s as the game's gloamhold_data\n", directory.c_str());
        return 2;
    }
    check_startup();
    check_unnamed_files();
    check_dialogue_variables();
    if (!link_folder.empty())
        fs::remove_all(link_folder, error);

    fflush(stdout);
    int32_t problems = problem_count();
    std::string stop = startup_stop();
    if (problems == 0)
        fprintf(stderr, "gloamhold-check: %s: no problems\n", directory.c_str());
    else
        fprintf(stderr, "gloamhold-check: %s: %d problem%s%s%s\n", directory.c_str(), static_cast<int>(problems),
                problems == 1 ? "" : "s", stop.empty() ? "" : "; the game stops at start-up at ",
                shown_path(stop).c_str());
    return problems == 0 ? 0 : 1;
}
