// gloamhold-headless: the game on a virtual clock, for tests, benchmarks and reviewers.
#include "hosts/headless/headless_host.h"

int main(int argc, char** argv)
{
    return headless_main(argc, argv);
}
