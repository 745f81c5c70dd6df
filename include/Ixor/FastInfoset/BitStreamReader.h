//
// BitStreamReader.h
//
// Library: FastInfoset
// Module:  BitStreamReader
//


#ifndef FastInfoset_BitStreamReader_INCLUDED
#define FastInfoset_BitStreamReader_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Utility.h"
#include "Poco/ByteOrder.h"
#include <cstddef>
#include <cstring>
#include <iosfwd>
#include <string>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API BitStreamReader
	/// Reads bit fields, most significant bit first, from a caller-owned
	/// input stream or memory block.
	///
	/// A reader over a stream reads through a buffer of BUFFER_SIZE octets;
	/// a reader over memory reads the caller's block in place and never
	/// copies, writes or frees it.
	///
	/// A reader over a stream takes what the stream has at hand and waits
	/// for more only when a read needs more than that: on a pipe or a
	/// connection, a document can be read to its last octet while the
	/// sender keeps the stream open.
	///
	/// At the end of the input the reads do not throw: they return false
	/// (and eof() becomes true), and the caller turns that into the
	/// end-of-stream exception of the operation it was performing. A reader
	/// over memory behaves exactly like a reader over a stream that holds
	/// the same octets.
{
public:
	static const int BUFFER_SIZE = 1024;

	explicit BitStreamReader(std::istream& in);
		/// Creates a reader over the stream. The first read fills the buffer.

	BitStreamReader(std::istream& in, const char* pPending, std::size_t pendingSize);
		/// Creates a reader over the stream whose input begins with the
		/// pendingSize (at most BUFFER_SIZE) octets at pPending, which an
		/// earlier reader of the stream took from it and could not give back.

	BitStreamReader(const char* pData, std::size_t size);
		/// Creates a reader over the memory block, which must stay valid
		/// and unchanged while the reader is used.

	~BitStreamReader();

	BitStreamReader(const BitStreamReader&) = delete;
	BitStreamReader& operator = (const BitStreamReader&) = delete;

	bool read(bool& bit);
		/// Reads one bit. Returns false at the end of the input.
		///
		/// A read that runs past the end still advances the position by its
		/// bits, so that bitPos() stays where the caller expects it and the
		/// caller's next step meets the end too.

	bool peek(unsigned char& val, int numBits);
	bool peek(char& val, int numBits);
		/// Stores the next numBits (1 to 8) bits in the low bits of val
		/// without consuming them. Returns false when fewer bits are left;
		/// val is then 0.

	bool read(unsigned char& val, int numBits);
	bool read(char& val, int numBits);
		/// Reads numBits (1 to 8) bits.

	bool read(unsigned short& val, int numBits);
	bool read(short& val, int numBits);
		/// Reads numBits (1 to 16) bits.

	bool read(unsigned int& val, int numBits);
		/// Reads numBits (1 to 32) bits.

	bool read(unsigned long& val, int numBits);
		/// Reads numBits (1 to 64) bits.

	bool read(std::string& str, std::size_t length);
		/// Replaces the content of str by the next length octets.
		/// Throws FISParseException "Unexpected end of stream while parsing
		/// octet string" when the input ends on an octet boundary before
		/// length octets were read; str then holds what was read. Off an
		/// octet boundary a short input returns false instead.
		/// Never reserves more memory than the input has delivered.

	bool readView(const char*& pData, std::size_t length);
		/// On an octet boundary, when the next length octets are in the
		/// buffer, points pData at them, consumes them and returns true.
		/// Otherwise returns false and consumes nothing; the caller then
		/// reads a copy with read(std::string&, length). The octets stay
		/// valid until the next read of a reader over a stream, and for
		/// the life of the block of a reader over memory.

	void skip(int numBits);
		/// Consumes numBits bits.

	UInt64 window(int& available, int needed);
		/// The next bits from the current position, the first of them as the
		/// most significant bit, without consuming them: at least needed (1
		/// to 57) when the input holds them, and up to 57 of those that are
		/// at hand. available receives how many of the returned bits are
		/// input (0 to 57); the bits past them are meaningless. For decoders
		/// that take several fields in one step; they consume with advance().

	void advance(int numBits);
		/// Consumes numBits bits that window() reported available.

	void skipToByteStart();
		/// Advances to the next octet boundary; nothing when on one.

	int bitPos() const;
		/// The number of bits of the current octet already read (0 to 7).

	bool eof() const;
		/// True when a read ran past the end of the input, or when the
		/// buffer is empty and no further octet can come.

	Int64 cachedBits() const;
		/// The number of unread bits in the buffer.

	const unsigned char* curByte() const;
		/// The address of the octet that holds the next bit.

	std::size_t octetsConsumed() const;
		/// The number of whole octets read since the reader was created;
		/// the offset of the current octet in the input.

	std::size_t offset() const;
		/// The offset of the current octet, but no further than the end of
		/// the input taken so far: where a read that ran past the end of the
		/// input found it.

	void giveBack(std::string& kept);
		/// On an octet boundary, gives the octets that a reader over a
		/// stream took beyond the current position back to the stream by
		/// seeking it back. When the stream cannot seek, kept receives them
		/// (else it is emptied) and the stream is left as it was.

	void refillBuffer();
		/// Discards the unread part of the buffer and fills it afresh from
		/// the stream, with at least one octet unless the stream ends.

	void refillBufferIfLessThan(int numBits);
		/// Refills the buffer, keeping the unread bits, when fewer than
		/// numBits bits are buffered.

	bool checkInputParams(int maxBits, int& numBits) const;
		/// True when 1 <= numBits <= maxBits.

private:
	bool ensure(int numBits);
	bool fill(int numBits);
	template <class T> bool readBits(T& val, int numBits);
	UInt64 loadWord() const;
	UInt64 peekBits(int numBits) const;
	UInt64 loadTail(const unsigned char* p) const;
	bool take(bool wait);
	void takeAtHand(int needed);
	std::size_t readFromStream(char* pBuf, std::size_t n, bool wait);
	void markOverrun(Int64 numBits);
	bool readUnaligned(std::string& str, std::size_t length);

	std::istream*        _pStream;
	UInt64               _cachedBits;      // valid bits in the buffer
	Int64                _bitOffset;       // consumed bits of the buffer; 64 bits so that large memory blocks work
	const unsigned char* _pBuffer;
	const unsigned char* _pLimit;          // end of the memory that may be loaded eight octets at a time
	unsigned char*       _pOwnBuffer;      // the stream buffer, owned
	std::size_t          _octetsBefore;    // octets of the input that lay in earlier buffers
	bool                 _overrun;         // a read ran past the end of the input; every later read fails
};


