//
// AllocationCounter.h
//
// Counts the allocations of the process, so that a measurement can tell
// what one document costs in calls to the allocator.
//


#ifndef FastInfoset_AllocationCounter_INCLUDED
#define FastInfoset_AllocationCounter_INCLUDED


#include <cstdint>


namespace Bench {


std::uint64_t allocationCount();
	/// Calls of any form of the global operator new since the process
	/// started, the library's own included. AllocationCounter.cpp replaces
	/// operator new, so it must be a source of the executable itself (a
	/// static library would not always be linked in). C code that calls
	/// malloc, such as expat, is not counted.


} // namespace Bench


#endif // FastInfoset_AllocationCounter_INCLUDED
