#include "support/test_heap.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include "platform/platform.h"

namespace test_heap {

static std::vector<request> requests;
static int countdown; // 0: no failure planned

static bool record(request_kind kind, size_t bytes)
{
    requests.push_back({kind, bytes});
    if (countdown > 0 && --countdown == 0)
        return false;
    return true;
}

void reset()
{
    requests.clear();
    countdown = 0;
}

void fail_request(int n)
{
    countdown = n;
}

const std::vector<request>& log()
{
    return requests;
}

std::vector<size_t> sizes_in_units_of(size_t unit)
{
    std::vector<size_t> units;
    for (const request& r : requests)
        if (r.bytes % unit == 0)
            units.push_back(r.bytes / unit);
    return units;
}

// Every test starts with a clean log and no planned failure.
class reset_before_each_test : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { reset(); }
};

static const bool listener_installed =
    (testing::UnitTest::GetInstance()->listeners().Append(new reset_before_each_test), true);

} // namespace test_heap

void* platform_heap_alloc(size_t bytes)
{
    if (!test_heap::record(test_heap::ALLOC, bytes))
        return nullptr;
    return malloc(bytes ? bytes : 1);
}

void* platform_heap_realloc(void* block, size_t bytes)
{
    if (!test_heap::record(test_heap::REALLOC, bytes))
        return nullptr;
    return realloc(block, bytes ? bytes : 1);
}

int platform_heap_free(void* block)
{
    free(block);
    return 1;
}
