// The allocation functions of memory_test, in a source of their own: a compiler that sees both
// takes their pairs apart.
#include <cstdlib>
#include <new>

/// How many allocations succeed before one fails; none fails below zero.
long g_allocations_left = -1;

void* operator new(std::size_t size) {
  void* const memory = g_allocations_left-- == 0 ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
