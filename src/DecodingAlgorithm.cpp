#include "Ixor/FastInfoset/DecodingAlgorithm.h"
#include "Ixor/FastInfoset/EncodingAlgorithm.h"
#include "Ixor/FastInfoset/InvalidDecoding.h"
#include "AlgorithmTable.h"


namespace Ixor {
namespace FastInfoset {


DecodingAlgorithm::DecodingAlgorithm()
{
	initializeDecodings();
}


void DecodingAlgorithm::initializeDecodings()
{
	// The position in the table is the algorithm index.
	_decodings.assign(EncodingAlgorithm::USER_DEFINED, InvalidDecoding::decode);
	for (const AlgorithmTable::Entry* p = AlgorithmTable::begin(); p != AlgorithmTable::end(); ++p)
		_decodings[p->index] = p->decode;
	poco_assert(_decodings.size() == EncodingAlgorithm::USER_DEFINED);
}


void DecodingAlgorithm::add(DecodeMethod decode)
{
	_decodings.push_back(decode);
}


Ixor::AutoPtr<Encoding> DecodingAlgorithm::read(int index, BitStreamReader& reader) const
{
	// The index comes from a document: one past the table is refused like
	// the reserved ones.
	if (index < 0 || static_cast<std::size_t>(index) >= _decodings.size()) return InvalidDecoding::decode(reader);
	return _decodings[index](reader);
}


} } // namespace Ixor::FastInfoset
