#pragma once

#include <cstdint>

/** Heap blocks asked for in this process since its start, by whatever room or library. */
uint64_t GetAllocationCount();
