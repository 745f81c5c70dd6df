#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/FISException.h"
#include <algorithm>
#include <istream>


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const END_OF_OCTET_STRING = "Unexpected end of stream while parsing octet string";
}


BitStreamReader::BitStreamReader(std::istream& in):
	_pStream(&in),
	_cachedBits(0),
	_bitOffset(0),
	_pBuffer(0),
	_pLimit(0),
	_pOwnBuffer(new unsigned char[BUFFER_SIZE + 8]()),
	_octetsBefore(0),
	_overrun(false)
{
	// Eight spare octets behind the buffer let peekBits() load a whole
	// 64-bit word at any buffered position; their content is shifted out.
	_pBuffer = _pOwnBuffer;
	_pLimit = _pOwnBuffer + BUFFER_SIZE + 8;
}


BitStreamReader::BitStreamReader(std::istream& in, const char* pPending, std::size_t pendingSize):
	BitStreamReader(in)
{
	poco_assert(pendingSize <= static_cast<std::size_t>(BUFFER_SIZE));
	if (pendingSize > 0) std::memcpy(_pOwnBuffer, pPending, pendingSize);
	_cachedBits = static_cast<UInt64>(pendingSize) * 8;
}


BitStreamReader::BitStreamReader(const char* pData, std::size_t size):
	_pStream(0),
	_cachedBits(static_cast<UInt64>(size) * 8),
	_bitOffset(0),
	_pBuffer(reinterpret_cast<const unsigned char*>(pData)),
	_pLimit(reinterpret_cast<const unsigned char*>(pData) + size),
	_pOwnBuffer(0),
	_octetsBefore(0),
	_overrun(false)
{
}


BitStreamReader::~BitStreamReader()
{
	delete [] _pOwnBuffer;
}


bool BitStreamReader::read(unsigned long& val, int numBits)
{
	poco_assert(checkInputParams(Utility::SIZEOFINT64INBIT, numBits));
	if (numBits <= 32)
	{
		unsigned int low;
		bool ok = read(low, numBits);
		val = low;
		return ok;
	}
	unsigned int high;
	unsigned int low;
	bool ok = read(high, numBits - 32);
	ok = read(low, 32) && ok;
	val = (static_cast<unsigned long>(high) << 32) | low;
	return ok;
}


bool BitStreamReader::read(std::string& str, std::size_t length)
{
	str.clear();
	if (length == 0) return true;
	if (bitPos() != 0) return readUnaligned(str, length);

	// Copy what the buffer holds and refill for the rest, so that nothing is
	// reserved beyond what the input has actually delivered.
	std::size_t available = static_cast<std::size_t>(cachedBits() / 8);
	std::size_t count = std::min(available, length);
	str.assign(reinterpret_cast<const char*>(curByte()), count);
	_bitOffset += static_cast<Int64>(count) * 8;
	std::size_t remaining = length - count;
	while (remaining > 0)
	{
		if (_pStream && !_overrun)
		{
			refillBuffer();
			available = static_cast<std::size_t>(cachedBits() / 8);
		}
		else available = 0;
		if (available == 0)
		{
			markOverrun(static_cast<Int64>(remaining) * 8);
			throw FISParseException(END_OF_OCTET_STRING);
		}
		count = std::min(available, remaining);
		str.append(reinterpret_cast<const char*>(curByte()), count);
		_bitOffset += static_cast<Int64>(count) * 8;
		remaining -= count;
	}
	return true;
}


bool BitStreamReader::readUnaligned(std::string& str, std::size_t length)
{
	const int shift = bitPos();
	while (length > 0)
	{
		if (!ensure(Utility::SIZEOFCHARINBIT))
		{
			markOverrun(static_cast<Int64>(length) * 8);
			return false;
		}
		// Every output octet takes the tail of one input octet and the head of
		// the next; cachedBits() >= 8 * count keeps both inside the buffer.
		const std::size_t count = std::min(length, static_cast<std::size_t>(cachedBits() / 8));
		const std::size_t first = str.size();
		str.resize(first + count);
		char* pOut = &str[first];
		const unsigned char* p = curByte();
		for (std::size_t i = 0; i < count; ++i)
		{
			pOut[i] = static_cast<char>((p[i] << shift) | (p[i + 1] >> (8 - shift)));
		}
		_bitOffset += static_cast<Int64>(count) * 8;
		length -= count;
	}
	return true;
}


