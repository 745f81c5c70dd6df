#include "Ixor/FastInfoset/BitStreamWriter.h"
#include <ostream>


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const WRITE_ERROR = "error while writing Fast Infoset document to stream";
}


BitStreamWriter::BitStreamWriter(std::ostream& out, bool fillBit):
	_pStream(&out),
	_fillBit(fillBit),
	_cachedBits(0),
	_pending(0),
	_used(0)
{
}


BitStreamWriter::~BitStreamWriter()
{
	// A writer that holds nothing leaves its stream alone: after a finished
	// document the stream may already be gone (a writer restarted on a
	// stream that did not outlive it).
	if (_cachedBits == 0 && _used == 0) return;
	try
	{
		complete();
	}
	catch (...)
	{
		poco_unexpected();
	}
}


void BitStreamWriter::writeBits(int count, bool bit)
{
	const UInt64 pattern = bit ? ~UInt64(0) : 0;
	while (count > 0)
	{
		int n = count > 32 ? 32 : count;
		putBits(pattern, n);
		count -= n;
	}
}


void BitStreamWriter::write(const char* str)
{
	if (str) putOctets(str, std::strlen(str));
}


void BitStreamWriter::putOctets(const char* data, std::size_t length)
{
	if (_cachedBits == 0)
	{
		if (length > BUFFER_SIZE - _used)
		{
			flushBuffer();
			if (length >= BUFFER_SIZE)
			{
				writeToStream(data, static_cast<long>(length));
				return;
			}
		}
		std::memcpy(_buffer + _used, data, length);
		_used += length;
		return;
	}
	// Off an octet boundary every octet straddles two output octets.
	const unsigned char* p = reinterpret_cast<const unsigned char*>(data);
	const unsigned char* const pEnd = p + length;
	const int shift = _cachedBits;
	unsigned int pending = _pending;
	while (p != pEnd)
	{
		if (_used == BUFFER_SIZE) flushBuffer();
		std::size_t room = BUFFER_SIZE - _used;
		std::size_t count = static_cast<std::size_t>(pEnd - p) < room ? static_cast<std::size_t>(pEnd - p) : room;
		char* pOut = _buffer + _used;
		for (std::size_t i = 0; i < count; ++i)
		{
			unsigned int octet = p[i];
			pOut[i] = static_cast<char>((pending << (8 - shift)) | (octet >> shift));
			pending = octet & ((1u << shift) - 1);
		}
		p += count;
		_used += count;
	}
	_pending = pending;
}


void BitStreamWriter::restart(std::ostream& out)
{
	_pStream = &out;
	_cachedBits = 0;
	_pending = 0;
	_used = 0;
}


void BitStreamWriter::complete()
{
	complete(_fillBit);
}


void BitStreamWriter::complete(bool fill)
{
	pad(fill);
	flushBuffer();
	_pStream->flush();
	if (!_pStream->good()) throw Ixor::IOException(WRITE_ERROR);
}


void BitStreamWriter::flushBuffer()
{
	if (_used > 0)
	{
		std::size_t count = _used;
		_used = 0;
		writeToStream(_buffer, static_cast<long>(count));
	}
}


void BitStreamWriter::writeToStream(const char* data, long length)
{
	_pStream->write(data, length);
	if (!_pStream->good()) throw Ixor::IOException(WRITE_ERROR);
}


} } // namespace Ixor::FastInfoset
