#include "AllocationCounter.h"
#include <atomic>
#include <cstdlib>
#include <new>


namespace {


// The benchmark runs in one thread; a plain load and store keep the count
// free of locked instructions, which would slow down every measurement.
std::atomic<std::uint64_t> allocations(0);


inline void count()
{
	allocations.store(allocations.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}


void* allocate(std::size_t size)
{
	count();
	for (;;)
	{
		if (void* p = std::malloc(size ? size : 1)) return p;
		std::new_handler handler = std::get_new_handler();
		if (!handler) throw std::bad_alloc();
		handler();
	}
}


void* allocateAligned(std::size_t size, std::align_val_t alignment)
{
	count();
	const std::size_t align = static_cast<std::size_t>(alignment);
	// aligned_alloc wants a multiple of the alignment.
	const std::size_t rounded = ((size ? size : 1) + align - 1)/align*align;
	for (;;)
	{
		if (void* p = std::aligned_alloc(align, rounded)) return p;
		std::new_handler handler = std::get_new_handler();
		if (!handler) throw std::bad_alloc();
		handler();
	}
}


template <class Allocate, class... Args>
void* allocateNoThrow(Allocate allocateFunction, Args... args) noexcept
{
	try
	{
		return allocateFunction(args...);
	}
	catch (const std::bad_alloc&)
	{
		return nullptr;
	}
}


} // namespace


namespace Bench {


std::uint64_t allocationCount()
{
	return allocations.load(std::memory_order_relaxed);
}


} // namespace Bench


void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocateNoThrow(allocate, size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocateNoThrow(allocate, size); }
void* operator new(std::size_t size, std::align_val_t alignment) { return allocateAligned(size, alignment); }
void* operator new[](std::size_t size, std::align_val_t alignment) { return allocateAligned(size, alignment); }
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept { return allocateNoThrow(allocateAligned, size, alignment); }
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept { return allocateNoThrow(allocateAligned, size, alignment); }

void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
