// Watches the C heap blocks of one shared object: counts them, and makes a chosen allocation fail.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace recorder {

// Redirects the imports of malloc, calloc, realloc, strdup and free of the loaded object with this file name. Only that
// object is affected, whatever allocator (a sanitizer's, valgrind's) stands behind. Returns the number of imports
// redirected.
int WatchAllocations(const std::string& file_name);

// A zeroed block of the test's own. Blocks of both origins may be freed by either side.
void* Allocate(size_t size);

// False when the block is not a live one of either side.
bool Free(void* block);

bool IsLive(const void* block);
size_t LiveBlocks();  // of the watched object

// Sizes of the watched object's requests since the last reset, the failed ones included.
const std::vector<size_t>& Requests();

// Frees of blocks that neither side had allocated.
size_t StrayFrees();

// The nth next request of the watched object fails; 0 for none.
void FailRequest(size_t n);

void ResetRequests();

}  // namespace recorder
