// Allocation functions that fail when they are told to. A program that links them uses no others.
#ifndef TESTS_FAILING_ALLOCATIONS_H_
#define TESTS_FAILING_ALLOCATIONS_H_

#include <functional>

namespace test {

enum class Failing { kOne, kOneAndAllThatFollow };

/// Runs `body`, in which operator new fails after `count` allocations; std::bad_alloc ends it
/// there. False when one failed.
bool WithAllocations(long count, Failing failing, const std::function<void()>& body);

}  // namespace test

#endif  // TESTS_FAILING_ALLOCATIONS_H_
