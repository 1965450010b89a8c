// The unit tests' heap: the C allocator, with a log of what was asked for (so that growth steps
// can be checked) and failures on demand (so that out-of-memory paths can be taken).
#pragma once

#include <stddef.h>

#include <vector>

namespace test_heap {

enum request_kind { ALLOC, REALLOC };

struct request {
    request_kind kind;
    size_t bytes;
};

// Forgets the log and any planned failure.
void reset();
// The n-th allocation or re-allocation from now (1 = the next) fails.
void fail_request(int n);
// Every allocation and re-allocation since the last reset, in order.
const std::vector<request>& log();
// The byte sizes of the log's requests that are whole multiples of `unit`, in order.
std::vector<size_t> sizes_in_units_of(size_t unit);

} // namespace test_heap
