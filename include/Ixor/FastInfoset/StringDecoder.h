//
// StringDecoder.h
//
// Library: FastInfoset
// Module:  StringDecoder
//


#ifndef FastInfoset_StringDecoder_INCLUDED
#define FastInfoset_StringDecoder_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


class RestrictedAlphabet;


class FastInfoset_API StringDecoder
	/// Turns the octets of restricted-alphabet and UTF-16 character strings
	/// into UTF-8.
{
public:
	static void decodeAlphabet(const std::string& octets, const RestrictedAlphabet& alphabet, std::string& result);
		/// Replaces result by the characters of the codes in octets, up to the
		/// all-ones code or the last whole code; what follows in the last
		/// octet is fill. Throws FISEncodingException for a reserved
		/// alphabet, which has no characters, for a code that names no
		/// character, and for an all-ones code before the last octet.

	static void decodeUTF16(const std::string& octets, std::string& result);
		/// Replaces result by the UTF-8 form of the big-endian UTF-16 octets;
		/// every invalid sequence becomes "?".

private:
	StringDecoder() = delete;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_StringDecoder_INCLUDED