void BitStreamReader::giveBack(std::string& kept)
{
	kept.clear();
	poco_assert(bitPos() == 0);
	const Int64 unread = cachedBits() / 8;
	if (!_pStream || unread <= 0) return;
	// A read that met the end of the stream left it failed; a seek needs a
	// good stream, and a stream that cannot seek is left as it was.
	const std::ios::iostate state = _pStream->rdstate();
	_pStream->clear();
	_pStream->seekg(-static_cast<std::streamoff>(unread), std::ios::cur);
	if (!_pStream->fail())
	{
		_cachedBits -= static_cast<UInt64>(unread) * 8;
		return;
	}
	_pStream->clear(state);
	kept.assign(reinterpret_cast<const char*>(curByte()), static_cast<std::size_t>(unread));
}


bool BitStreamReader::eof() const
{
	return _overrun || (_cachedBits == 0 && (!_pStream || _pStream->eof()));
}


void BitStreamReader::refillBuffer()
{
	poco_assert(_pStream);
	_octetsBefore += static_cast<std::size_t>(_cachedBits / 8);
	std::size_t count = readFromStream(reinterpret_cast<char*>(_pOwnBuffer), BUFFER_SIZE, true);
	_cachedBits = static_cast<UInt64>(count) * 8;
	_bitOffset = 0;
}


void BitStreamReader::refillBufferIfLessThan(int numBits)
{
	if (cachedBits() < numBits) fill(numBits);
}


bool BitStreamReader::fill(int numBits)
	/// The slow path of ensure(): waits for the stream until numBits bits
	/// are buffered or it ends. A memory block has nothing more to give.
{
	if (!_pStream || _overrun) return false;
	while (cachedBits() < numBits && take(true))
	{
	}
	return cachedBits() >= numBits;
}


void BitStreamReader::takeAtHand(int needed)
	/// window()'s slow path: what the stream has at hand, and more only as
	/// far as needed.
{
	if (_overrun) return;
	take(false);
	while (cachedBits() < needed && take(true))
	{
	}
}


bool BitStreamReader::take(bool wait)
	/// Moves the unread octets to the front of the buffer and appends what
	/// the stream gives; when wait, it waits for at least one octet. Returns
	/// false when the buffer is full or the stream gave nothing.
{
	poco_assert(_pStream);
	const Int64 unreadBits = cachedBits();
	poco_assert(unreadBits >= 0);
	const std::size_t keep = static_cast<std::size_t>((unreadBits + 7) / 8);
	const std::size_t validOctets = static_cast<std::size_t>(_cachedBits / 8);
	if (keep > 0 && validOctets > keep) std::memmove(_pOwnBuffer, _pOwnBuffer + validOctets - keep, keep);
	_octetsBefore += validOctets - keep;
	_bitOffset = keep > 0 ? _bitOffset % 8 : 0;
	_cachedBits = static_cast<UInt64>(keep) * 8;
	if (keep >= static_cast<std::size_t>(BUFFER_SIZE)) return false;
	const std::size_t count = readFromStream(reinterpret_cast<char*>(_pOwnBuffer) + keep, BUFFER_SIZE - keep, wait);
	_cachedBits += static_cast<UInt64>(count) * 8;
	return count > 0;
}


std::size_t BitStreamReader::readFromStream(char* pBuf, std::size_t n, bool wait)
	/// What the stream holds already; when that is nothing and wait, one
	/// octet that it waits for and what came with it. istream::read() would
	/// wait for all n octets, which on a pipe may come only with the next
	/// document.
{
	std::streamsize count = _pStream->good() ? _pStream->readsome(pBuf, static_cast<std::streamsize>(n)) : 0;
	if (count == 0 && wait)
	{
		_pStream->read(pBuf, 1);
		count = _pStream->gcount();
		if (count == 1 && n > 1 && _pStream->good()) count += _pStream->readsome(pBuf + 1, static_cast<std::streamsize>(n - 1));
	}
	if (count == 0 && !_pStream->good() && !_pStream->eof())
		throw Ixor::IOException("error reading stream while parsing Fast Infoset document");
	return static_cast<std::size_t>(count);
}


UInt64 BitStreamReader::loadTail(const unsigned char* p) const
	/// Fewer than eight octets are left before the end of a memory block.
{
	UInt64 word = 0;
	const std::size_t count = static_cast<std::size_t>(_pLimit - p);
	for (std::size_t i = 0; i < count; ++i)
	{
		word |= static_cast<UInt64>(p[i]) << (56 - 8 * i);
	}
	return word;
}


void BitStreamReader::markOverrun(Int64 numBits)
{
	_overrun = true;
	_bitOffset += numBits;
}


} } // namespace Ixor::FastInfoset
