// The process entry of gloamhold.exe.
#include "hosts/win32/win32_shell.h"

int WINAPI WinMain(HINSTANCE instance, HINSTANCE previous_instance, LPSTR command_line, int show_command)
{
    return win_main(instance, previous_instance, command_line, show_command);
}
