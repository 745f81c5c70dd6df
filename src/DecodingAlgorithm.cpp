#include "Ixor/FastInfoset/DecodingAlgorithm.h"
#include "Ixor/FastInfoset/EncodingAlgorithm.h"
#include "Ixor/FastInfoset/BoolEncoding.h"
#include "Ixor/FastInfoset/CDataEncoding.h"
#include "Ixor/FastInfoset/DWordEncoding.h"
#include "Ixor/FastInfoset/DoubleEncoding.h"
#include "Ixor/FastInfoset/FloatEncoding.h"
#include "Ixor/FastInfoset/HexEncoding.h"
#include "Ixor/FastInfoset/IntEncoding.h"
#include "Ixor/FastInfoset/InvalidDecoding.h"
#include "Ixor/FastInfoset/LongEncoding.h"
#include "Ixor/FastInfoset/ShortEncoding.h"
#include "Ixor/FastInfoset/UUIDEncoding.h"


namespace Ixor {
namespace FastInfoset {


DecodingAlgorithm::DecodingAlgorithm()
{
	initializeDecodings();
}


void DecodingAlgorithm::initializeDecodings()
{
	_decodings.clear();
	// The position in the table is the algorithm index: the order is binding.
	add(InvalidDecoding::decode);
	add(HexEncoding::decode);
	add(DWordEncoding::decode);
	add(ShortEncoding::decode);
	add(IntEncoding::decode);
	add(LongEncoding::decode);
	add(BoolEncoding::decode);
	add(FloatEncoding::decode);
	add(DoubleEncoding::decode);
	add(UUIDEncoding::decode);
	add(CDataEncoding::decode);
	add(InvalidDecoding::decode);
	while (_decodings.size() < EncodingAlgorithm::USER_DEFINED) add(InvalidDecoding::decode);
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
