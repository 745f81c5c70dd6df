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
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/DocumentRestrictedAlphabet.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Poco/NumberFormatter.h"
#include "PrimitiveForms.h"
#include <cstddef>


namespace Ixor {
namespace FastInfoset {
namespace FastDecoding {


inline bool integerAt(int pos, UInt64 w, int available, unsigned int& value, int& size)
	/// An integer whose first bit is the most significant bit of w and that
	/// starts at bit position pos of its octet.
{
	using namespace PrimitiveForms;
	switch (pos)
	{
	case 1:  return decode<INTEGER_ON_2ND_BIT>(w, available, value, size);
	case 2:  return decode<INTEGER_ON_3RD_BIT>(w, available, value, size);
	case 3:  return decode<INTEGER_ON_4TH_BIT>(w, available, value, size);
	case 4:
	case 6:  return decode<INTEGER_ON_5TH_OR_7TH_BIT>(w, available, value, size);
	default: return false;
	}
}


inline bool stringLengthAt(int pos, UInt64 w, int available, std::size_t& length, int& size)
	/// The length of a non-empty octet string whose first bit is the most
	/// significant bit of w and that starts at bit position pos.
{
	using namespace PrimitiveForms;
	switch (pos)
	{
	case 1:  return decode<STRING_LENGTH_ON_2ND_BIT>(w, available, length, size);
	case 4:  return decode<STRING_LENGTH_ON_5TH_BIT>(w, available, length, size);
	case 6:  return decode<STRING_LENGTH_ON_7TH_BIT>(w, available, length, size);
	default: return false;
	}
}


inline bool sequenceLengthAt(UInt64 w, int available, unsigned int& length, int& size)
	/// The length of a sequence whose first bit is the most significant bit
	/// of w, on an octet boundary.
{
	return PrimitiveForms::decode<PrimitiveForms::SEQUENCE_LENGTH>(w, available, length, size);
}


inline void twoFlags(BitStreamReader& r, bool& first, bool& second, const char* endMessage)
	/// Two bits that say which of two optional parts follow; FISParseException
	/// with endMessage when the input ends before them.
{
	unsigned char bits = 0;
	if (!r.read(bits, 2)) throw FISParseException(endMessage);
	first = (bits & 2) != 0;
	second = (bits & 1) != 0;
}


inline void twoFlagsAt(BitStreamReader& r, int pos, const char* positionMessage, bool& first, bool& second, const char* endMessage)
	/// The same, for an item that must start at bit position pos;
	/// FISEncodingException with positionMessage elsewhere.
{
	if (r.bitPos() != pos) throw FISEncodingException(positionMessage);
	twoFlags(r, first, second, endMessage);
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
