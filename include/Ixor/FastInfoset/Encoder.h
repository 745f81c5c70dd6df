//
// Encoder.h
//
// Library: FastInfoset
// Module:  Encoder
//


#ifndef FastInfoset_Encoder_INCLUDED
#define FastInfoset_Encoder_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <cstddef>
#include <string>


namespace Ixor {
namespace FastInfoset {


class BitStreamWriter;


class FastInfoset_API Encoder
	/// The primitive encodings of the format: the document header, the small
	/// integers that start on the second to seventh bit of an octet, the
	/// lengths of octet strings and sequences.
	///
	/// Every operation writes at the writer's current bit position p
	/// (BitStreamWriter::bitPos()) and refuses a position or value that the
	/// format does not allow with FISEncodingException, before writing
	/// anything.
{
public:
	static const UInt16 DOCUMENTSTART = 0xE000;
		/// The first two octets of every document.

	static const UInt16 XMLDECLARATION = 0x3C3F;
		/// "<?" read as one 16-bit value.

	static const unsigned int MAXINT20 = 1048576;
		/// 2^20: the largest index and sequence length.

	static const char* const XML_DECLARATION;
		/// "<?xml encoding='finf'?>"

	static void documentPreHeader(BitStreamWriter& aWriter, bool xmlDeclaration);
		/// Writes the optional XML declaration, the identification, the
		/// version 1 and the padding bit; the writer then stands at p = 1.

	static void integer(BitStreamWriter& aWriter, unsigned int val);
		/// Writes an integer (0 only at p = 1; 1 to 2^20 at p = 1, 2, 3;
		/// 1 to 256 at p = 4 or 6).

	static void pad0ThenInteger(BitStreamWriter& aWriter, unsigned int val);
		/// A "0" padding bit, then integer().

	static void nonEmptyOctetString(BitStreamWriter& aWriter, const std::string& octets);
	static void nonEmptyOctetString(BitStreamWriter& aWriter, const char* pOctets, std::size_t length);
		/// The length (at p = 1, 4 or 6), then the octets.
		/// Throws FISEncodingException for an empty string.

	static void nonEmptyStringLength(BitStreamWriter& aWriter, unsigned long strLen);
		/// The length of a non-empty octet string at p = 1, 4 or 6.

	static void lengthOfSequence(BitStreamWriter& aWriter, unsigned int length);
		/// A sequence length (1 to 2^20) at p = 0.

private:
	Encoder() = delete;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_Encoder_INCLUDED
