#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/BitStreamWriter.h"
#include "Ixor/FastInfoset/FISException.h"
#include "FastEncoding.h"


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const TOO_LARGE = "Cannot encode integer value: too large, must be smaller than 2^20";
}


const char* const Encoder::XML_DECLARATION = "<?xml encoding='finf'?>";


void Encoder::documentPreHeader(BitStreamWriter& aWriter, bool xmlDeclaration)
{
	if (xmlDeclaration) aWriter.write(XML_DECLARATION);
	aWriter.write(static_cast<unsigned int>(DOCUMENTSTART), 16);
	aWriter.write(1u, 16);
	aWriter.write(false);
}


void Encoder::integer(BitStreamWriter& aWriter, unsigned int val)
{
	UInt32 bits = 0;
	int size = 0;
	if (FastEncoding::integerBits(aWriter.bitPos(), val, bits, size))
	{
		aWriter.write(bits, size);
		return;
	}
	// Only what cannot be written comes here: say why.
	const int pos = aWriter.bitPos();
	if (val > MAXINT20) throw FISEncodingException(TOO_LARGE);
	if (val == 0) throw FISEncodingException("Value zero must start on the second bit of a byte");
	if (pos == 0) throw FISEncodingException("Illegal bit position 0: Integers can never start there");
	if (pos == 4 || pos == 6) throw FISEncodingException("Illegal bit position: Only Integers <= 256 can start at pos 4 or 6.");
	throw FISEncodingException("Illegal bit position: No Integers are allowed to be written to pos 5 or 7.");
}


void Encoder::pad0ThenInteger(BitStreamWriter& aWriter, unsigned int val)
{
	if (val > MAXINT20) throw FISEncodingException(TOO_LARGE);
	if (aWriter.bitPos() != 0)
	{
		aWriter.write(false);
		integer(aWriter, val);
		return;
	}
	// The padding bit and the second-bit form together make whole octets.
	UInt32 bits = 0;
	int size = 0;
	FastEncoding::integerBits(1, val, bits, size);
	aWriter.write(bits, size + 1);
}


void Encoder::nonEmptyOctetString(BitStreamWriter& aWriter, const std::string& octets)
{
	nonEmptyOctetString(aWriter, octets.data(), octets.size());
}


void Encoder::nonEmptyOctetString(BitStreamWriter& aWriter, const char* pOctets, std::size_t length)
{
	if (length == 0)
		throw FISEncodingException("Encoder::nonEmptyOctetString cannot encode empty strings");
	nonEmptyStringLength(aWriter, length);
	aWriter.write(pOctets, length);
}


void Encoder::nonEmptyStringLength(BitStreamWriter& aWriter, unsigned long strLen)
{
	poco_assert(strLen > 0);
	UInt64 bits = 0;
	int size = 0;
	if (FastEncoding::stringLengthBits(aWriter.bitPos(), strLen, bits, size))
	{
		aWriter.write(static_cast<unsigned long>(bits), size);
		return;
	}
	// The longest form carries the length in 32 bits; what does not fit
	// cannot be written at all.
	if (strLen - 1 > 0xFFFFFFFFul)
		throw FISEncodingException("Cannot encode octet string length: too large, must be smaller than 2^32");
	throw FISEncodingException("illegal position for nonEmptyOctetString encoding");
}


void Encoder::lengthOfSequence(BitStreamWriter& aWriter, unsigned int length)
{
	if (aWriter.bitPos() != 0)
		throw FISEncodingException("Illegal startposition for a lengthOfSequence value");
	if (length == 0)
		throw FISEncodingException("Illegal value zero for lengthOfSequence");
	UInt32 bits = 0;
	int size = 0;
	if (!FastEncoding::sequenceLengthBits(length, bits, size))
		throw FISEncodingException("Illegal value for lengthOfSequence: larger than 2^20");
	aWriter.write(bits, size);
}


} } // namespace Ixor::FastInfoset
