#include "Ixor/FastInfoset/EncodingAlgorithm.h"
#include "Ixor/FastInfoset/BoolEncoding.h"
#include "Ixor/FastInfoset/CDataEncoding.h"
#include "Ixor/FastInfoset/DWordEncoding.h"
#include "Ixor/FastInfoset/DoubleEncoding.h"
#include "Ixor/FastInfoset/FloatEncoding.h"
#include "Ixor/FastInfoset/HexEncoding.h"
#include "Ixor/FastInfoset/IntEncoding.h"
#include "Ixor/FastInfoset/InvalidEncoding.h"
#include "Ixor/FastInfoset/LongEncoding.h"
#include "Ixor/FastInfoset/ShortEncoding.h"
#include "Ixor/FastInfoset/UUIDEncoding.h"
#include <limits>


namespace Ixor {
namespace FastInfoset {


EncodingAlgorithm::EncodingAlgorithm()
{
	initializeEncodings();
}


void EncodingAlgorithm::initializeEncodings()
{
	_encodings.clear();
	_checks.clear();
	// The position in the table is the algorithm index: the order is binding.
	add(InvalidEncoding::encode, InvalidEncoding::check);
	add(HexEncoding::encode, HexEncoding::check);
	add(DWordEncoding::encode, DWordEncoding::check);
	add(ShortEncoding::encode, ShortEncoding::check);
	add(IntEncoding::encode, IntEncoding::check);
	add(LongEncoding::encode, LongEncoding::check);
	add(BoolEncoding::encode, BoolEncoding::check);
	add(FloatEncoding::encode, FloatEncoding::check);
	add(DoubleEncoding::encode, DoubleEncoding::check);
	add(UUIDEncoding::encode, UUIDEncoding::check);
	add(CDataEncoding::encode, CDataEncoding::check);
	add(InvalidEncoding::encode, InvalidEncoding::check);
	while (_encodings.size() < USER_DEFINED) add(InvalidEncoding::encode, InvalidEncoding::check);
	poco_assert(_encodings.size() == USER_DEFINED);
	poco_assert(_checks.size() == USER_DEFINED);
}


void EncodingAlgorithm::add(EncodeMethod encode, CheckMethod check)
{
	_encodings.push_back(encode);
	_checks.push_back(check);
}


void EncodingAlgorithm::encode(unsigned int index, BitStreamWriter& writer, const std::string& text) const
{
	// Indexes from USER_DEFINED up have no entry; they are refused like the
	// reserved ones instead of reading past the table.
	if (index >= _encodings.size()) InvalidEncoding::encode(writer, text);
	else _encodings[index](writer, text);
}


unsigned int EncodingAlgorithm::findEncoding(const std::string& text) const
{
	Int32 best = std::numeric_limits<Int32>::max();
	unsigned int chosen = 0;
	for (unsigned int i = 0; i < _checks.size(); ++i)
	{
		Int32 score = _checks[i](text);
		if (score > 0 && score < best)
		{
			best = score;
			chosen = i;
		}
	}
	return chosen;
}


} } // namespace Ixor::FastInfoset
