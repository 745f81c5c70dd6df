//
// InvalidDecoding.h
//
// Library: FastInfoset
// Module:  InvalidDecoding
//


#ifndef FastInfoset_InvalidDecoding_INCLUDED
#define FastInfoset_InvalidDecoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API InvalidDecoding
	/// The decode function of the table entries that have no algorithm.
{
public:
	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Throws FISException "Invalid decoding defined"; reads nothing.

private:
	InvalidDecoding() = delete;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_InvalidDecoding_INCLUDED
