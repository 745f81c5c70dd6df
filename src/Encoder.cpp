#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/BitStreamWriter.h"
#include "Ixor/FastInfoset/FISException.h"
#include "FastEncoding.h"


namespace Ixor {
namespace FastInfoset {


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
	// The whole field in one write; refused values and positions take the
	// path below, which says why.
	UInt32 bits = 0;
	int size = 0;
	if (FastEncoding::integerBits(aWriter.bitPos(), val, bits, size))
	{
		aWriter.write(bits, size);
		return;
	}

	if (val > MAXINT20)
		throw FISEncodingException("Cannot encode integer value: too large, must be smaller than 2^20");
	const int pos = aWriter.bitPos();
	if (val == 0 && pos != 1)
		throw FISEncodingException("Value zero must start on the second bit of a byte");

	switch (pos)
	{
	case 0:
		throw FISEncodingException("Illegal bit position 0: Integers can never start there");
	case 1:
		if (val == 0) aWriter.write(127u, 7);
		else if (val <= 64) aWriter.write(val - 1, 7);
		else if (val <= 8256) aWriter.write((val - 65) | 0x4000, 15);
		else aWriter.write((val - 8257) | 0x600000, 23);
		break;
	case 2:
		if (val <= 32) aWriter.write(val - 1, 6);
		else if (val <= 2080) aWriter.write((val - 33) | 0x2000, 14);
		else if (val <= 526368) aWriter.write((val - 2081) | 0x280000, 22);
		else aWriter.write((val - 526369) | 0x30000000, 30);
		break;
	case 3:
		if (val <= 16) aWriter.write(val - 1, 5);
		else if (val <= 1040) aWriter.write((val - 17) | 0x1000, 13);
		else if (val <= 263184) aWriter.write((val - 1041) | 0x140000, 21);
		else aWriter.write((val - 263185) | 0x18000000, 29);
		break;
	case 4:
	case 6:
		if (val > 256)
			throw FISEncodingException("Illegal bit position: Only Integers <= 256 can start at pos 4 or 6.");
		aWriter.write(val - 1, 8);
		return;
	default:
		throw FISEncodingException("Illegal bit position: No Integers are allowed to be written to pos 5 or 7.");
	}
	poco_assert(aWriter.bitPos() == 0);
}


void Encoder::pad0ThenInteger(BitStreamWriter& aWriter, unsigned int val)
{
	if (aWriter.bitPos() != 0)
	{
		aWriter.write(false);
		integer(aWriter, val);
		return;
	}
	// The padding bit and the second-bit form together make whole octets.
	poco_assert_dbg(val <= MAXINT20);
	if (val == 0) aWriter.write(127u, 8);
	else if (val <= 64) aWriter.write(val - 1, 8);
	else if (val <= 8256) aWriter.write((val - 65) | 0x4000, 16);
	else aWriter.write((val - 8257) | 0x600000, 24);
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

	switch (aWriter.bitPos())
	{
	case 1:
		if (strLen <= 64) aWriter.write(static_cast<unsigned int>(strLen - 1), 7);
		else if (strLen <= 320)
		{
			aWriter.write(64u, 7);
			aWriter.write(static_cast<unsigned int>(strLen - 65), 8);
		}
		else
		{
			aWriter.write(96u, 7);
			aWriter.write(static_cast<unsigned int>(strLen - 321), 32);
		}
		break;
	case 4:
		if (strLen <= 8) aWriter.write(static_cast<unsigned int>(strLen - 1), 4);
		else if (strLen <= 264)
		{
			aWriter.write(8u, 4);
			aWriter.write(static_cast<unsigned int>(strLen - 9), 8);
		}
		else
		{
			aWriter.write(12u, 4);
			aWriter.write(static_cast<unsigned int>(strLen - 265), 32);
		}
		break;
	case 6:
		if (strLen <= 2) aWriter.write(static_cast<unsigned int>(strLen - 1), 2);
		else if (strLen <= 258)
		{
			aWriter.write(2u, 2);
			aWriter.write(static_cast<unsigned int>(strLen - 3), 8);
		}
		else
		{
			aWriter.write(3u, 2);
			aWriter.write(static_cast<unsigned int>(strLen - 259), 32);
		}
		break;
	default:
		throw FISEncodingException("illegal position for nonEmptyOctetString encoding");
	}
	poco_assert(aWriter.bitPos() == 0);
}


void Encoder::lengthOfSequence(BitStreamWriter& aWriter, unsigned int length)
{
	if (aWriter.bitPos() != 0)
		throw FISEncodingException("Illegal startposition for a lengthOfSequence value");
	if (length == 0)
		throw FISEncodingException("Illegal value zero for lengthOfSequence");
	if (length <= 128)
	{
		aWriter.write(length - 1, 8);
		return;
	}
	if (length > MAXINT20)
		throw FISEncodingException("Illegal value for lengthOfSequence: larger than 2^20");
	// '1000' and then the 20 bits of length - 129.
	aWriter.write(0x800000u | (length - 129), 24);
}


} } // namespace Ixor::FastInfoset