//
// inlines
//
inline bool BitStreamReader::checkInputParams(int maxBits, int& numBits) const
{
	return numBits >= 1 && numBits <= maxBits;
}


inline Int64 BitStreamReader::cachedBits() const
{
	return static_cast<Int64>(_cachedBits) - _bitOffset;
}


inline int BitStreamReader::bitPos() const
{
	return static_cast<int>(_bitOffset & 7);
}


inline const unsigned char* BitStreamReader::curByte() const
{
	return _pBuffer + (_bitOffset >> 3);
}


inline std::size_t BitStreamReader::octetsConsumed() const
{
	return _octetsBefore + static_cast<std::size_t>(_bitOffset >> 3);
}


inline std::size_t BitStreamReader::offset() const
{
	const std::size_t end = _octetsBefore + static_cast<std::size_t>(_cachedBits / 8);
	const std::size_t current = octetsConsumed();
	return current < end ? current : end;
}


inline bool BitStreamReader::ensure(int numBits)
{
	return cachedBits() >= numBits || fill(numBits);
}


inline UInt64 BitStreamReader::loadWord() const
	/// The eight octets from the current one, the first as the most
	/// significant; those past the input read as 0.
{
	const unsigned char* p = curByte();
	if (_pLimit - p < 8) return loadTail(p);
	UInt64 word;
	std::memcpy(&word, p, 8);
	return Poco::ByteOrder::fromBigEndian(word);
}


inline UInt64 BitStreamReader::peekBits(int numBits) const
	/// numBits is 1 to 57 and that many bits are buffered.
{
	return (loadWord() << (_bitOffset & 7)) >> (64 - numBits);
}


template <class T>
inline bool BitStreamReader::readBits(T& val, int numBits)
	/// The reads of up to 32 bits, once their count is checked.
{
	if (!ensure(numBits))
	{
		val = 0;
		markOverrun(numBits);
		return false;
	}
	val = static_cast<T>(peekBits(numBits));
	_bitOffset += numBits;
	return true;
}


inline bool BitStreamReader::read(bool& bit)
{
	if (!ensure(1))
	{
		bit = false;
		return false;
	}
	bit = (*curByte() & Utility::revertedPow2[_bitOffset & 7]) != 0;
	++_bitOffset;
	return true;
}


inline bool BitStreamReader::peek(unsigned char& val, int numBits)
{
	poco_assert(checkInputParams(Utility::SIZEOFCHARINBIT, numBits));
	if (!ensure(numBits))
	{
		val = 0;
		return false;
	}
	val = static_cast<unsigned char>(peekBits(numBits));
	return true;
}


inline bool BitStreamReader::peek(char& val, int numBits)
{
	// The signed and unsigned forms of a type may alias each other.
	return peek(reinterpret_cast<unsigned char&>(val), numBits);
}


inline bool BitStreamReader::read(unsigned char& val, int numBits)
{
	poco_assert(checkInputParams(Utility::SIZEOFCHARINBIT, numBits));
	return readBits(val, numBits);
}


inline bool BitStreamReader::read(char& val, int numBits)
{
	return read(reinterpret_cast<unsigned char&>(val), numBits);
}


inline bool BitStreamReader::read(unsigned short& val, int numBits)
{
	poco_assert(checkInputParams(Utility::SIZEOFINT16INBIT, numBits));
	return readBits(val, numBits);
}


inline bool BitStreamReader::read(short& val, int numBits)
{
	return read(reinterpret_cast<unsigned short&>(val), numBits);
}


inline bool BitStreamReader::read(unsigned int& val, int numBits)
{
	poco_assert(checkInputParams(Utility::SIZEOFINT32INBIT, numBits));
	return readBits(val, numBits);
}


inline UInt64 BitStreamReader::window(int& available, int needed)
{
	if (cachedBits() < 57 && _pStream) takeAtHand(needed);
	const Int64 unread = cachedBits();
	if (unread <= 0)
	{
		available = 0;
		return 0;
	}
	available = unread < 57 ? static_cast<int>(unread) : 57;
	return loadWord() << (_bitOffset & 7);
}


inline void BitStreamReader::advance(int numBits)
{
	_bitOffset += numBits;
}


inline void BitStreamReader::skip(int numBits)
{
	if (ensure(numBits)) _bitOffset += numBits;
	else markOverrun(numBits);
}


inline void BitStreamReader::skipToByteStart()
{
	_bitOffset = (_bitOffset + 7) & ~Int64(7);
}


inline bool BitStreamReader::readView(const char*& pData, std::size_t length)
{
	const Int64 available = cachedBits();
	if ((_bitOffset & 7) != 0 || available < 0 || static_cast<UInt64>(available) / 8 < length) return false;
	pData = reinterpret_cast<const char*>(curByte());
	_bitOffset += static_cast<Int64>(length) * 8;
	return true;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_BitStreamReader_INCLUDED
