//
// FastEncoding.h
//
// Library: FastInfoset
// Module:  Encoder
//
// The bit patterns of the small integers and string lengths, built in one
// step so that a writer can put a whole item's leading bits out with one
// BitStreamWriter::write(). Each returns false where Encoder refuses the
// value or the position; the caller then takes Encoder's path, which raises
// the exact exception. Internal: this header is not installed.
//


#ifndef FastInfoset_FastEncoding_INCLUDED
#define FastInfoset_FastEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoder.h"


namespace Ixor {
namespace FastInfoset {
namespace FastEncoding {


FastInfoset_ALWAYS_INLINE bool integerBits(int pos, unsigned int value, UInt32& bits, int& size)
	/// The bits of an integer that starts at bit position pos of its octet.
{
	if (value > Encoder::MAXINT20 || (value == 0 && pos != 1)) return false;
	switch (pos)
	{
	case 1:
		if (value == 0) { bits = 127; size = 7; }
		else if (value <= 64) { bits = value - 1; size = 7; }
		else if (value <= 8256) { bits = (value - 65) | 0x4000; size = 15; }
		else { bits = (value - 8257) | 0x600000; size = 23; }
		return true;
	case 2:
		if (value <= 32) { bits = value - 1; size = 6; }
		else if (value <= 2080) { bits = (value - 33) | 0x2000; size = 14; }
		else if (value <= 526368) { bits = (value - 2081) | 0x280000; size = 22; }
		else { bits = (value - 526369) | 0x30000000; size = 30; }
		return true;
	case 3:
		if (value <= 16) { bits = value - 1; size = 5; }
		else if (value <= 1040) { bits = (value - 17) | 0x1000; size = 13; }
		else if (value <= 263184) { bits = (value - 1041) | 0x140000; size = 21; }
		else { bits = (value - 263185) | 0x18000000; size = 29; }
		return true;
	case 4:
	case 6:
		if (value > 256) return false;
		bits = value - 1;
		size = 8;
		return true;
	default:
		return false;
	}
}


FastInfoset_ALWAYS_INLINE bool stringLengthBits(int pos, std::size_t length, UInt64& bits, int& size)
	/// The bits of the length of a non-empty octet string that starts at bit
	/// position pos.
{
	if (length == 0 || length - 1 > 0xFFFFFFFFul) return false;
	switch (pos)
	{
	case 1:
		if (length <= 64) { bits = length - 1; size = 7; }
		else if (length <= 320) { bits = (UInt64(64) << 8) | (length - 65); size = 15; }
		else { bits = (UInt64(96) << 32) | (length - 321); size = 39; }
		return true;
	case 4:
		if (length <= 8) { bits = length - 1; size = 4; }
		else if (length <= 264) { bits = (UInt64(8) << 8) | (length - 9); size = 12; }
		else { bits = (UInt64(12) << 32) | (length - 265); size = 36; }
		return true;
	case 6:
		if (length <= 2) { bits = length - 1; size = 2; }
		else if (length <= 258) { bits = (UInt64(2) << 8) | (length - 3); size = 10; }
		else { bits = (UInt64(3) << 32) | (length - 259); size = 34; }
		return true;
	default:
		return false;
	}
}


} } } // namespace Ixor::FastInfoset::FastEncoding


#endif // FastInfoset_FastEncoding_INCLUDED
