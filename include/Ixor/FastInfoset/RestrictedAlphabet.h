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
	/// bitSize() bits: code i stands for the i-th character, and code N ends
	/// the string. bitSize() is floor(log2(N + 1)), so every code that fits
	/// in it is a valid one; when N + 1 is not a power of two the end code
	/// and the last characters cannot be sent, and strings end with their
	/// octets.
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
		/// True for code N.

	int indexToChar(int code) const;
		/// The code point of code, which must be 0 to N (an assertion).

private:
	std::string      _characters;
	std::vector<int> _codes;        // the code points, then 0 for the end code
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
	return code == static_cast<int>(_codes.size()) - 1;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_RestrictedAlphabet_INCLUDED
