//
// BoolEncoding.h
//
// Library: FastInfoset
// Module:  BoolEncoding
//


#ifndef FastInfoset_BoolEncoding_INCLUDED
#define FastInfoset_BoolEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/ValueListEncoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API BoolEncoding;
extern template class ValueListEncoding<BoolEncoding, bool>;


class FastInfoset_API BoolEncoding: public ValueListEncoding<BoolEncoding, bool>
	/// A list of booleans (algorithm 6), written as a 4-bit count of the
	/// unused bits of the last octet followed by one bit per value. The text
	/// form is "true" and "false" separated by single spaces.
	///
	/// Its messages are "Illegal (empty) data for BoolEncoding", "Illegal
	/// value string for BoolEncoding" and, for an unused-bit count that
	/// leaves fewer than zero values, "Illegal unused bit count for boolean
	/// value". A count above 7 is read as it stands. check() reports
	/// (values + 7) / 8: it leaves out the 4-bit count, so it can be one
	/// octet less than write() produces.
{
public:
	typedef Ixor::AutoPtr<BoolEncoding> Ptr;

	static const std::string VAL_TRUE;
		/// "true"

	static const std::string VAL_FALSE;
		/// "false"

	explicit BoolEncoding(bool value);

	BoolEncoding(const char* text) = delete;
		/// A string literal would otherwise silently become the value true.

	explicit BoolEncoding(const std::vector<bool>& values);
		/// Throws FISEncodingException "Illegal (empty) data for BoolEncoding"
		/// for an empty vector.

	explicit BoolEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException "Illegal (empty) data for
		/// BoolEncoding" for an empty text and "Illegal value string for
		/// BoolEncoding" for a text that parse() refuses.

protected:
	~BoolEncoding();

private:
	BoolEncoding();

	friend class ValueListEncoding<BoolEncoding, bool>;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_BoolEncoding_INCLUDED
