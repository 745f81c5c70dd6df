#include "Ixor/FastInfoset/StringDecoder.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/RestrictedAlphabet.h"
#include "Poco/TextConverter.h"
#include "Poco/UTF16Encoding.h"
#include "Poco/UTF8Encoding.h"


namespace Ixor {
namespace FastInfoset {


namespace
{
	int replaceSurrogate(int ch)
		/// The converter reports an unpaired low surrogate as a code point of
		/// its own, which has no UTF-8 form.
	{
		return (ch >= 0xD800 && ch <= 0xDFFF) ? '?' : ch;
	}
}


void StringDecoder::decodeAlphabet(const std::string& octets, const RestrictedAlphabet& alphabet, std::string& result)
{
	const unsigned int bitSize = alphabet.bitSize();
	// A document may name one of the reserved alphabets, which have no
	// characters and so no codes.
	if (bitSize == 0) throw FISEncodingException("Cannot decode a string with a restricted alphabet that has no characters");

	const std::vector<int>& codes = alphabet._codes;
	const UInt64 characterCount = codes.size();
	const UInt64 endCode = (UInt64(1) << bitSize) - 1;

	result.clear();
	result.reserve(static_cast<std::size_t>((UInt64(octets.size()) * 8 + 8) / bitSize));

	// Bits that do not make a whole code are the fill of the last octet.
	const UInt64 bitCount = UInt64(octets.size()) * 8;
	const UInt64 count = bitCount / bitSize;
	const unsigned char* p = reinterpret_cast<const unsigned char*>(octets.data());
	const int* pCodes = codes.data();
	Ixor::UTF8Encoding utf8;
	unsigned char buffer[8];
	UInt64 bits = 0;
	unsigned int cached = 0;
	for (UInt64 i = 0; i < count; ++i)
	{
		while (cached < bitSize)
		{
			bits = (bits << 8) | *p++;
			cached += 8;
		}
		cached -= bitSize;
		const UInt64 code = (bits >> cached) & endCode;
		if (code >= characterCount)
		{
			if (code != endCode) throw FISEncodingException("Restricted alphabet code names no character");
			// The all-ones code is fill, which only the last octet holds.
			if (bitCount - i*bitSize >= 8) throw FISEncodingException("Restricted alphabet string ends before its last octet");
			break;
		}
		const int ch = pCodes[code];
		if (ch < 0x80)
		{
			result += static_cast<char>(ch);
		}
		else
		{
			const int length = utf8.convert(ch, buffer, sizeof(buffer));
			result.append(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(length));
		}
	}
}


void StringDecoder::decodeUTF16(const std::string& octets, std::string& result)
{
	// UTF-16 in a document is big-endian. The framework's UTF16Encoding(0)
	// takes its byte order from the host's, so the order is named here.
	Ixor::UTF16Encoding utf16(Ixor::UTF16Encoding::BIG_ENDIAN_BYTE_ORDER);
	Ixor::UTF8Encoding utf8;
	Ixor::TextConverter converter(utf16, utf8, '?');
	result.clear();
	converter.convert(octets, result, replaceSurrogate);
}


} } // namespace Ixor::FastInfoset
