//
// TrickleBuffer.h
//
// An input stream buffer over memory that hands out its octets a few at a
// time, as a pipe or a socket does.
//


#ifndef FastInfoset_TrickleBuffer_INCLUDED
#define FastInfoset_TrickleBuffer_INCLUDED


#include <cstddef>
#include <streambuf>
#include <vector>


namespace TestSupport {


class TrickleBuffer: public std::streambuf
	/// Each underflow makes the next chunk available: chunk sizes are taken
	/// from a list in turn, the list starting over when it is used up. The
	/// buffer cannot seek, so a reader that read too far must keep what it
	/// took instead of giving it back.
	///
	/// The memory belongs to the caller and must outlive the buffer.
{
public:
	TrickleBuffer(const char* pData, std::size_t size, std::vector<std::size_t> chunkSizes);
		/// chunkSizes holds at least one size, each at least 1.

protected:
	int_type underflow() override;

private:
	const char*              _pNext;
	const char*              _pEnd;
	std::vector<std::size_t> _chunkSizes;
	std::size_t              _chunks = 0;
};


} // namespace TestSupport


#endif // FastInfoset_TrickleBuffer_INCLUDED
