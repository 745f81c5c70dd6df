//
// FloatEncoding.h
//
// Library: FastInfoset
// Module:  FloatEncoding
//


#ifndef FastInfoset_FloatEncoding_INCLUDED
#define FastInfoset_FloatEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/ValueListEncoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API FloatEncoding;
extern template class ValueListEncoding<FloatEncoding, float>;


class FastInfoset_API FloatEncoding: public ValueListEncoding<FloatEncoding, float>
	/// A list of IEEE 754 single-precision floats (algorithm 7), written as
	/// 32-bit big-endian values. The text form is the values separated by
	/// single spaces, each in an XML Schema form: the shortest decimal that
	/// reads back as the float ("1.5", "3.4e+38"), "-0" for minus zero, and
	/// "NaN", "INF", "-INF".
	///
	/// parse() accepts "NaN", "INF", "-INF" and the numbers that the double
	/// text form gives back unchanged and that lie from the smallest
	/// positive normal float up to the largest float. Zero and negative
	/// numbers are refused as text, but written when given as values; and
	/// the float text of a value need not be accepted again.
	///
	/// Its messages are "Illegal (empty) data for FloatEncoding", "Illegal value
	/// string for FloatEncoding" and, for a length that is not a multiple of 4,
	/// "Illegal size entry for float value".
{
public:
	typedef Ixor::AutoPtr<FloatEncoding> Ptr;

	explicit FloatEncoding(float value);

	explicit FloatEncoding(const std::vector<float>& values);
		/// Throws FISEncodingException "Illegal (empty) data for FloatEncoding"
		/// for an empty vector.

	explicit FloatEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException "Illegal (empty) data for
		/// FloatEncoding" for an empty text and "Illegal value string for
		/// FloatEncoding" for a text that parse() refuses.

protected:
	~FloatEncoding();

private:
	FloatEncoding();

	friend class ValueListEncoding<FloatEncoding, float>;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_FloatEncoding_INCLUDED
