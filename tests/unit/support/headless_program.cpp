#include "support/headless_program.h"

#include <stdlib.h>
#include <sys/wait.h>

#include <filesystem>

void link_shipped_data(const std::string& folder)
{
    // Tests run side by side share a working directory's link: whoever makes it first wins.
    std::error_code already_there;
    std::filesystem::create_directory_symlink(GLOAMHOLD_SOURCE_DIR "/gloamhold_data",
                                              std::filesystem::path(folder) / "gloamhold_data", already_there);
}

// One word for the shell, whatever it holds.
static std::string shell_word(const std::string& word)
{
    std::string out = "'";
    for (char c : word)
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

headless_result run_headless(const std::vector<std::string>& arguments, const std::string& folder)
{
    std::string output_file = folder + "/stdout.txt";
    std::string errors_file = folder + "/stderr.txt";
    std::string command = shell_word(GLOAMHOLD_HEADLESS_PROGRAM);
    for (const std::string& word : arguments)
        command += " " + shell_word(word);
    command += " >" + shell_word(output_file) + " 2>" + shell_word(errors_file);
    int status = std::system(command.c_str());
    headless_result result;
    result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.output = read_all(output_file);
    result.errors = read_all(errors_file);
    return result;
}
