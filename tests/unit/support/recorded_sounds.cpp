#include "support/recorded_sounds.h"

#include "audio/mixer.h"

namespace {

std::vector<int32_t> started;

} // namespace

int play_sound(int32_t sound)
{
    started.push_back(sound);
    return 1;
}

const std::vector<int32_t>& recorded_sounds()
{
    return started;
}

void clear_recorded_sounds()
{
    started.clear();
}
