//
// DecodingAlgorithm.h
//
// Library: FastInfoset
// Module:  DecodingAlgorithm
//


#ifndef FastInfoset_DecodingAlgorithm_INCLUDED
#define FastInfoset_DecodingAlgorithm_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API DecodingAlgorithm
	/// The reader's table of decode functions by algorithm index, in the
	/// order of EncodingAlgorithm.
{
public:
	DecodingAlgorithm();

	void initializeDecodings();
		/// Fills the table with the built-in algorithms.

	void add(DecodeMethod decode);
		/// Appends an entry; its index is the table's size before.

	Ixor::AutoPtr<Encoding> read(int index, BitStreamReader& reader) const;
		/// Decodes one value of the algorithm of the given index, as read
		/// from a document. Indexes without an algorithm, including negative
		/// ones and those past the table, throw FISException "Invalid
		/// decoding defined" and read nothing.

private:
	std::vector<DecodeMethod> _decodings;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_DecodingAlgorithm_INCLUDED
