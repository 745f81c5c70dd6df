#include "Ixor/FastInfoset/EncodingAlgorithm.h"
#include "Ixor/FastInfoset/InvalidEncoding.h"
#include "AlgorithmTable.h"
#include <limits>


namespace Ixor {
namespace FastInfoset {


EncodingAlgorithm::EncodingAlgorithm()
{
	initializeEncodings();
}


void EncodingAlgorithm::initializeEncodings()
{
	// The position in the table is the algorithm index.
	_encodings.assign(USER_DEFINED, InvalidEncoding::encode);
	_checks.assign(USER_DEFINED, InvalidEncoding::check);
	for (const AlgorithmTable::Entry* p = AlgorithmTable::begin(); p != AlgorithmTable::end(); ++p)
	{
		_encodings[p->index] = p->encode;
		_checks[p->index] = p->check;
	}
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
