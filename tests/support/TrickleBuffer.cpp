#include "TrickleBuffer.h"
#include "Poco/Bugcheck.h"
#include <algorithm>


namespace TestSupport {


TrickleBuffer::TrickleBuffer(const char* pData, std::size_t size, std::vector<std::size_t> chunkSizes):
	_pNext(pData),
	_pEnd(pData + size),
	_chunkSizes(std::move(chunkSizes))
{
	poco_assert(!_chunkSizes.empty());
	poco_assert(*std::min_element(_chunkSizes.begin(), _chunkSizes.end()) > 0);
	setg(nullptr, nullptr, nullptr);
}


TrickleBuffer::int_type TrickleBuffer::underflow()
{
	if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
	if (_pNext == _pEnd) return traits_type::eof();
	const std::size_t wanted = _chunkSizes[_chunks++ % _chunkSizes.size()];
	const std::size_t count = std::min(wanted, static_cast<std::size_t>(_pEnd - _pNext));
	char* pBegin = const_cast<char*>(_pNext);
	setg(pBegin, pBegin, pBegin + count);
	_pNext += count;
	return traits_type::to_int_type(*pBegin);
}


} // namespace TestSupport
