//
// LongEncoding.h
//
// Library: FastInfoset
// Module:  LongEncoding
//


#ifndef FastInfoset_LongEncoding_INCLUDED
#define FastInfoset_LongEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/ValueListEncoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API LongEncoding;
extern template class ValueListEncoding<LongEncoding, long>;


class FastInfoset_API LongEncoding: public ValueListEncoding<LongEncoding, long>
	/// A list of signed 64-bit integers (algorithm 5), written as 64-bit
	/// big-endian values. The text form is the values in canonical decimal
	/// (no plus sign, no leading zeros, no minus zero, no white space),
	/// separated by single spaces.
	///
	/// Its messages are "Illegal (empty) data for LongEncoding", "Illegal value
	/// string for LongEncoding" and, for a length that is not a multiple of 8,
	/// "Illegal size entry for Ixor::Int64 value".
{
public:
	typedef Ixor::AutoPtr<LongEncoding> Ptr;

	explicit LongEncoding(long value);

	explicit LongEncoding(const std::vector<long>& values);
		/// Throws FISEncodingException "Illegal (empty) data for LongEncoding"
		/// for an empty vector.

	explicit LongEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException "Illegal (empty) data for
		/// LongEncoding" for an empty text and "Illegal value string for
		/// LongEncoding" for a text that parse() refuses.

protected:
	~LongEncoding();

private:
	LongEncoding();

	friend class ValueListEncoding<LongEncoding, long>;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_LongEncoding_INCLUDED
