//
// FastDecoding.h
//
// Library: FastInfoset
// Module:  Decoder
//
// Decoders of the small integers and string lengths that take their field
// from one BitStreamReader::window() in a single step. Each returns false
// when the window does not hold the whole field, or when the field needs a
// diagnosis (a value the format does not allow); the caller then takes the
// general path of Decoder, which reads bit by bit and raises the exact
// exception. Internal: this header is not installed.
//


#ifndef FastInfoset_FastDecoding_INCLUDED
#define FastInfoset_FastDecoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/DocumentRestrictedAlphabet.h"
#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Poco/NumberFormatter.h"


namespace Ixor {
namespace FastInfoset {
namespace FastDecoding {


inline bool integerAt(int pos, UInt64 w, int available, unsigned int& value, int& size)
	/// An integer whose first bit is the most significant bit of w and that
	/// starts at bit position pos of its octet.
{
	switch (pos)
	{
	case 1:
	{
		const unsigned int b = static_cast<unsigned int>(w >> 57);
		if (b < 64)
		{
			value = b + 1;
			size = 7;
		}
		else if (b < 96)
		{
			value = static_cast<unsigned int>((w >> 49) & 0x1FFF) + 65;
			size = 15;
		}
		else if (b == 127)
		{
			value = 0;
			size = 7;
		}
		else
		{
			value = ((b & 15) << 16) + static_cast<unsigned int>((w >> 41) & 0xFFFF) + 8257;
			size = 23;
			if (value > Encoder::MAXINT20) return false;
		}
		break;
	}
	case 2:
	{
		const unsigned int b = static_cast<unsigned int>(w >> 58);
		if (b < 32)
		{
			value = b + 1;
			size = 6;
		}
		else if (b < 40)
		{
			value = static_cast<unsigned int>((w >> 50) & 0x7FF) + 33;
			size = 14;
		}
		else if (b < 48)
		{
			value = static_cast<unsigned int>((w >> 42) & 0x7FFFF) + 2081;
			size = 22;
		}
		else if (b == 48)
		{
			value = static_cast<unsigned int>((w >> 34) & 0xFFFFF) + 526369;
			size = 30;
			if (value > Encoder::MAXINT20) return false;
		}
		else return false;
		break;
	}
	case 3:
	{
		const unsigned int b = static_cast<unsigned int>(w >> 59);
		if (b < 16)
		{
			value = b + 1;
			size = 5;
		}
		else if (b < 20)
		{
			value = static_cast<unsigned int>((w >> 51) & 0x3FF) + 17;
			size = 13;
		}
		else if (b < 24)
		{
			value = static_cast<unsigned int>((w >> 43) & 0x3FFFF) + 1041;
			size = 21;
		}
		else
		{
			value = static_cast<unsigned int>((w >> 35) & 0xFFFFF) + 263185;
			size = 29;
			if (value > Encoder::MAXINT20) return false;
		}
		break;
	}
	case 4:
	case 6:
		value = static_cast<unsigned int>(w >> 56) + 1;
		size = 8;
		break;
	default:
		return false;
	}
	return size <= available;
}


inline bool stringLengthAt(int pos, UInt64 w, int available, std::size_t& length, int& size)
	/// The length of a non-empty octet string whose first bit is the most
	/// significant bit of w and that starts at bit position pos.
{
	switch (pos)
	{
	case 1:
	{
		const unsigned int b = static_cast<unsigned int>(w >> 57);
		if (b < 64)
		{
			length = b + 1;
			size = 7;
		}
		else if (b == 64)
		{
			length = static_cast<std::size_t>((w >> 49) & 0xFF) + 65;
			size = 15;
		}
		else
		{
			length = static_cast<std::size_t>((w >> 25) & 0xFFFFFFFF) + 321;
			size = 39;
		}
		break;
	}
	case 4:
	{
		const unsigned int b = static_cast<unsigned int>(w >> 60);
		if (b < 8)
		{
			length = b + 1;
			size = 4;
		}
		else if (b == 8)
		{
			length = static_cast<std::size_t>((w >> 52) & 0xFF) + 9;
			size = 12;
		}
		else
		{
			length = static_cast<std::size_t>((w >> 28) & 0xFFFFFFFF) + 265;
			size = 36;
		}
		break;
	}
	case 6:
	{
		const unsigned int b = static_cast<unsigned int>(w >> 62);
		if (b < 2)
		{
			length = b + 1;
			size = 2;
		}
		else if (b == 2)
		{
			length = static_cast<std::size_t>((w >> 54) & 0xFF) + 3;
			size = 10;
		}
		else
		{
			length = static_cast<std::size_t>((w >> 30) & 0xFFFFFFFF) + 259;
			size = 34;
		}
		break;
	}
	default:
		return false;
	}
	return size <= available;
}


inline const RestrictedAlphabet& alphabetAt(const DocumentRestrictedAlphabet& alphabets, unsigned int index)
	/// The alphabet a document names by index; FISEncodingException when the
	/// index names none.
{
	if (index == 0 || index > alphabets.alphabets().size())
		throw FISEncodingException("Restricted alphabet " + Poco::NumberFormatter::format(index) + " is not defined");
	return alphabets.alphabet(index);
}


} } } // namespace Ixor::FastInfoset::FastDecoding


#endif // FastInfoset_FastDecoding_INCLUDED
