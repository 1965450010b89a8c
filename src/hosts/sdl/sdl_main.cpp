// gloamhold: the game on Linux (and other systems SDL runs on).
#include "hosts/sdl/sdl_host.h"

int main()
{
    return sdl_host_main();
}
