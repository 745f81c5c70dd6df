//
// InvalidEncoding.h
//
// Library: FastInfoset
// Module:  InvalidEncoding
//


#ifndef FastInfoset_InvalidEncoding_INCLUDED
#define FastInfoset_InvalidEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


class BitStreamWriter;


class FastInfoset_API InvalidEncoding
	/// The encode and check functions of the table entries that have no
	/// algorithm.
{
public:
	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Throws FISException "Invalid encoding defined"; writes nothing.

	static Int32 check(const std::string& text);
		/// Returns 0.

private:
	InvalidEncoding() = delete;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_InvalidEncoding_INCLUDED
