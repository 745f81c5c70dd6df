// Allocations per document are only worth reporting if every form of
// operator new is counted, in the library as in the executable.


#include "AllocationCounter.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include <gtest/gtest.h>
#include <functional>
#include <new>
#include <string>


namespace {


struct alignas(64) Aligned
{
	char octets[64];
};


// A pair of new and delete that nothing observes may be left out by the
// compiler; storing the pointer keeps it.
void* volatile kept = nullptr;


template <class T>
T* keep(T* p)
{
	kept = p;
	return p;
}


struct FormCase
{
	const char* name;
	std::function<void()> allocateAndFree;
};


TEST(AllocationCounterTest, CountsEveryFormOfOperatorNewOnce)
{
	const FormCase CASES[] =
	{
		{"new",                  [] { delete keep(new int(1)); }},
		{"new[]",                [] { delete[] keep(new int[3]); }},
		{"nothrow new",          [] { delete keep(new (std::nothrow) int(1)); }},
		{"nothrow new[]",        [] { delete[] keep(new (std::nothrow) int[3]); }},
		{"aligned new",          [] { delete keep(new Aligned); }},
		{"aligned new[]",        [] { delete[] keep(new Aligned[3]); }},
		{"aligned nothrow new",  [] { delete keep(new (std::nothrow) Aligned); }},
		{"zero octets",          [] { ::operator delete(keep(::operator new(0))); }},
		{"a string's buffer",    [] { std::string s(100, 'x'); keep(&s[0]); }},
	};
	for (const FormCase& c: CASES)
	{
		SCOPED_TRACE(c.name);
		const std::uint64_t before = Bench::allocationCount();
		c.allocateAndFree();
		EXPECT_EQ(1u, Bench::allocationCount() - before);
	}
}


TEST(AllocationCounterTest, AlignedAllocationsAreAligned)
{
	Aligned* pOne = keep(new Aligned);
	Aligned* pMany = keep(new Aligned[3]);
	EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(pOne) % alignof(Aligned));
	EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(pMany) % alignof(Aligned));
	delete pOne;
	delete[] pMany;
}


TEST(AllocationCounterTest, CountsTheAllocationsOfTheLibrary)
{
	// The parser is built inside the shared library, whose calls of
	// operator new must reach the executable's.
	const std::uint64_t before = Bench::allocationCount();
	{
		Ixor::FastInfoset::FastInfosetParser parser;
	}
	EXPECT_GT(Bench::allocationCount() - before, 0u);
}


} // namespace
