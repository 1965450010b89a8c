#include "support/test_audio.h"

#include <gtest/gtest.h>

#include "platform/platform.h"

namespace test_audio {

static std::vector<open_request> open_log;
static std::vector<int32_t> started_log;
static bool refusing;
static int depth;
static int deepest;

void reset()
{
    open_log.clear();
    started_log.clear();
    refusing = false;
    depth = 0;
    deepest = 0;
}

void refuse_open()
{
    refusing = true;
}

const std::vector<open_request>& opens()
{
    return open_log;
}

const std::vector<int32_t>& started()
{
    return started_log;
}

int lock_depth()
{
    return depth;
}

int deepest_lock()
{
    return deepest;
}

// Every test starts with a device that opens.
class reset_before_each_test : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { reset(); }
};

static const bool listener_installed =
    (testing::UnitTest::GetInstance()->listeners().Append(new reset_before_each_test), true);

} // namespace test_audio

int platform_audio_open(uint32_t device, uint32_t samples_per_second, uint32_t channels,
                        uint32_t bits_per_sample, uint32_t block_bytes)
{
    test_audio::open_log.push_back({device, samples_per_second, channels, bits_per_sample, block_bytes});
    return test_audio::refusing ? 0 : 1;
}

void platform_audio_lock()
{
    test_audio::depth += 1;
    if (test_audio::depth > test_audio::deepest)
        test_audio::deepest = test_audio::depth;
}

void platform_audio_unlock()
{
    test_audio::depth -= 1;
}

void platform_audio_voice_started(int32_t sound)
{
    test_audio::started_log.push_back(sound);
}
