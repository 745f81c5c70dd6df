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
#include "PrimitiveForms.h"
#include <cstddef>


namespace Ixor {
namespace FastInfoset {
namespace FastEncoding {


FastInfoset_ALWAYS_INLINE bool integerBits(int pos, unsigned int value, UInt32& bits, int& size)
	/// The bits of an integer that starts at bit position pos of its octet.
{
	using namespace PrimitiveForms;
	UInt64 field = 0;
	bool ok = false;
	switch (pos)
	{
	case 1:  ok = encode<INTEGER_ON_2ND_BIT>(value, field, size); break;
	case 2:  ok = encode<INTEGER_ON_3RD_BIT>(value, field, size); break;
	case 3:  ok = encode<INTEGER_ON_4TH_BIT>(value, field, size); break;
	case 4:
	case 6:  ok = encode<INTEGER_ON_5TH_OR_7TH_BIT>(value, field, size); break;
	default: return false;
	}
	bits = static_cast<UInt32>(field);
	return ok;
}


FastInfoset_ALWAYS_INLINE bool stringLengthBits(int pos, std::size_t length, UInt64& bits, int& size)
	/// The bits of the length of a non-empty octet string that starts at bit
	/// position pos.
{
	using namespace PrimitiveForms;
	switch (pos)
	{
	case 1:  return encode<STRING_LENGTH_ON_2ND_BIT>(length, bits, size);
	case 4:  return encode<STRING_LENGTH_ON_5TH_BIT>(length, bits, size);
	case 6:  return encode<STRING_LENGTH_ON_7TH_BIT>(length, bits, size);
	default: return false;
	}
}


FastInfoset_ALWAYS_INLINE bool sequenceLengthBits(unsigned int length, UInt32& bits, int& size)
	/// The bits of the length of a sequence, on an octet boundary.
{
	UInt64 field = 0;
	const bool ok = PrimitiveForms::encode<PrimitiveForms::SEQUENCE_LENGTH>(length, field, size);
	bits = static_cast<UInt32>(field);
	return ok;
}


} } } // namespace Ixor::FastInfoset::FastEncoding


#endif // FastInfoset_FastEncoding_INCLUDED
