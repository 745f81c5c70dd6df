//
// DoubleEncoding.h
//
// Library: FastInfoset
// Module:  DoubleEncoding
//


#ifndef FastInfoset_DoubleEncoding_INCLUDED
#define FastInfoset_DoubleEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/ValueListEncoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API DoubleEncoding;
extern template class ValueListEncoding<DoubleEncoding, double>;


class FastInfoset_API DoubleEncoding: public ValueListEncoding<DoubleEncoding, double>
	/// A list of IEEE 754 double-precision floats (algorithm 8), written as
	/// 64-bit big-endian values. The text form is the values separated by
	/// single spaces, each in an XML Schema form: the shortest decimal that
	/// reads back as the value ("1.5", "1e+100"), "-0" for minus zero, and
	/// "NaN", "INF", "-INF". parse() accepts exactly the texts that this
	/// form gives back unchanged.
	///
	/// Its messages are "Illegal (empty) data for DoubleEncoding", "Illegal value
	/// string for DoubleEncoding" and, for a length that is not a multiple of 8,
	/// "Illegal size entry for double value".
{
public:
	typedef Ixor::AutoPtr<DoubleEncoding> Ptr;

	explicit DoubleEncoding(double value);

	explicit DoubleEncoding(const std::vector<double>& values);
		/// Throws FISEncodingException "Illegal (empty) data for DoubleEncoding"
		/// for an empty vector.

	explicit DoubleEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException "Illegal (empty) data for
		/// DoubleEncoding" for an empty text and "Illegal value string for
		/// DoubleEncoding" for a text that parse() refuses.

protected:
	~DoubleEncoding();

private:
	DoubleEncoding();

	friend class ValueListEncoding<DoubleEncoding, double>;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_DoubleEncoding_INCLUDED
