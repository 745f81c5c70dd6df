//
// IntEncoding.h
//
// Library: FastInfoset
// Module:  IntEncoding
//


#ifndef FastInfoset_IntEncoding_INCLUDED
#define FastInfoset_IntEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/ValueListEncoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API IntEncoding;
extern template class ValueListEncoding<IntEncoding, int>;


class FastInfoset_API IntEncoding: public ValueListEncoding<IntEncoding, int>
	/// A list of signed 32-bit integers (algorithm 4), written as 32-bit
	/// big-endian values. The text form is the values in canonical decimal
	/// (no plus sign, no leading zeros, no minus zero, no white space),
	/// separated by single spaces.
	///
	/// Its messages are "Illegal (empty) data for IntEncoding", "Illegal value
	/// string for IntEncoding" and, for a length that is not a multiple of 4,
	/// "Illegal size entry for Ixor::Int32 value".
	///
	/// Decoding to text reports a length that is not a multiple of 4 as
	/// FISException, not FISEncodingException; every other decoder of the
	/// family throws FISEncodingException.
{
public:
	typedef Ixor::AutoPtr<IntEncoding> Ptr;

	explicit IntEncoding(int value);

	explicit IntEncoding(const std::vector<int>& values);
		/// Throws FISEncodingException "Illegal (empty) data for IntEncoding"
		/// for an empty vector.

	explicit IntEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException "Illegal (empty) data for
		/// IntEncoding" for an empty text and "Illegal value string for
		/// IntEncoding" for a text that parse() refuses.

protected:
	~IntEncoding();

private:
	IntEncoding();

	friend class ValueListEncoding<IntEncoding, int>;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_IntEncoding_INCLUDED
