// gloamhold: the game on Linux (and other systems SDL runs on).
#include "hosts/sdl/sdl_host.h"

int main(int argc, char** argv)
{
    return sdl_host_main(argc, argv);
}
