//
// ShortEncoding.h
//
// Library: FastInfoset
// Module:  ShortEncoding
//


#ifndef FastInfoset_ShortEncoding_INCLUDED
#define FastInfoset_ShortEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/ValueListEncoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API ShortEncoding;
extern template class ValueListEncoding<ShortEncoding, short>;


class FastInfoset_API ShortEncoding: public ValueListEncoding<ShortEncoding, short>
	/// A list of signed 16-bit integers (algorithm 3), written as 16-bit
	/// big-endian values. The text form is the values in canonical decimal
	/// (no plus sign, no leading zeros, no minus zero, no white space),
	/// separated by single spaces.
	///
	/// Its messages are "Illegal (empty) data for ShortEncoding", "Illegal value
	/// string for ShortEncoding" and, for a length that is not a multiple of 2,
	/// "Illegal size entry for Ixor::Int16 value".
{
public:
	typedef Ixor::AutoPtr<ShortEncoding> Ptr;

	explicit ShortEncoding(short value);

	explicit ShortEncoding(const std::vector<short>& values);
		/// Throws FISEncodingException "Illegal (empty) data for ShortEncoding"
		/// for an empty vector.

	explicit ShortEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException "Illegal (empty) data for
		/// ShortEncoding" for an empty text and "Illegal value string for
		/// ShortEncoding" for a text that parse() refuses.

protected:
	~ShortEncoding();

private:
	ShortEncoding();

	friend class ValueListEncoding<ShortEncoding, short>;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_ShortEncoding_INCLUDED
