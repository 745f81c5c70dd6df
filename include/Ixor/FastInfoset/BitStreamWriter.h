//
// BitStreamWriter.h
//
// Library: FastInfoset
// Module:  BitStreamWriter
//


#ifndef FastInfoset_BitStreamWriter_INCLUDED
#define FastInfoset_BitStreamWriter_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Utility.h"
#include "Poco/ByteOrder.h"
#include <cstddef>
#include <cstring>
#include <iosfwd>
#include <string>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API BitStreamWriter
	/// Writes bit fields, most significant bit first, to a caller-owned
	/// output stream.
	///
	/// Whole octets collect in a buffer of BUFFER_SIZE octets that goes to
	/// the stream in one write when it is full and on complete(); the octets
	/// are exactly those of writing the bits one by one. Stream failures
	/// raise Ixor::IOException "error while writing Fast Infoset document
	/// to stream".
{
public:
	static const int BUFFER_SIZE = 8192;

	BitStreamWriter(std::ostream& out, bool fillBit);

	virtual ~BitStreamWriter();
		/// Completes the last octet with the fill bit and flushes; a writer
		/// that holds no octet or bit leaves its stream untouched.

	BitStreamWriter(const BitStreamWriter&) = delete;
	BitStreamWriter& operator = (const BitStreamWriter&) = delete;

	void write(bool bit);
		/// Appends one bit.

	void writeBits(int count, bool bit);
		/// Appends count copies of bit; nothing for count <= 0.

	void write(signed char val, int numOfBits);
	void write(unsigned char val, int numOfBits);
		/// Appends the low numOfBits (1 to 8) bits of val.

	void write(short val, int numOfBits);
	void write(unsigned short val, int numOfBits);
		/// Appends the low numOfBits (1 to 16) bits of val.

	void write(int val, int numOfBits);
	void write(unsigned int val, int numOfBits);
		/// Appends the low numOfBits (1 to 32) bits of val.

	void write(long val, int numOfBits);
	void write(unsigned long val, int numOfBits);
		/// Appends the low numOfBits (1 to 64) bits of val.

	void write(const std::string& str);
		/// Appends the octets of str.

	void write(const char* str);
		/// Appends the octets of a zero-terminated string, without the
		/// terminator; nothing for a null pointer.

	void write(const char* data, std::size_t length);
		/// Appends length octets; nothing when data is null.

	void complete();
		/// complete(fillBit).

	void complete(bool fill);
		/// Pads the unfinished octet with fill, hands every octet to the
		/// stream and flushes it.

	void pad(bool fill);
		/// Pads the unfinished octet with fill, without handing anything to
		/// the stream yet.

	void restart(std::ostream& out);
		/// Starts over on out: the bits and octets not yet handed to the
		/// old stream are dropped.

	int bitPos() const;
		/// The number of bits already placed in the current octet (0 to 7).

	int curBitOffsetInByte() const;
		/// 7 - bitPos(): the power of two of the next bit in its octet.

	bool checkInputParams(int maxBits, int& numOfBits) const;
		/// True when 1 <= numOfBits <= maxBits.

	void writeToStream(const char* data, long length);
		/// Hands length octets to the stream in one write.

private:
	void putBits(UInt64 value, int numOfBits);
	void putOctets(const char* data, std::size_t length);
	void flushBuffer();

	std::ostream* _pStream;
	bool          _fillBit;
	int           _cachedBits;   // bits of the current octet placed so far (0 to 7)
	unsigned int  _pending;      // those bits, right-aligned
	std::size_t   _used;         // whole octets waiting in _buffer
	char          _buffer[BUFFER_SIZE + 8];   // eight spare octets let putBits() store a whole word
};


//
// inlines
//
inline int BitStreamWriter::bitPos() const
{
	return _cachedBits;
}


inline int BitStreamWriter::curBitOffsetInByte() const
{
	return 7 - _cachedBits;
}


inline bool BitStreamWriter::checkInputParams(int maxBits, int& numOfBits) const
{
	return numOfBits >= 1 && numOfBits <= maxBits;
}


FastInfoset_ALWAYS_INLINE void BitStreamWriter::putBits(UInt64 value, int numOfBits)
	/// numOfBits is 1 to 56. The pending bits and the new ones, left-aligned
	/// in one word, are stored whole; the octets they complete count as
	/// written and the rest stays pending.
{
	if (_used > BUFFER_SIZE - 8) flushBuffer();
	const UInt64 bits = (static_cast<UInt64>(_pending) << numOfBits) | (value & ((UInt64(1) << numOfBits) - 1));
	const int total = _cachedBits + numOfBits;
	const UInt64 word = Poco::ByteOrder::toBigEndian(bits << (64 - total));
	std::memcpy(_buffer + _used, &word, 8);
	_used += static_cast<std::size_t>(total >> 3);
	_cachedBits = total & 7;
	_pending = static_cast<unsigned int>(bits & ((1u << _cachedBits) - 1));
}


FastInfoset_ALWAYS_INLINE void BitStreamWriter::pad(bool fill)
{
	if (_cachedBits != 0) putBits(fill ? ~UInt64(0) : 0, 8 - _cachedBits);
}


FastInfoset_ALWAYS_INLINE void BitStreamWriter::write(bool bit)
{
	putBits(bit ? 1 : 0, 1);
}


inline void BitStreamWriter::write(unsigned char val, int numOfBits)
{
	poco_assert(checkInputParams(Utility::SIZEOFCHARINBIT, numOfBits));
	putBits(val, numOfBits);
}


inline void BitStreamWriter::write(signed char val, int numOfBits)
{
	poco_assert(checkInputParams(Utility::SIZEOFCHARINBIT, numOfBits));
	putBits(static_cast<unsigned char>(val), numOfBits);
}


inline void BitStreamWriter::write(unsigned short val, int numOfBits)
{
	poco_assert(checkInputParams(Utility::SIZEOFINT16INBIT, numOfBits));
	putBits(val, numOfBits);
}


inline void BitStreamWriter::write(short val, int numOfBits)
{
	poco_assert(checkInputParams(Utility::SIZEOFINT16INBIT, numOfBits));
	putBits(static_cast<unsigned short>(val), numOfBits);
}


FastInfoset_ALWAYS_INLINE void BitStreamWriter::write(unsigned int val, int numOfBits)
{
	poco_assert(checkInputParams(Utility::SIZEOFINT32INBIT, numOfBits));
	putBits(val, numOfBits);
}


inline void BitStreamWriter::write(int val, int numOfBits)
{
	poco_assert(checkInputParams(Utility::SIZEOFINT32INBIT, numOfBits));
	putBits(static_cast<unsigned int>(val), numOfBits);
}


FastInfoset_ALWAYS_INLINE void BitStreamWriter::write(unsigned long val, int numOfBits)
{
	poco_assert(checkInputParams(Utility::SIZEOFINT64INBIT, numOfBits));
	if (numOfBits > 32)
	{
		putBits(val >> 32, numOfBits - 32);
		putBits(val & 0xFFFFFFFFul, 32);
	}
	else putBits(val, numOfBits);
}


inline void BitStreamWriter::write(long val, int numOfBits)
{
	poco_assert(checkInputParams(Utility::SIZEOFINT64INBIT, numOfBits));
	write(static_cast<unsigned long>(val), numOfBits);
}


inline void BitStreamWriter::write(const std::string& str)
{
	putOctets(str.data(), str.size());
}


inline void BitStreamWriter::write(const char* data, std::size_t length)
{
	if (data) putOctets(data, length);
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_BitStreamWriter_INCLUDED
