//
// RestrictedAlphabet.h
//
// Library: FastInfoset
// Module:  RestrictedAlphabet
//


#ifndef FastInfoset_RestrictedAlphabet_INCLUDED
#define FastInfoset_RestrictedAlphabet_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API RestrictedAlphabet
	/// An ordered set of N characters whose strings are sent as codes of
	/// bitSize() bits: code i stands for the i-th character. bitSize() is
	/// the smallest k with 2^k > N, so the all-ones code of k bits is never
	/// a character: it ends the string, as the 1 bits that fill its last
	/// octet do. The codes from N up to the all-ones one name nothing.
{
public:
	RestrictedAlphabet();
		/// A reserved placeholder: no characters, bitSize() 0.

	explicit RestrictedAlphabet(const std::string& utf8Characters);
		/// An alphabet of the characters of the non-empty UTF-8 string (an
		/// assertion). A sequence that is not valid UTF-8 stands for the
		/// character "?".

	const std::string& characters() const;
		/// The characters as given.

	unsigned int bitSize() const;
		/// The bits of one code; 0 for a placeholder.

	bool isEndOfString(int code) const;
		/// True for the all-ones code of bitSize() bits; false for every
		/// code of a placeholder.

	int indexToChar(int code) const;
		/// The code point of code, which must name a character: 0 to N - 1
		/// (an assertion).

private:
	std::string      _characters;
	std::vector<int> _codes;        // the code points, by code
	unsigned int     _bitSize;

	friend class StringDecoder;
};


//
// inlines
//
inline const std::string& RestrictedAlphabet::characters() const
{
	return _characters;
}


inline unsigned int RestrictedAlphabet::bitSize() const
{
	return _bitSize;
}


inline bool RestrictedAlphabet::isEndOfString(int code) const
{
	return _bitSize > 0 && code >= 0 && static_cast<UInt64>(code) == (UInt64(1) << _bitSize) - 1;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_RestrictedAlphabet_INCLUDED
