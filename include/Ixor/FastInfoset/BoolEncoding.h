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


struct FastInfoset_API BoolValues;
extern template class ValueListEncoding<BoolValues, bool>;


class FastInfoset_API BoolEncoding: public ValueListEncoding<BoolValues, bool>
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
	///
	/// Made from one value, a vector of values or text; the constructors,
	/// the functions and these messages are those of ValueListEncoding.
	/// What it adds are the texts of the two values, and its decode()
	/// makes a BoolEncoding.
{
public:
	typedef Ixor::AutoPtr<BoolEncoding> Ptr;

	using ValueListEncoding::ValueListEncoding;

	static const std::string VAL_TRUE;
		/// "true"

	static const std::string VAL_FALSE;
		/// "false"

	BoolEncoding(const char* text) = delete;
		/// A string literal would otherwise silently become the value true.

protected:
	~BoolEncoding();
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_BoolEncoding_INCLUDED
